// Child processes of the tests: a service manager and peers.
#include "tests/host/libbinder_ndk/test_bus.h"

#include <android/binder_manager.h>
#include <host_service_manager.h>
#include <signal.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

using end_to_end::Subprocess;

constexpr int kPatienceOfATest = 600;

[[noreturn]] void fail(const char* what) {
    fprintf(stderr, "test set-up failed: %s: %s\n", what, strerror(errno));
    abort();
}

std::string makeFolder() {
    char path[] = "/tmp/binder-test-XXXXXX";
    if (mkdtemp(path) == nullptr) fail("mkdtemp");
    setenv("STANDIN_BINDER_DIR", path, 1);
    atexit([]() {
        std::error_code ignored;
        std::filesystem::remove_all(busFolder(), ignored);
    });
    return path;
}

struct Bus {
    const std::string folder = makeFolder();
    Child serviceManager{{SERVICEMANAGER_PROGRAM}};

    Bus() {
        const auto answers = []() {
            return AServiceManager_forEachService(nullptr, [](const char*, void*) {}) == STATUS_OK;
        };
        if (!eventually(answers)) fail("service manager");
    }
};

}  // namespace

Child::Child(const std::vector<std::string>& command, const Subprocess::Environment& environment)
    : m_process(std::make_unique<Subprocess>(command, environment, Subprocess::Input::Pipe,
                                             kPatienceOfATest)) {
    if (pid() < 0) fail(command[0].c_str());
}

void Child::signal(int number) {
    kill(pid(), number);
}

const std::string& busFolder() {
    static Bus* const bus = new Bus;
    return bus->folder;
}

std::string newServiceName() {
    static int count = 0;
    return "test.IPeer/" + std::to_string(getpid()) + "." + std::to_string(++count);
}

std::vector<std::string> peerCommand(const std::string& name,
                                     const std::vector<std::string>& options) {
    std::vector<std::string> command{PEER_PROGRAM, name};
    command.insert(command.end(), options.begin(), options.end());
    return command;
}

Peer startPeer(const std::vector<std::string>& options,
               const Subprocess::Environment& environment) {
    busFolder();
    const std::string name = newServiceName();
    Peer peer{Child(peerCommand(name, options), environment), nullptr};
    if (!peer.process.waitForLine()) fail("peer");
    peer.binder = ndk::SpAIBinder(AServiceManager_checkService(name.c_str()));
    if (peer.binder.get() == nullptr) fail("peer's service");
    return peer;
}

std::string peerSocket(pid_t pid) {
    const std::string start = busFolder() + "/p" + std::to_string(pid) + "-";
    for (const auto& entry : std::filesystem::directory_iterator(busFolder())) {
        const std::string path = entry.path();
        if (path.rfind(start, 0) == 0) return path;
    }
    return "";
}
