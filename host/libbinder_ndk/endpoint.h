// This process among the others: its socket, and its peers by their sockets' names.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "peer.h"

namespace hostbinder {

class Endpoint {
  public:
    // Lives as long as the process.
    static Endpoint& Instance();

    // The process with that socket; connects if there is no connection. Null if the process is
    // gone. Waits at most a few seconds. Not on a reader's thread.
    std::shared_ptr<Peer> ConnectTo(const std::string& name);
    // Listens under the service manager's name, for the rest of the process.
    binder_status_t BecomeServiceManager();

    // A reference to object `number` of process `owner`: owned, never null. If the process or the
    // object is gone, calls of the object fail with STATUS_DEAD_OBJECT. May take a call.
    AIBinder* Resolve(const std::string& owner, uint64_t number);
    // The peer's connection has ended.
    void Forget(const Peer* peer);

  private:
    struct Entry {
        std::shared_ptr<Peer> peer;
        bool connecting = false;  // a thread of this process is in ConnectTo
    };

    Endpoint();
    // Connects and greets. Null if the process is gone, or, with *busy, connects itself.
    std::shared_ptr<Peer> Greet(const std::string& name, bool* busy);
    // The errno of what fails; 0: it listens.
    int ListenLocked();
    [[noreturn]] void AcceptLoop(int listener);
    void ServeAccepted(int fd);
    // Answers the peer's greeting. Null if the connection in the other direction is to be used.
    std::shared_ptr<Peer> Admit(int fd, const std::string& name);

    std::mutex m_mutex;  // guards what follows
    std::condition_variable m_changed;
    std::string m_name;
    bool m_listening = false;  // or it has failed
    std::unordered_map<std::string, Entry> m_peers;
};

}  // namespace hostbinder
