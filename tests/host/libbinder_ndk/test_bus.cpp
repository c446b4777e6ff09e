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
        setenv("STANDIN_BINDER_DIR", folder.Path().c_str(), 1);
        serviceManager = StartChild({SERVICEMANAGER_PROGRAM});
        const auto answers = []() {
            return AServiceManager_forEachService(nullptr, [](const char*, void*) {}) == STATUS_OK;
        };
        Require(Eventually(answers), "service manager");
    }
};

}  // namespace

Child StartChild(const std::vector<std::string>& command,
                 const Subprocess::Environment& environment) {
    auto child = std::make_unique<Subprocess>(command, environment, Subprocess::Input::kPipe,
                                              kPatienceOfATest);
    Require(child->Pid() > 0, command[0].c_str());
    return child;
}

void StartBus() {
    static Bus bus;
}

Child StartPeerProgram(const std::string& name, const Subprocess::Environment& environment) {
    return StartChild({PEER_PROGRAM, name}, environment);
}

std::string NewServiceName() {
    static int count = 0;
    return "test.IPeer/" + std::to_string(getpid()) + "." + std::to_string(++count);
}

Peer StartPeer(const Subprocess::Environment& environment) {
    StartBus();
    const std::string name = NewServiceName();
    Peer peer{StartPeerProgram(name, environment), nullptr};
    Require(peer.process->WaitForNext("\n"), "peer");
    peer.binder = ndk::SpAIBinder(AServiceManager_checkService(name.c_str()));
    Require(peer.binder.get() != nullptr, "peer's service");
    return peer;
}
