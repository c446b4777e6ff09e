// A folder of sockets with a service manager and peers, for one test program.
#pragma once

#include <android/binder_auto_utils.h>
#include <sys/types.h>

#include <string>
#include <vector>

#include "tests/support/eventually.h"

// A child process, ended with the object.
class Child {
  public:
    Child() = default;
    // environment: "NAME=value" entries on top of this process's own.
    Child(const std::vector<std::string>& command,
          const std::vector<std::string>& environment = {});
    ~Child();
    Child(Child&& other) noexcept;
    Child& operator=(Child&&) = delete;

    pid_t pid() const { return mPid; }
    // Waits for a line on the child's standard output; false if it ends without one.
    bool waitForLine();
    // Writes a byte to the child's standard input.
    void nudge();
    void signal(int number);
    // Waits for the end; the exit status, or 128 + the signal.
    int wait();

  private:
    pid_t mPid = -1;
    int mInput = -1;
    int mOutput = -1;
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
               const std::vector<std::string>& environment = {});
// The path of the peer's own socket.
std::string peerSocket(pid_t pid);

// Runs the peer program with a name nobody else uses.
std::vector<std::string> peerCommand(const std::string& name,
                                     const std::vector<std::string>& options = {});
std::string newServiceName();
