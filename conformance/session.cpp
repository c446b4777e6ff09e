// Checks of a session's life: opening, closing, what comes after, a client's death.
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BpOfflineCameraCallback.h>

#include "plain_run.h"
#include "victim.h"

namespace conformance {

namespace {

Verdict Opens(Device& device) {
    if (device.service == nullptr) return Skip("see registration.interface");
    Session session(device);
    if (session.IsOpen()) return {};
    return Fail("OK and a session", session.Opened().Text() + ", no session");
}

Verdict TakesAnyName(Device& device) {
    return WithSession(device, [&](Session&) -> Verdict {
        for (const std::string& name :
             {std::string(), std::string(1000, 'n'), std::string("%s%n")}) {
            const Session session(device, name);
            if (session.IsOpen() || session.Opened().Refused()) continue;
            return Fail(Say("a session or a refusal for a name of ", name.size(), " characters"),
                        session.Opened().Text());
        }
        return {};
    });
}

Verdict RefusesCallback(Device& device,
                        const std::shared_ptr<package::IOfflineCameraCallback>& callback) {
    if (!device.CanOpen()) return Skip("see session.open");
    const auto place = std::make_shared<std::shared_ptr<package::IOfflineCameraSession>>();
    const Answer answer = Bounded("openOfflineSession", [=, service = device.service](int32_t*) {
        return service->openOfflineSession("offlincameratest", callback, place.get());
    });
    if (answer.Refused()) return {};
    return Fail("a status that is not OK",
                answer.Text() + (answer.Ok() && *place != nullptr ? " and a session" : ""));
}

Verdict RefusesNull(Device& device) {
    return RefusesCallback(device, nullptr);
}

Verdict RefusesForeign(Device& device) {
    if (!device.CanOpen()) return Skip("see session.open");
    return RefusesCallback(
            device, ndk::SharedRefBase::make<package::BpOfflineCameraCallback>(device.binder));
}

// What is wrong with a frame that `session` is to send; empty if its result comes to it alone.
std::string Exchange(Device& device, Session& session, const OfflineSessionConfigureInfo& info) {
    const Answer answer = session.Process(device.Request(info));
    return answer.Ok() ? session.AwaitResult(answer.number) : answer.Text();
}

Verdict KeepsTwoApart(Device& device) {
    return WithStreams(device, [&](Session& first, const auto& info) -> Verdict {
        Session second(device);
        if (!second.IsOpen()) return Warn("one session at a time: " + second.Opened().Text());
        if (const Answer answer = second.Configure(info); !answer.Ok()) {
            return Fail("streams taken in the second session, too", answer.Text());
        }
        const std::string problem = Exchange(device, second, info);
        if (!problem.empty()) return Fail("the second session's result", problem);
        const Events others = first.Client().All();
        if (!others.empty()) {
            return Fail("nothing for the first session's client", Summary(others));
        }
        const std::string later = Exchange(device, first, info);
        return later.empty() ? Verdict() : Fail("then the first session's result", later);
    });
}

Verdict ClosesOneOfTwo(Device& device) {
    return WithStreams(device, [&](Session& first, const auto& info) -> Verdict {
        Session second(device);
        if (!second.IsOpen()) return Skip("one session at a time: " + second.Opened().Text());
        second.Close();
        const std::string problem = Exchange(device, first, info);
        return problem.empty() ? Verdict() : Fail("the other session's result", problem);
    });
}

Verdict Closes(Device& device) {
    return WithSession(device, [](Session& session) -> Verdict {
        const Answer answer = session.Close();
        return answer.Ok() ? Verdict() : Fail("OK", answer.Text());
    });
}

Verdict ClosesTwice(Device& device) {
    return WithSession(device, [](Session& session) -> Verdict {
        session.Close();
        const Answer answer = session.Close();
        return answer.Ok() || answer.Refused() ? Verdict() : Fail("any answer", answer.Text());
    });
}

Verdict RefusesFramesAfterClose(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        session.Close();
        const Answer answer = session.Process(device.Request(info));
        return answer.Refused() ? Verdict() : Fail("a refusal", answer.Text());
    });
}

Verdict RefusesStreamsAfterClose(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        session.Close();
        const Answer answer = session.Configure(info);
        if (answer.Refused()) return {};
        return answer.Ok() ? Warn("a closed session takes streams")
                           : Fail("a refusal", answer.Text());
    });
}

// Longer than the frames that were in flight would take.
std::chrono::milliseconds QuietTime(Device& device, const OfflineSessionConfigureInfo& info) {
    const SentFrame& plain = device.Plain(static_cast<Mode>(info.opMode)).frames[0];
    return std::chrono::milliseconds(300) +
           2 * std::chrono::duration_cast<std::chrono::milliseconds>(plain.done - plain.sent);
}

Verdict ClosesInFlight(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        for (int i = 0; i < 3; ++i) session.Process(device.Request(info, 100 * i));
        const Answer answer = session.Close();
        if (!answer.Ok()) return Fail("OK with frames in flight", answer.Text());
        const size_t before = session.Client().All().size();
        const bool more = session.Client().WaitFor(
                [&](const Events& events) { return events.size() > before; },
                QuietTime(device, info));
        if (!more) return {};
        Events events = session.Client().All();
        events.erase(events.begin(), events.begin() + static_cast<std::ptrdiff_t>(before));
        return Fail("no callback after close was answered", Summary(events));
    });
}

Verdict ClosesInACallback(Device& device) {
    return WithStreams(device, [&](Session& session, const auto& info) -> Verdict {
        const auto closed = std::make_shared<std::atomic<int>>(0);
        session.Client().inCallback = [closed, proxy = session.Proxy()](const Event&) {
            if (closed->exchange(1) != 0) return;
            proxy->closeOfflineSession();
            *closed = 2;
        };
        session.Process(device.Request(info));
        if (Eventually([&] { return *closed == 2; })) return {};
        return Fail("closeOfflineSession returns in a callback of its client within 5 s",
                    *closed == 0 ? "no callback came" : "it did not return");
    });
}

// Kills a client in each state. Empty, or why not.
std::string KillOneOfEach() {
    for (const char* state : kVictimStates) {
        const std::string problem = KillClient(state);
        if (!problem.empty()) return problem;
    }
    return "";
}

Verdict OutlivesItsClient(Device& device) {
    return WithStreams(device, [&](Session& survivor, const auto& info) -> Verdict {
        size_t before = CountsOf(device.process).threads;
        const auto freed = [&] { return CountsOf(device.process).threads <= before; };
        bool inTime = false;
        // Once more where the number has grown: a pool of threads grows only in the beginning.
        for (int round = 0; round < 2 && !inTime; ++round) {
            before = CountsOf(device.process).threads;
            const std::string problem = KillOneOfEach();
            if (!problem.empty()) return Skip("the client that was to die: " + problem);
            inTime = Eventually(freed, std::chrono::seconds(1));
        }
        const std::string problem = Exchange(device, survivor, info);
        if (!problem.empty()) return Fail("another client's frame after the death", problem);
        Session session(device);
        if (!session.IsOpen())
            return Fail("a new session after the death", session.Opened().Text());
        if (inTime) return {};
        return Fail(
                Say("the sessions of dead clients ended within 1 s, leaving ", before, " threads"),
                Say(CountsOf(device.process).threads, " threads"));
    });
}

}  // namespace

Checks SessionChecks() {
    return {
            {"session.open", "openOfflineSession answers OK and gives a session.",
             "Store the session in the out-argument and return OK.", Opens},
            {"session.any-name",
             "openOfflineSession takes or refuses a name that is empty, long or odd.",
             "Copy the name as a string; never use it as a format.", TakesAnyName},
            {"session.null-callback", "openOfflineSession refuses a null callback.",
             "Test the callback for null before the session is made.", RefusesNull},
            {"session.foreign-callback",
             "openOfflineSession refuses a binder that is no IOfflineCameraCallback.",
             "Test the callback for null: a binder of another interface arrives as a null pointer.",
             RefusesForeign},
            {"session.two-apart",
             "Two sessions work beside each other, and each client hears only of its own frames.",
             "Keep callback, streams and queue in the session object, not in the service.",
             KeepsTwoApart},
            {"session.close-one-of-two", "The end of one session leaves another one working.",
             "Stop only the closed session's work.", ClosesOneOfTwo},
            {"session.close", "closeOfflineSession of an idle session answers OK.",
             "Return OK once the session has ended.", Closes},
            {"session.close-twice", "A second closeOfflineSession is answered, by whatever status.",
             "Remember that the session has ended; free nothing twice.", ClosesTwice},
            {"session.frames-after-close", "processOfflineRequest of a closed session is refused.",
             "Test for the end first, under the lock that closing takes.", RefusesFramesAfterClose},
            {"session.streams-after-close",
             "configureOfflineStreams of a closed session is better refused.",
             "Test for the end first, under the lock that closing takes.",
             RefusesStreamsAfterClose},
            {"session.close-in-flight",
             "closeOfflineSession with frames in flight is answered, and no callback comes after "
             "it.",
             "Drop what waits, stop what runs, and wait for its callback to return before "
             "answering.",
             ClosesInFlight},
            {"session.close-in-callback",
             "closeOfflineSession returns when a client calls it in a callback.",
             "Do not wait for the callback's thread where the call comes from within that "
             "callback.",
             ClosesInACallback},
            {"session.client-death",
             "The death of a client ends its session within a second, and disturbs no other.",
             "Link to the death of the callback's binder, and end the session there.",
             OutlivesItsClient},
    };
}

}  // namespace conformance
