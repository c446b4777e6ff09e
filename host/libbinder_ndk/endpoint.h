// This process among the others: its socket, and its connections by the peer's socket name.
#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "dead_sockets.h"
#include "ibinder.h"
#include "socket_address.h"

namespace hostbinder {

class Connection;
class ConnectionPlace;

class Endpoint {
  public:
    // Lives as long as the process.
    static Endpoint& instance();

    // The connection to a process; made if there is none. Null if the process is gone. Waits at
    // most a few seconds. Not on a reader thread.
    std::shared_ptr<Connection> connectTo(const std::string& name);
    // A reference to object `number` of process `owner`: owned, never null. If the process or the
    // object is gone, calls of the object fail with STATUS_DEAD_OBJECT.
    AIBinder* resolve(const std::string& owner, uint64_t number);

    // Opens this process's socket if it is not open yet, so that others can connect.
    void ensureListening();
    // Listens under the service manager's name, for the rest of the process.
    binder_status_t becomeServiceManager();

    // The connection has ended.
    void forget(Connection* connection);
    // What a process that was killed left in the folder of sockets, once its connection is dealt
    // with.
    void cleanUpAfter(const std::string& name);

  private:
    using Clock = std::chrono::steady_clock;

    struct Peer {
        std::shared_ptr<Connection> connection;
        bool connecting = false;  // a thread of this process is in connectTo
    };

    Endpoint();
    bool listenLocked();
    void acceptLoop(int listener);
    void startServing(int fd);
    void serveAccepted(int fd, const PeerCredentials& credentials, ConnectionPlace* place);
    // Answers the peer's greeting. Null if the connection in the other direction is to be used, or
    // the name is another process's.
    std::shared_ptr<Connection> admit(int fd, const std::string& name,
                                      const PeerCredentials& credentials);
    enum class Greeting { kAccepted, kBusy, kFailed };
    Greeting greet(const std::string& name, std::shared_ptr<Connection>* connection);
    std::shared_ptr<Connection> finishConnecting(const std::string& name, Greeting greeting,
                                                 std::shared_ptr<Connection> connection);

    std::mutex mMutex;  // guards what follows
    std::condition_variable mChanged;
    std::string mName;
    bool mListening = false;
    bool mListenFailed = false;
    std::unordered_map<std::string, Peer> mPeers;

    DeadSockets mDeadSockets;  // the service manager's
};

}  // namespace hostbinder
