// Checks of a session's life: opening, closing, what comes after, a client's death.
#include "device.h"

namespace conformance {

namespace {

Verdict Opens(Device& device) {
    if (device.service == nullptr) return Skip("see registration.interface");
    const Session session(device);
    return Require(session.IsOpen(), "OK and a session", session.opened.Text() + ", no session");
}

Run Refuses(bool foreign) {
    return OnSession([=](Device& device, Session&) {
        SessionProxy session;
        return device.Open("a", foreign ? device.ForeignCallback() : nullptr, &session)
                .MustBeRefused();
    });
}

Verdict KeepsTwoApart(Device& device, Session& first, const Configuration& info) {
    Session second(device);
    if (!second.IsOpen()) return Warn("one session at a time: " + second.opened.Text());
    Configuration others = info;
    for (const PlainRun* run : device.Claimed()) {
        if (run->Works()) others = run->info;  // of another mode, if there is one
    }
    const Answer taken = second.Configure(others);
    if (!taken.Ok()) return taken.MustSucceed("streams taken in the second session");
    const Verdict verdict = second.Exchange(others, "the second session's result");
    if (!verdict.Good()) return verdict;
    if (!first.All().empty()) return Fail("nothing for the first client", Text(first.All()));
    second.Close();
    return first.Exchange(info, "then, with the second session closed, the first one's result");
}

Verdict Closes(Device&, Session& session) {
    return session.Close().MustSucceed("OK");
}

Verdict ClosesTwice(Device&, Session& session) {
    session.Close();
    return session.Close().MustReturn();
}

Verdict RefusesFrames(Device& device, Session& session, const Configuration& info) {
    session.Close();
    return session.Process(device.Request(info)).MustBeRefused();
}

Verdict RefusesStreams(Device&, Session& session, const Configuration& info) {
    session.Close();
    const Answer answer = session.Configure(info);
    return answer.Ok() ? Warn("a closed session takes streams") : answer.MustBeRefused();
}

Verdict ClosesInACallback(Device& device, Session& session, const Configuration& info) {
    enum State { kNoCallback, kInCall, kReturned };
    const auto state = std::make_shared<std::atomic<State>>(kNoCallback);
    session.client->inCallback = [state, proxy = session.proxy](const Event&) {
        State none = kNoCallback;
        if (!state->compare_exchange_strong(none, kInCall)) return;
        proxy->closeOfflineSession();
        *state = kReturned;
    };
    session.Process(device.Request(info));
    const bool returned = Eventually([&] { return *state == kReturned; });
    return Require(returned, "closeOfflineSession returning within 5 s",
                   *state == kNoCallback ? "no callback" : "a call that did not return");
}

Verdict OutlivesItsClients(Device& device, Session& survivor, const Configuration& info) {
    for (const char* state : kVictimStates) {
        const std::string problem = KillClient(state);
        if (!problem.empty()) return Skip("a client that was to die: " + problem);
    }
    const Verdict verdict = survivor.Exchange(info, "another client's result after the deaths");
    const auto opens = [&] { return Session(device).IsOpen(); };
    if (!verdict.Good() || Eventually(opens, std::chrono::seconds(1))) return verdict;
    return Session(device).opened.MustSucceed("a new session within 1 s after the deaths");
}

}  // namespace

Verdict ClosesInFlight(Device& device, Session& session, const Configuration& info) {
    for (int i = 0; i < 3; ++i) session.Process(device.Request(info, 100 * i));
    const Answer answer = session.Close();
    if (!answer.Ok()) return answer.MustSucceed("OK with frames in flight");
    const Events before = session.All();
    const auto more = [&](const Events& events) { return events.size() > before.size(); };
    const bool came = session.client->WaitFor(more, kQuiet);
    return Require(!came, "no more than before the close: " + Text(before), Text(session.All()));
}

Checks SessionChecks() {
    return {{"session.open", "openOfflineSession answers OK and gives a session.", Opens},
            {"session.null", "openOfflineSession refuses a null callback.", Refuses(false)},
            {"session.foreign", "openOfflineSession refuses a binder that is no callback.",
             Refuses(true)},
            {"session.two-apart",
             "Two sessions work and end on their own, and each client hears of its frames only.",
             OnStreams(KeepsTwoApart)},
            {"session.close", "closeOfflineSession of an idle session answers OK.",
             OnSession(Closes)},
            {"session.close-twice", "A second closeOfflineSession is answered.",
             OnSession(ClosesTwice)},
            {"session.frames-after-close", "processOfflineRequest after the close is refused.",
             OnStreams(RefusesFrames)},
            {"session.streams-after-close", "Streams after the close are better refused.",
             OnStreams(RefusesStreams)},
            {"session.close-in-flight", "No callback comes after closeOfflineSession is answered.",
             OnStreams(ClosesInFlight)},
            {"session.close-in-callback", "closeOfflineSession returns in a client's callback.",
             OnStreams(ClosesInACallback)},
            {"session.client-death",
             "A client's death disturbs no other client, and frees its place within 1 s.",
             OnStreams(OutlivesItsClients)}};
}

}  // namespace conformance
