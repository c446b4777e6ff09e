// Waiting until the device's programs answer.

#include "readiness.h"

#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <string.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <terminal/terminal.h>
#include <time.h>
#include <unistd.h>

#include "process.h"

namespace deviceshell {

namespace {

constexpr long kPollNanoseconds = 2'000'000;

// Asks until the answer is yes or the time is over. From the second second on, a person at a
// terminal is told what it waits for.
template <typename Question>
bool poll(const std::string& awaited, Question question) {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const time_t begin = now.tv_sec;
    time_t told = 1;
    terminal::Progress progress;
    while (!question()) {
        clock_gettime(CLOCK_MONOTONIC, &now);
        const time_t waited = now.tv_sec - begin;
        if (waited > kStartSeconds) return false;
        if (waited > told) {
            told = waited;
            progress.show("deviceshell: waits " + std::to_string(waited) + " s for " + awaited);
        }
        const timespec pause = {0, kPollNanoseconds};
        nanosleep(&pause, nullptr);
    }
    return true;
}

bool accepts(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) return false;
    memcpy(address.sun_path, path.data(), path.size());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0) return false;
    const bool connected =
            connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    close(descriptor);
    return connected;
}

bool isRegistered(const std::string& name) {
    AIBinder* const binder = AServiceManager_checkService(name.c_str());
    if (!binder) return false;
    AIBinder_decStrong(binder);
    return true;
}

std::string seconds() {
    return std::to_string(kStartSeconds) + " s";
}

}  // namespace

bool waitForServiceManager(const std::string& socketFolder) {
    if (poll("the service manager", [&] { return accepts(socketFolder + "/servicemanager"); }))
        return true;
    complain("the service manager did not answer within " + seconds());
    return false;
}

bool waitForServices(const std::vector<std::string>& names) {
    bool all = true;
    for (const std::string& name : names) {
        if (poll(name, [&] { return isRegistered(name); })) continue;
        complain("nobody registered " + name + " within " + seconds());
        all = false;
    }
    return all;
}

}  // namespace deviceshell
