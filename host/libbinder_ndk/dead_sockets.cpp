// Removing socket files that nobody listens on.
#include "dead_sockets.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "socket_address.h"

namespace hostbinder {

namespace {

// A process that is killed loses its connections in one moment and its listening socket in another.
constexpr int kTries = 3;

// Whether the name need not be looked at any more.
bool isSettled(const std::string& name) {
    const int probe = connectSocket(name);
    if (probe >= 0) close(probe);
    if (probe == -ECONNREFUSED) unlink(socketPath(name).c_str());
    return probe < 0;
}

}  // namespace

void DeadSockets::left(const std::string& name) {
    std::lock_guard<std::mutex> lock(mMutex);
    mCandidates.push_back({name, kTries});
    const auto end =
            std::remove_if(mCandidates.begin(), mCandidates.end(), [](Candidate& candidate) {
                return isSettled(candidate.name) || --candidate.tries == 0;
            });
    mCandidates.erase(end, mCandidates.end());
}

}  // namespace hostbinder
