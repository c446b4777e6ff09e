// Checks that nothing stays behind after many sessions and deaths.
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "device.h"

namespace conformance {

namespace {

// Less than a leak in every tenth round makes, more than a late thread of a pool.
constexpr size_t kSlack = 4;

size_t EntriesOf(const std::string& folder) {
    DIR* const opened = opendir(folder.c_str());
    size_t count = 0;
    while (opened != nullptr && readdir(opened) != nullptr) ++count;
    if (opened != nullptr) closedir(opened);
    return count;
}

// What a process holds of each, by its folder in /proc; zeroes where that does not tell.
constexpr const char* kHeld[][2] = {
        {"fd", " descriptors"}, {"task", " threads"}, {"map_files", " mapped files"}};
using Held = std::array<size_t, std::size(kHeld)>;

Held HeldBy(pid_t process) {
    Held held = {};
    for (size_t i = 0; i < held.size(); ++i) {
        held[i] = EntriesOf(Say("/proc/", process, "/", kHeld[i][0]));
    }
    return held;
}

std::string Text(const Held& held) {
    std::string text;
    for (size_t i = 0; i < held.size(); ++i) {
        text += Say(i > 0 ? ", " : "", held[i], kHeld[i][1]);
    }
    return text;
}

// Calls `round` some times to warm up, then `count` times, after which the service must hold no
// more than before.
Verdict LeavesNothing(Device& device, int warmUp, int count,
                      const std::function<Verdict(int)>& round) {
    Held before = {}, after = {};
    for (int i = 0; i < warmUp + count; ++i) {
        if (i == warmUp) before = HeldBy(device.process);
        const Verdict verdict = round(i);
        const bool good = verdict.Good() || verdict.outcome == Outcome::kWarn;
        if (!good) return Fail(Say("round ", i + 1, " as the first one"), verdict.came);
    }
    if (before == Held{}) return Skip("all went well; /proc does not tell what is held");
    const auto look = [&] {
        after = HeldBy(device.process);
        const auto same = [](size_t had, size_t has) { return has <= had + kSlack; };
        return std::equal(before.begin(), before.end(), after.begin(), same);
    };
    return Require(Eventually(look), Say("no more than before ", count, " rounds: ", Text(before)),
                   Text(after));
}

Verdict EndsSessions(Device& device) {
    const PlainRun* run = device.Working();
    if (run == nullptr) return Skip("no mode brings results");
    std::vector<std::weak_ptr<Recorder>> clients;
    const Verdict left = LeavesNothing(device, 20, 200, [&](int i) {
        Session session(device);
        clients.push_back(session.client);
        const Answer taken = session.IsOpen() ? session.Configure(run->info) : session.opened;
        if (!taken.Ok()) return taken.MustSucceed("OK");
        if (i % 20 == 0) return session.Exchange("a result");
        OfflineRequestInfo wrong = session.Request();
        wrong.outputBuffers[0].streamId = 77;
        session.Process(std::move(wrong));
        return Verdict();
    });
    const auto released = [&] {
        return std::all_of(clients.begin(), clients.end(),
                           [](auto& each) { return each.expired(); });
    };
    if (left.outcome == Outcome::kFail || Eventually(released)) return left;
    return Fail("no callback of a closed session still held", "one is, 5 s after the last close");
}

Verdict SurvivesDeaths(Device& device) {
    if (device.Working() == nullptr) return Skip("no mode brings results");
    const Verdict left = LeavesNothing(device, 7, 50, [&](int i) {
        return KillClient(device, kVictimStates[static_cast<size_t>(i) % std::size(kVictimStates)]);
    });
    if (left.outcome == Outcome::kFail) return left;
    const Verdict survivor = OnStreams(
            [](Session& session) { return session.Exchange("a result after the deaths"); })(device);
    return survivor.Good() ? left : survivor;
}

}  // namespace

Verdict KillClient(Device& device, const std::string& state) {
    int ends[2];  // ours, and the client's standard output
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) return Skip("no sockets");
    const ndk::ScopedFileDescriptor own(ends[0]);
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        execl("/proc/self/exe", "offlineservicecheck", "--victim", state.c_str(), nullptr);
        _exit(1);
    }
    close(ends[1]);
    if (child < 0) return Skip("no process");
    const auto await = [&](short event, milliseconds limit) {
        pollfd wait = {own.get(), event, 0};
        return poll(&wait, 1, static_cast<int>(limit.count())) == 1;
    };
    char byte = 0;
    const bool told = write(own.get(), &byte, 1) == 1 &&  // which makes a signalled fence of it
                      await(POLLIN, kWait) && read(own.get(), &byte, 1) == 1;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    if (!told) return Skip("a client did not get into the state '" + state + "' within 5 s");
    // Hung up is the socket once the service, too, has closed its end: see BeVictim.
    const bool soon = await(0, kSecond);
    if (!soon && !await(0, kWait)) {
        return Fail("a dead client's frames dropped", "one that waits is still held after 6 s");
    }
    if (!soon) return Warn("a dead client's frames are held for more than 1 s");
    const auto opens = [&] { return Session(device).IsOpen(); };
    if (Eventually(opens, kSecond)) return {};
    return Session(device).opened.MustSucceed("a new session within 1 s after the death");
}

void BeVictim(const std::string& last) {
    const auto reach = [&](const std::string& state) {
        if (state == last && write(STDOUT_FILENO, "+", 1) == 1) sleep(30);  // until it is killed
    };
    Device device;
    if (!device.Connect() || device.service == nullptr) _exit(1);
    device.Register(9, ndk::SharedRefBase::make<Recorder>(&device.pool));
    reach("registered");
    Session session(device);
    if (!session.IsOpen()) _exit(1);
    reach("opened");
    for (const Mode mode : {kMMF, kB2Y, kY2J}) {
        if (session.Configure(ConfigurationOf(mode)).Ok()) break;
    }
    reach("configured");
    session.client->inCallback = [&](const Event& event) {
        reach("callback");
        // Where the mode lends nothing, any callback after the shutter will do.
        if (event.kind != Event::kShutter) reach("lending");
    };
    const ndk::ScopedFileDescriptor never(eventfd(0, EFD_CLOEXEC));
    for (int i = 0; i < 3; ++i) {
        OfflineRequestInfo request = session.Request();
        auto& input = request.inFrameInfos[0].buffers[0];
        if (last == "waiting") input.acquireFence = FenceOf(never.get());
        // Behind frames that wait for ever, it is held until the session ends.
        if (i == 2) request.outputBuffers[0].acquireFence = FenceOf(STDOUT_FILENO);
        session.Process(std::move(request));
    }
    reach("in-flight");
    reach("waiting");
    Eventually([] { return false; });
    _exit(1);
}

const Checks kEnduranceChecks = {
        {"sessions", "200 sessions with frames and refused requests leave nothing behind.",
         EndsSessions},
        {"deaths", "50 clients that die in seven states leave nothing behind.", SurvivesDeaths},
};

}  // namespace conformance
