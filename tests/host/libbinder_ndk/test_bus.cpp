// Child processes of the tests: a service manager and peers.
#include "tests/host/libbinder_ndk/test_bus.h"

#include <android/binder_manager.h>
#include <host_service_manager.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/support/temporary_folder.h"

namespace {

using end_to_end::Subprocess;

constexpr int kPatienceOfATest = 600;

void Require(bool works, const char* what) {
    if (works) return;
    fprintf(stderr, "test set-up failed: %s: %s\n", what, strerror(errno));
    abort();
}

struct Bus {
    const TemporaryFolder folder{"binder"};
    Child serviceManager;

    Bus() {
        setenv("STANDIN_BINDER_DIR", folder.path().c_str(), 1);
        serviceManager = startChild({SERVICEMANAGER_PROGRAM});
        const auto answers = []() {
            return AServiceManager_forEachService(nullptr, [](const char*, void*) {}) == STATUS_OK;
        };
        Require(eventually(answers), "service manager");
    }
};

}  // namespace

Child startChild(const std::vector<std::string>& command,
                 const Subprocess::Environment& environment) {
    auto child = std::make_unique<Subprocess>(command, environment, Subprocess::Input::Pipe,
                                              kPatienceOfATest);
    Require(child->pid() > 0, command[0].c_str());
    return child;
}

void startBus() {
    static Bus bus;
}

Child startPeerProgram(const std::string& name, const Subprocess::Environment& environment) {
    return startChild({PEER_PROGRAM, name}, environment);
}

std::string newServiceName() {
    static int count = 0;
    return "test.IPeer/" + std::to_string(getpid()) + "." + std::to_string(++count);
}

Peer startPeer(const Subprocess::Environment& environment) {
    startBus();
    const std::string name = newServiceName();
    Peer peer{startPeerProgram(name, environment), nullptr};
    Require(peer.process->waitForNext("\n"), "peer");
    peer.binder = ndk::SpAIBinder(AServiceManager_checkService(name.c_str()));
    Require(peer.binder.get() != nullptr, "peer's service");
    return peer;
}
