// Keeps a peer that does something wrong all the time from filling the log.
#pragma once

#include <android/log.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <utility>

namespace standin_log {

// For lines of one kind: so many in a second, and a count of those that were left out. Any thread.
class LogThrottle {
  public:
    static constexpr uint64_t kLinesPerSecond = 20;

    // Whether one more line is to be written now. First writes how many before it were not. Leaves
    // errno alone, of which the line may tell.
    bool mayWrite(const char* tag) {
        const int error = errno;
        uint64_t leftOut = 0;
        {
            std::lock_guard<std::mutex> lock(mMutex);
            const auto now = std::chrono::steady_clock::now();
            if (now >= mEnd) {
                mEnd = now + std::chrono::seconds(1);
                mWritten = 0;
            }
            if (mWritten == kLinesPerSecond) {
                ++mLeftOut;
                return false;
            }
            ++mWritten;
            leftOut = std::exchange(mLeftOut, 0);
        }
        if (leftOut > 0) {
            __android_log_print(ANDROID_LOG_INFO, tag, "%llu lines like the next were left out",
                                static_cast<unsigned long long>(leftOut));
        }
        errno = error;
        return true;
    }

  private:
    std::mutex mMutex;  // guards what follows
    std::chrono::steady_clock::time_point mEnd{};
    uint64_t mWritten = 0;
    uint64_t mLeftOut = 0;
};

}  // namespace standin_log
