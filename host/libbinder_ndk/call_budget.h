// How much incoming calls may hold of this process until they are served, like the kernel's buffer
// of a process: a peer that floods is refused, and other peers find room.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <mutex>
#include <unordered_map>

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
    // Of one peer process, whatever connections it has; all together have eight times as much.
    // Oneway calls, for which nobody waits, take at most half.
    static constexpr size_t kBytes = 2 * 1024 * 1024;
    static constexpr size_t kDescriptors = 2 * kMaxDescriptors;

    // Lives as long as the process.
    static CallBudget& instance();

    // The share of one call.
    static CallShare costOf(const FrameHeader& header);
    // False if that is too much for the peer or for all together.
    bool take(pid_t peer, const CallShare& cost);
    void giveBack(pid_t peer, const CallShare& cost);

  private:
    std::mutex mMutex;  // guards what follows
    CallShare mAll;
    std::unordered_map<pid_t, CallShare> mByPeer;  // without those that hold nothing
};

}  // namespace hostbinder
