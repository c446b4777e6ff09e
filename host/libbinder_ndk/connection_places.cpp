// Counting accepted connections.
#include "connection_places.h"

namespace hostbinder {

ConnectionPlaces& ConnectionPlaces::instance() {
    static ConnectionPlaces* const places = new ConnectionPlaces;
    return *places;
}

std::shared_ptr<ConnectionPlaces::Place> ConnectionPlaces::take(pid_t pid) {
    std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mByProcess.find(pid);
    if (mTaken >= kAll || (found != mByProcess.end() && found->second >= kPerProcess)) {
        return nullptr;
    }
    ++mTaken;
    ++mByProcess[pid];
    return std::make_shared<Place>(this, pid);
}

void ConnectionPlaces::free(pid_t pid) {
    std::lock_guard<std::mutex> lock(mMutex);
    --mTaken;
    const auto found = mByProcess.find(pid);
    if (--found->second == 0) mByProcess.erase(found);
}

}  // namespace hostbinder
