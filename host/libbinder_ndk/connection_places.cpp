// Counting accepted connections.
#include "connection_places.h"

#include <sys/socket.h>

#include <algorithm>

#include "connection.h"

namespace hostbinder {

ConnectionPlace::~ConnectionPlace() {
    mPlaces->leave(this);
}

void ConnectionPlace::leaveSocket() {
    std::lock_guard<std::mutex> lock(mPlaces->mMutex);
    mSocket = -1;
}

void ConnectionPlace::giveTo(const std::shared_ptr<Connection>& connection) {
    std::lock_guard<std::mutex> lock(mPlaces->mMutex);
    mConnection = connection;
}

// The thread that serves the connection sees its end.
void ConnectionPlace::shutDownLocked() {
    if (mSocket >= 0) shutdown(mSocket, SHUT_RDWR);
    if (const auto connection = mConnection.lock()) connection->shutDown();
}

ConnectionPlaces& ConnectionPlaces::instance() {
    static ConnectionPlaces* const places = new ConnectionPlaces;
    return *places;
}

std::shared_ptr<ConnectionPlace> ConnectionPlaces::take(pid_t pid, int socket) {
    std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mByProcess.find(pid);
    const size_t own = found == mByProcess.end() ? 0 : found->second.size();
    if (own >= kPerProcess || (mTaken >= kAll && !makeRoomLocked(own))) return nullptr;
    auto place = std::make_shared<ConnectionPlace>(this, pid, socket);
    ++mTaken;
    mByProcess[pid].push_back(place.get());
    return place;
}

bool ConnectionPlaces::makeRoomLocked(size_t own) {
    const auto most = std::max_element(
            mByProcess.begin(), mByProcess.end(),
            [](const auto& a, const auto& b) { return a.second.size() < b.second.size(); });
    if (most->second.size() < own + 2) return false;
    most->second.back()->shutDownLocked();
    most->second.pop_back();
    --mTaken;
    return true;
}

void ConnectionPlaces::leave(ConnectionPlace* place) {
    std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mByProcess.find(place->mPid);
    if (found == mByProcess.end()) return;
    std::vector<ConnectionPlace*>& places = found->second;
    const auto end = std::remove(places.begin(), places.end(), place);
    mTaken -= static_cast<size_t>(places.end() - end);  // none if it had to make room
    places.erase(end, places.end());
    if (places.empty()) mByProcess.erase(found);
}

}  // namespace hostbinder
