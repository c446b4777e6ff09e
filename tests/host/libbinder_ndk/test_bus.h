// A folder of sockets with a service manager and peers, for one test program.
#pragma once

#include <android/binder_auto_utils.h>
#include <signal.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/eventually.h"
#include "tests/support/subprocess.h"

// A child process, ended with the object. Its standard input is a pipe, and its standard error is
// this process's.
using Child = std::unique_ptr<end_to_end::Subprocess>;
Child StartChild(const std::vector<std::string>& command,
                 const end_to_end::Subprocess::Environment& environment = {});

// A process that serves an object of peer_service.h.
struct Peer {
    Child process;
    ndk::SpAIBinder binder;

    void Signal(int number) const { kill(process->Pid(), number); }
};

// Makes the folder and its service manager on first use; to be called before the library is used.
void StartBus();
// Starts a peer and waits for its service. environment: see test_peer.cpp.
Peer StartPeer(const end_to_end::Subprocess::Environment& environment = {});
// Starts the peer program with this name for its service, and does not wait.
Child StartPeerProgram(const std::string& name,
                       const end_to_end::Subprocess::Environment& environment = {});
// A name that no other service has.
std::string NewServiceName();
