// Checks of the registered object and of a session's life: opening, closing, what comes after, a
// client's death.
#include "device.h"

namespace conformance {

namespace {

Verdict TellsItsVersion(Device& device) {
    int32_t version = 0;
    std::string hash;
    const auto told = device.service->getInterfaceVersion(&version);
    const auto hashed = device.service->getInterfaceHash(&hash);
    return Require(told.isOk() && hashed.isOk() && version >= 1 && !hash.empty(),
                   "version 1 and a hash", Say("version ", version, ", hash '", hash, "'"));
}

Verdict TakesAClient(Device& device) {
    const auto client = ndk::SharedRefBase::make<Recorder>(&device.pool);
    const Verdict first = device.Register(7, client).MustSucceed("OK for client 7");
    return first.Good() ? device.Register(7, client).MustReturn() : first;
}

Verdict Unregisters(Device& device) {
    device.Register(2, ndk::SharedRefBase::make<Recorder>(&device.pool));
    for (const int32_t id : {2, 2, 12345}) {  // known, then unknown
        const Answer answer = Bounded("unregisterClient", [=, service = device.service](Answer*) {
            return service->unregisterClient(id);
        });
        if (!answer.MustReturn().Good()) return answer.MustReturn();
    }
    return {};
}

Verdict Opens(Device& device) {
    const Session session(device);
    return Require(session.IsOpen(), "OK and a session", session.opened.Text() + ", no session");
}

Verdict KeepsTwoApart(Session& first) {
    Session second(first.device);
    if (!second.IsOpen()) return Warn("one session at a time: " + second.opened.Text());
    Configuration others = first.info;
    for (const PlainRun& run : first.device.PlainRuns()) {
        if (run.Works()) others = run.info;  // of another mode, if there is one
    }
    const Answer taken = second.Configure(others);
    if (!taken.Ok()) return taken.MustSucceed("streams taken in the second session");
    const Verdict verdict = second.Exchange("the second session's result");
    if (!verdict.Good()) return verdict;
    if (!first.All().empty()) return Fail("nothing for the first client", Text(first.All()));
    second.Close();
    return first.Exchange("then, with the second session closed, the first one's result");
}

Verdict ClosesInACallback(Session& session) {
    enum State { kNoCallback, kInCall, kReturned };
    const auto state = std::make_shared<std::atomic<State>>(kNoCallback);
    session.client->inCallback = [state, proxy = session.proxy](const Event&) {
        State none = kNoCallback;
        if (!state->compare_exchange_strong(none, kInCall)) return;
        proxy->closeOfflineSession();
        *state = kReturned;
    };
    session.Process(session.Request());
    const bool returned = Eventually([&] { return *state == kReturned; });
    return Require(returned, "closeOfflineSession returning within 5 s",
                   *state == kNoCallback ? "no callback" : "a call that did not return");
}

Verdict OutlivesItsClients(Session& survivor) {
    const bool several = Session(survivor.device).IsOpen();
    if (!several) survivor.Close();  // so that the others can open theirs
    for (const char* state : kVictimStates) {
        const Verdict freed = KillClient(survivor.device, state);
        if (!freed.Good()) return freed;
    }
    const Verdict works =
            several ? survivor.Exchange("another client's result after the deaths") : Verdict();
    const Verdict freed = works.Good() ? KillClient(survivor.device, "waiting") : works;
    return freed.outcome == Outcome::kSkip ? works : freed;
}

}  // namespace

Verdict ClosesInFlight(Session& session) {
    for (int i = 0; i < 3; ++i) session.Process(session.Request(100 * i));
    const Answer answer = session.Close();
    if (!answer.Ok()) return answer.MustSucceed("OK with frames in flight");
    const Events before = session.All();
    const auto more = [&](const Events& events) { return events.size() > before.size(); };
    const bool came = session.client->WaitFor(more, kSecond);
    return Require(!came, "no more than before the close: " + Text(before), Text(session.All()));
}

const Checks kRegistrationChecks = {
        {"interface", "The registered object is an IOfflineCameraService.",
         [](Device& d) {
             return Require(d.service != nullptr, package::IOfflineCameraService::descriptor,
                            "an object of another interface");
         }},
        {"version", "The object tells its interface's version and hash.", TellsItsVersion},
        {"client", "registerClient takes a client, and answers a second time.", TakesAClient},
        {"null", "registerClient refuses a null callback.",
         [](Device& d) { return d.Register(1, nullptr).MustBeRefused(); }},
        {"foreign", "registerClient refuses a binder that is no callback.",
         [](Device& d) { return d.Register(1, d.ForeignCallback()).MustBeRefused(); }},
        {"operation-1", "getSupportedOpModes is answered, by whatever status.",
         [](Device& d) { return d.ListModes().MustReturn(); }},
        {"operation-3", "unregisterClient is answered, also for unknown ids.", Unregisters},
};

const Checks kSessionChecks = {
        {"open", "openOfflineSession answers OK and gives a session.", Opens},
        {"null", "openOfflineSession refuses a null callback.",
         OnSession([](Session& s) { return s.device.Open(nullptr).MustBeRefused(); })},
        {"foreign", "openOfflineSession refuses a binder that is no callback.",
         OnSession([](Session& s) {
             return s.device.Open(s.device.ForeignCallback()).MustBeRefused();
         })},
        {"two-apart",
         "Two sessions work and end on their own, and each client hears of its frames only.",
         OnStreams(KeepsTwoApart)},
        {"close", "closeOfflineSession of an idle session answers OK.",
         OnSession([](Session& s) { return s.Close().MustSucceed("OK"); })},
        {"close-twice", "A second closeOfflineSession is answered.", OnSession([](Session& s) {
             s.Close();
             return s.Close().MustReturn();
         })},
        {"frames-after-close", "processOfflineRequest after the close is refused.",
         OnStreams([](Session& s) {
             s.Close();
             return s.Process(s.Request()).MustBeRefused();
         })},
        {"streams-after-close", "Streams after the close are better refused.",
         OnStreams([](Session& s) {
             s.Close();
             const Answer answer = s.Configure(s.info);
             return answer.Ok() ? Warn("a closed session takes streams") : answer.MustBeRefused();
         })},
        {"close-in-flight", "No callback comes after closeOfflineSession is answered.",
         OnStreams(ClosesInFlight)},
        {"close-in-callback", "closeOfflineSession returns in a client's callback.",
         OnStreams(ClosesInACallback)},
        {"client-death",
         "A client's death disturbs no other client, and frees its place within 1 s.",
         OnStreams(OutlivesItsClients)},
};

}  // namespace conformance
