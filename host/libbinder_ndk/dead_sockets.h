// Socket files of processes that were killed. The service manager, to which all connect, removes
// them.
#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace hostbinder {

class DeadSockets {
  public:
    // The process with this socket is no longer connected. Removes the socket if nobody listens on
    // it, and those of processes before that were still about to end then. May wait a few seconds.
    void left(const std::string& name);

  private:
    struct Candidate {
        std::string name;
        int tries;
    };

    std::mutex mMutex;  // guards mCandidates
    std::vector<Candidate> mCandidates;
};

}  // namespace hostbinder
