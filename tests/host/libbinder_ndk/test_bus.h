// A folder of sockets with a service manager and peers, for one test program.
#pragma once

#include <android/binder_auto_utils.h>
#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/eventually.h"
#include "tests/support/subprocess.h"

// A child process, ended with the object. Its standard error is this process's.
class Child {
  public:
    explicit Child(const std::vector<std::string>& command,
                   const end_to_end::Subprocess::Environment& environment = {});

    pid_t pid() const { return m_process->pid(); }
    // Waits for a line on the child's standard output; false if it ends without one.
    bool waitForLine() { return m_process->waitForNext("\n"); }
    // Writes a byte to the child's standard input.
    void nudge() { m_process->type("x"); }
    void signal(int number);
    // Waits for the end; the exit status, or 128 + the signal.
    int wait() { return m_process->finish().status; }

  private:
    std::unique_ptr<end_to_end::Subprocess> m_process;
};

// A process that serves an object under a name.
struct Peer {
    Child process;
    ndk::SpAIBinder binder;
};

// Folder and service manager of this program, made on first use. To be used before the library.
const std::string& busFolder();

// Starts a peer and waits for its service. options: see test_peer.cpp.
Peer startPeer(const std::vector<std::string>& options = {},
               const end_to_end::Subprocess::Environment& environment = {});
// The path of the peer's own socket.
std::string peerSocket(pid_t pid);

// Runs the peer program with a name nobody else uses.
std::vector<std::string> peerCommand(const std::string& name,
                                     const std::vector<std::string>& options = {});
std::string newServiceName();
