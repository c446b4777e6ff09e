// A client that dies on purpose, in a process of its own.
#include "victim.h"

#include <dirent.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>

#include "plain_run.h"

namespace conformance {

namespace {

size_t EntriesOf(const std::string& folder) {
    DIR* const opened = opendir(folder.c_str());
    if (opened == nullptr) return 0;
    size_t count = 0;
    while (const dirent* entry = readdir(opened)) count += entry->d_name[0] != '.';
    closedir(opened);
    return count;
}

// Tells the parent and waits to be killed; not for longer than a check may take.
[[noreturn]] void Arrive(bool arrived) {
    const char byte = arrived ? '+' : '-';
    if (write(STDOUT_FILENO, &byte, 1) != 1) _exit(1);
    sleep(30);
    _exit(1);
}

}  // namespace

std::string KillClient(const std::string& state) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        execl("/proc/self/exe", "offlineservicecheck", "--victim", state.c_str(), nullptr);
        _exit(1);
    }
    close(ends[1]);
    char byte = 0;
    pollfd wait = {ends[0], POLLIN, 0};
    const bool told = child > 0 && poll(&wait, 1, static_cast<int>(kWait.count())) == 1 &&
                      read(ends[0], &byte, 1) == 1;
    close(ends[0]);
    if (child > 0) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    if (!told) return "it did not get into the state " + state + " within 5 s";
    return byte == '+' ? "" : "the service refused it before the state " + state;
}

void BeVictim(const std::string& state) {
    Device device;
    if (!device.Connect() || device.service == nullptr) Arrive(false);
    const auto recorder = device.NewRecorder();
    if (state == "registered") Arrive(device.service->registerClient(9, recorder).isOk());
    Session session(device, "victim", recorder);
    if (state == "opened" || !session.IsOpen()) Arrive(session.IsOpen());
    OfflineSessionConfigureInfo info;
    bool configured = false;
    for (Mode mode : {Mode::kMMF, Mode::kB2Y, Mode::kY2J}) {
        info = ConfigurationOf(mode);
        configured = configured || session.Configure(info).Ok();
        if (configured) break;
    }
    if (state == "configured" || !configured) Arrive(configured);
    if (state == "callback" || state == "lending") {
        // Where the mode lends nothing, the first callback of any kind will do.
        recorder->inCallback = [&](const Event& event) {
            if (state == "callback" || event.kind != Event::kShutter) Arrive(true);
        };
    }
    bool sent = true;
    for (int i = 0; i < 3; ++i) sent = session.Process(device.Request(info)).Ok() && sent;
    if (state == "in-flight") Arrive(sent);
    Eventually([] { return false; });
    Arrive(false);
}

Counts CountsOf(pid_t process) {
    if (process == 0) return {};
    const std::string folder = Say("/proc/", process, "/");
    Counts counts = {EntriesOf(folder + "fd"), EntriesOf(folder + "task"), 0};
    std::ifstream maps(folder + "maps");
    for (std::string line; std::getline(maps, line);) {
        const size_t rights = line.find(' ');
        counts.sharedMappings += rights != line.npos && line.substr(rights + 4, 1) == "s";
    }
    return counts;
}

}  // namespace conformance
