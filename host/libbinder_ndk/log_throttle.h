// Keeps a peer that does something wrong all the time from filling the log.
#pragma once

#include <chrono>
#include <cstdint>

namespace hostbinder {

// One line per second. Used by one thread at a time.
class LogThrottle {
  public:
    // Counts one event. How many a line is to speak of now, 0: no line.
    uint64_t due() {
        ++mCount;
        const auto now = std::chrono::steady_clock::now();
        if (now < mNext) return 0;
        mNext = now + std::chrono::seconds(1);
        const uint64_t count = mCount;
        mCount = 0;
        return count;
    }

  private:
    uint64_t mCount = 0;
    std::chrono::steady_clock::time_point mNext{};
};

}  // namespace hostbinder
