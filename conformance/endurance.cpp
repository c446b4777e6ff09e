// Checks that nothing stays behind after many sessions and deaths.
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "device.h"

namespace conformance {

namespace {

// Less than a leak in every tenth round makes, more than a late thread of a pool.
constexpr size_t kSlack = 4;

// Tells the parent and waits to be killed.
[[noreturn]] void Arrive(bool arrived) {
    const char byte = arrived ? '+' : '-';
    if (write(STDOUT_FILENO, &byte, 1) == 1) sleep(30);
    _exit(1);
}

size_t EntriesOf(const std::string& folder) {
    DIR* const opened = opendir(folder.c_str());
    size_t count = 0;
    while (opened != nullptr && readdir(opened) != nullptr) ++count;
    if (opened != nullptr) closedir(opened);
    return count;
}

std::string Text(const Held& held) {
    return Say(held.descriptors, " descriptors, ", held.threads, " threads, ", held.sharedMappings,
               " shared mappings");
}

// Calls `round` some times to warm up, then `count` times, after which the service must hold no
// more than before. `round` returns what went wrong.
Verdict LeavesNothing(Device& device, int warmUp, int count,
                      const std::function<std::string(int)>& round) {
    Held before, after;
    for (int i = 0; i < warmUp + count; ++i) {
        if (i == warmUp) before = HeldBy(device.process);
        const std::string problem = round(i);
        if (!problem.empty()) return Fail(Say("round ", i + 1, " as the first one"), problem);
    }
    if (before.threads == 0) return Skip("all went well; /proc does not tell what is held");
    const auto look = [&] {
        after = HeldBy(device.process);
        return after.descriptors <= before.descriptors + kSlack &&
               after.threads <= before.threads + kSlack &&
               after.sharedMappings <= before.sharedMappings + kSlack;
    };
    const bool freed = Eventually(look, std::chrono::seconds(1));
    return Require(freed, Say("no more than before ", count, " rounds: ", Text(before)),
                   Text(after));
}

Verdict EndsSessions(Device& device) {
    const PlainRun* run = device.Working();
    if (run == nullptr) return Skip("no mode brings results");
    return LeavesNothing(device, 20, 200, [&](int i) -> std::string {
        Session session(device);
        const Answer taken = session.IsOpen() ? session.Configure(run->info) : session.opened;
        if (!taken.Ok()) return taken.Text();
        if (i % 20 == 0) return session.Exchange(run->info, "a result").came;
        OfflineRequestInfo wrong = device.Request(run->info);
        wrong.outputBuffers[0].streamId = 77;
        session.Process(std::move(wrong));
        return "";
    });
}

Verdict SurvivesDeaths(Device& device) {
    if (device.Working() == nullptr) return Skip("no mode brings results");
    const Verdict left = LeavesNothing(device, 6, 50, [](int i) {
        return KillClient(kVictimStates[static_cast<size_t>(i) % std::size(kVictimStates)]);
    });
    if (left.outcome == Outcome::kFail) return left;
    const Verdict survivor = OnStreams([](Device&, Session& session, const Configuration& info) {
        return session.Exchange(info, "a result after the deaths");
    })(device);
    return survivor.Good() ? left : survivor;
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
    if (child > 0) kill(child, SIGKILL);
    if (child > 0) waitpid(child, nullptr, 0);
    return told && byte == '+' ? "" : "it did not get into the state '" + state + "' within 5 s";
}

void BeVictim(const std::string& state) {
    Device device;
    if (!device.Connect() || device.service == nullptr) Arrive(false);
    device.Register(9, ndk::SharedRefBase::make<Recorder>(&device.pool));
    if (state == "registered") Arrive(true);
    Session session(device, "victim");
    if (state == "opened" || !session.IsOpen()) Arrive(session.IsOpen());
    Configuration info;
    for (const Mode mode : {kMMF, kB2Y, kY2J}) {
        info = ConfigurationOf(mode);
        if (session.Configure(info).Ok()) break;
    }
    if (state == "configured") Arrive(true);
    if (state != "in-flight") {
        // Where the mode lends nothing, any callback after the shutter will do.
        session.client->inCallback = [&](const Event& event) {
            if (state == "callback" || event.kind != Event::kShutter) Arrive(true);
        };
    }
    for (int i = 0; i < 3; ++i) session.Process(device.Request(info));
    if (state == "in-flight") Arrive(true);
    Eventually([] { return false; });
    Arrive(false);
}

Held HeldBy(pid_t process) {
    const std::string folder = Say("/proc/", process, "/");
    Held held = {EntriesOf(folder + "fd"), EntriesOf(folder + "task"), 0};
    std::ifstream maps(folder + "maps");
    for (std::string line; std::getline(maps, line);) {
        held.sharedMappings += line.find("s ") == line.find(' ') + 4;  // "address rw-s ..."
    }
    return held;
}

Checks EnduranceChecks() {
    return {{"endurance.sessions",
             "200 sessions with frames and refused requests leave nothing behind.", EndsSessions},
            {"endurance.deaths", "50 clients that die in six states leave nothing behind.",
             SurvivesDeaths}};
}

}  // namespace conformance
