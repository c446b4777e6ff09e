// Checks that nothing stays behind in the service after many sessions and deaths.
#include "plain_run.h"
#include "victim.h"

namespace conformance {

namespace {

constexpr int kSessions = 200;
constexpr int kDeaths = 50;
constexpr int kFrames = 20;
constexpr int kRefusals = 100;
// Less than a leak of one thing in every tenth round makes, more than a pool's late thread.
constexpr size_t kSlack = 4;

std::string Text(const Counts& counts) {
    return Say(counts.descriptors, " descriptors, ", counts.threads, " threads, ",
               counts.sharedMappings, " shared mappings");
}

bool Within(const Counts& now, const Counts& before) {
    return now.descriptors <= before.descriptors + kSlack &&
           now.threads <= before.threads + kSlack &&
           now.sharedMappings <= before.sharedMappings + kSlack;
}

// Calls `round` with 0 and up: first a few times to warm up, then `count` times, after which the
// service must hold no more than before. `round` returns what went wrong.
Verdict LeavesNothing(Device& device, int warmUp, int count,
                      const std::function<std::string(int)>& round) {
    Counts before;
    for (int i = 0; i < warmUp + count; ++i) {
        if (i == warmUp) before = CountsOf(device.process);
        const std::string problem = round(i);
        if (!problem.empty()) return Fail(Say("round ", i + 1, " as the first one"), problem);
    }
    if (before.threads == 0) return Skip("the rounds went well; /proc does not tell what is held");
    if (Eventually([&] { return Within(CountsOf(device.process), before); })) return {};
    return Fail(Say("what there was before ", count, " rounds: ", Text(before)),
                Text(CountsOf(device.process)));
}

std::string SendAndAwait(Device& device, Session& session,
                         const OfflineSessionConfigureInfo& info) {
    const Answer sent = session.Process(device.Request(info));
    return sent.Ok() ? session.AwaitResult(sent.number) : sent.Text();
}

Verdict EndsSessions(Device& device) {
    Mode mode;
    if (!device.Working(&mode)) return Skip("no mode brings results");
    return LeavesNothing(device, 20, kSessions, [&](int i) -> std::string {
        Session session(device);
        if (!session.IsOpen()) return session.Opened().Text();
        const Answer taken = session.Configure(device.Plain(mode).info);
        if (!taken.Ok()) return taken.Text();
        if (i % 20 != 0) return "";
        return SendAndAwait(device, session, device.Plain(mode).info);
    });
}

Verdict EndsFrames(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) {
        return LeavesNothing(device, 4, kFrames,
                             [&](int) { return SendAndAwait(device, session, info); });
    });
}

Verdict ForgetsRefused(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) {
        return LeavesNothing(device, 4, kRefusals, [&](int) -> std::string {
            OfflineRequestInfo request = device.Request(info);
            request.outputBuffers[0].streamId = 77;
            const Answer answer = session.Process(std::move(request));
            return answer.Ok() || answer.Refused() ? "" : answer.Text();
        });
    });
}

Verdict SurvivesDeaths(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        constexpr int kStates = static_cast<int>(std::size(kVictimStates));
        const Verdict left = LeavesNothing(device, kStates, kDeaths, [&](int i) {
            return KillClient(kVictimStates[i % kStates]);
        });
        if (left.outcome == Outcome::kFail) return left;
        const std::string problem = SendAndAwait(device, session, info);
        return problem.empty() ? left : Fail("a survivor's frame afterwards", problem);
    });
}

}  // namespace

Checks EnduranceChecks() {
    constexpr char kEnd[] = "End thread, buffers and death link with the session.";
    return {
            {"endurance.sessions", "200 sessions leave no descriptor, thread or mapping behind.",
             kEnd, EndsSessions},
            {"endurance.frames", "20 frames of a session leave nothing behind.",
             "Free imported handles and unlock buffers at the end of each frame.", EndsFrames},
            {"endurance.refusals", "100 refused requests leave nothing behind.",
             "Free what was imported before the request was found to be wrong.", ForgetsRefused},
            {"endurance.deaths", "50 clients that die in all states leave nothing behind.", kEnd,
             SurvivesDeaths},
    };
}

}  // namespace conformance
