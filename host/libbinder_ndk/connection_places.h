// How many accepted connections this process keeps: each has a thread and a descriptor.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace hostbinder {

class Connection;
class ConnectionPlaces;

// A place that is taken, free again with the object's end. Of use to the thread that serves the
// connection.
class ConnectionPlace {
  public:
    // `socket` is borrowed until leaveSocket().
    ConnectionPlace(ConnectionPlaces* places, pid_t pid, int socket)
        : mPlaces(places), mPid(pid), mSocket(socket) {}
    ~ConnectionPlace();
    ConnectionPlace(const ConnectionPlace&) = delete;
    ConnectionPlace& operator=(const ConnectionPlace&) = delete;

    void leaveSocket();
    void giveTo(const std::shared_ptr<Connection>& connection);

  private:
    friend class ConnectionPlaces;
    void shutDownLocked();

    ConnectionPlaces* const mPlaces;
    const pid_t mPid;
    int mSocket;  // -1: not used any more; with mConnection guarded by the places
    std::weak_ptr<Connection> mConnection;
};

class ConnectionPlaces {
  public:
    // A pair of processes needs one connection, and a second one while a lost one ends.
    static constexpr size_t kPerProcess = 32;
    static constexpr size_t kAll = 256;

    // Lives as long as the process.
    static ConnectionPlaces& instance();

    // Null if the peer process has too many. If all together have, a process with several more than
    // this one loses its last connection; null if there is none.
    std::shared_ptr<ConnectionPlace> take(pid_t pid, int socket);

  private:
    friend class ConnectionPlace;
    bool makeRoomLocked(size_t own);
    void leave(ConnectionPlace* place);

    std::mutex mMutex;  // guards what follows, also in places
    size_t mTaken = 0;
    std::unordered_map<pid_t, std::vector<ConnectionPlace*>> mByProcess;
};

}  // namespace hostbinder
