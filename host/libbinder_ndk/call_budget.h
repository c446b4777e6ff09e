// How much incoming calls may hold of this process until they are served, like the kernel's buffer
// of a process: a peer that floods is refused, and other peers find room.
#pragma once

#include <cstddef>
#include <mutex>

#include "wire_format.h"

namespace hostbinder {

// What calls that wait or run hold.
struct CallShare {
    size_t bytes = 0;
    size_t onewayBytes = 0;  // part of bytes
    size_t descriptors = 0;
};

class CallBudget {
  public:
    // Of one connection; all connections together have twice as much. Oneway calls, for which
    // nobody waits, take at most half.
    static constexpr size_t kBytes = 2 * 1024 * 1024;
    static constexpr size_t kDescriptors = 2 * kMaxDescriptors;

    // Lives as long as the process.
    static CallBudget& instance();

    // The share of one call.
    static CallShare costOf(const FrameHeader& header);
    // False if that is too much for the connection or for the process.
    bool take(CallShare* connection, const CallShare& cost);
    void giveBack(CallShare* connection, const CallShare& cost);

  private:
    std::mutex mMutex;  // guards the shares, also of connections
    CallShare mProcess;
};

}  // namespace hostbinder
