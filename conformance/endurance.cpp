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

// What a process holds, by folders in /proc; zeroes where that does not tell.
constexpr const char* kHeld[] = {" descriptors", " threads", " mapped files"};
using Held = std::array<size_t, std::size(kHeld)>;

Held HeldBy(pid_t process) {
    const std::string folder = Say("/proc/", process, "/");
    return {EntriesOf(folder + "fd"), EntriesOf(folder + "task"), EntriesOf(folder + "map_files")};
}

// Calls `round` some times to warm up, then `count` times, after which the service must hold no
// more than before.
Verdict LeavesNothing(int warmUp, int count, const std::function<Verdict(int)>& round) {
    Held before = {};
    for (int i = 0; i < warmUp + count; ++i) {
        if (i == warmUp) before = HeldBy(Recorder::s_service);
        const Verdict verdict = round(i);
        if (!verdict.Good()) return Fail(Say("round ", i + 1, " as the first one"), verdict.came);
    }
    if (before == Held{}) return Skip("all went well; /proc does not tell what is held");
    std::string more;
    const auto nothing = [&] {
        const Held after = HeldBy(Recorder::s_service);
        more.clear();
        for (size_t i = 0; i < after.size(); ++i) {
            if (after[i] > before[i] + kSlack)
                more += Say(after[i], kHeld[i], " after ", before[i], "; ");
        }
        return more.empty();
    };
    return Require(Eventually(nothing, kSecond), Say("no more held than before ", count, " rounds"),
                   more);
}

Verdict EndsSessions(Device& device) {
    const PlainRun* run = device.Find(Works());
    if (run == nullptr) return Skip("no mode brings results");
    return LeavesNothing(20, 200, [&](int i) {
        Session session(device);
        const Answer taken = session.IsOpen() ? session.Configure(run->info) : session.opened;
        if (!taken.Ok()) return taken.MustSucceed("OK");
        if (i % 20 == 0) return session.Exchange("a result");
        Requests wrong = session.Request();
        wrong[0].outputBuffers[0].streamId = 77;
        session.Process(std::move(wrong));
        return Verdict();
    });
}

Verdict SurvivesDeaths(Device& device) {
    if (device.Find(Works()) == nullptr) return Skip("no mode brings results");
    const Verdict left = LeavesNothing(6, 50, [&](int i) {
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
    // The socket hangs up once the service, too, has closed its end of it: see BeVictim.
    const bool soon = await(0, kSecond);
    if (!soon && !await(0, kWait - kSecond)) {
        return Fail("a dead client's frames dropped", "one that waits is still held after 5 s");
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
    // A service that borrows, as for MMF, notices the death when it asks for buffers.
    const bool waiting = last == "waiting";
    for (const Mode mode : {waiting ? kB2Y : kMMF, kB2Y, kY2J}) {
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
        Requests requests = session.Request();
        auto& input = requests[0].inFrameInfos[0].buffers[0];
        if (waiting) input.acquireFence = FenceOf(never.get());
        // Behind frames that wait for ever, it is held until the session ends.
        if (waiting && i == 2) requests[0].outputBuffers[0].acquireFence = FenceOf(STDOUT_FILENO);
        session.Process(std::move(requests));
    }
    reach("in-flight");
    reach("waiting");
    Eventually([] { return false; });
    _exit(1);
}

const Checks kEnduranceChecks = {
        {"sessions", "200 sessions with frames and refused requests leave nothing behind.",
         EndsSessions},
        {"deaths", "50 clients that die in six states leave nothing behind.", SurvivesDeaths},
};

}  // namespace conformance
