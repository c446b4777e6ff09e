// Child processes of the tests: a service manager and peers.
#include "tests/host/libbinder_ndk/test_bus.h"

#include <android/binder_manager.h>
#include <dirent.h>
#include <fcntl.h>
#include <host_service_manager.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

[[noreturn]] void fail(const char* what) {
    fprintf(stderr, "test set-up failed: %s: %s\n", what, strerror(errno));
    abort();
}

struct Bus {
    std::string folder;
    Child serviceManager;

    Bus() {
        char path[] = "/tmp/binder-test-XXXXXX";
        if (mkdtemp(path) == nullptr) fail("mkdtemp");
        folder = path;
        setenv("STANDIN_BINDER_DIR", path, 1);
        new (&serviceManager) Child({SERVICEMANAGER_PROGRAM});
        if (!eventually([]() {
                return AServiceManager_forEachService(nullptr, [](const char*, void*) {}) ==
                       STATUS_OK;
            })) {
            fail("service manager");
        }
        atexit([]() {
            const std::string remove = "rm -rf '" + busFolder() + "'";
            if (system(remove.c_str()) != 0) perror("rm");
        });
    }
};

}  // namespace

Child::Child(const std::vector<std::string>& command, const std::vector<std::string>& environment) {
    int input[2];
    int output[2];
    if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) fail("pipe");
    std::vector<char*> arguments;
    for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    // Everything is made before the fork: another thread may hold the allocator's lock.
    std::vector<char*> variables;
    for (const std::string& entry : environment) {
        variables.push_back(const_cast<char*>(entry.c_str()));
    }
    for (char** entry = environ; *entry != nullptr; ++entry) variables.push_back(*entry);
    variables.push_back(nullptr);
    mPid = fork();
    if (mPid < 0) fail("fork");
    if (mPid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        execve(arguments[0], arguments.data(), variables.data());
        _exit(127);
    }
    close(input[0]);
    close(output[1]);
    mInput = input[1];
    mOutput = output[0];
}

Child::~Child() {
    if (mPid > 0) {
        kill(mPid, SIGKILL);
        wait();
    }
    if (mInput >= 0) close(mInput);
    if (mOutput >= 0) close(mOutput);
}

Child::Child(Child&& other) noexcept
    : mPid(other.mPid), mInput(other.mInput), mOutput(other.mOutput) {
    other.mPid = other.mInput = other.mOutput = -1;
}

bool Child::waitForLine() {
    char byte = 0;
    while (read(mOutput, &byte, 1) == 1) {
        if (byte == '\n') return true;
    }
    return false;
}

void Child::nudge() {
    if (write(mInput, "x", 1) != 1) fail("write to child");
}

void Child::signal(int number) {
    kill(mPid, number);
}

int Child::wait() {
    int status = 0;
    pid_t ended = -1;
    do {
        ended = waitpid(mPid, &status, 0);
    } while (ended < 0 && errno == EINTR);
    mPid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
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
               const std::vector<std::string>& environment) {
    busFolder();
    const std::string name = newServiceName();
    Peer peer{Child(peerCommand(name, options), environment), nullptr};
    if (!peer.process.waitForLine()) fail("peer");
    peer.binder = ndk::SpAIBinder(AServiceManager_checkService(name.c_str()));
    if (peer.binder.get() == nullptr) fail("peer's service");
    return peer;
}

std::string peerSocket(pid_t pid) {
    const std::string prefix = "p" + std::to_string(pid) + "-";
    std::string found;
    DIR* folder = opendir(busFolder().c_str());
    if (folder == nullptr) fail("opendir");
    while (const dirent* entry = readdir(folder)) {
        if (strncmp(entry->d_name, prefix.c_str(), prefix.size()) == 0) {
            found = busFolder() + "/" + entry->d_name;
        }
    }
    closedir(folder);
    return found;
}
