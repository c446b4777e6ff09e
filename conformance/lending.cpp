// Checks of the buffers that the service borrows from its client.
#include <algorithm>

#include "plain_run.h"

namespace conformance {

namespace {

// The first mode that asks for buffers.
bool Asking(Device& device, Mode* mode) {
    for (const Mode candidate : device.Claimed()) {
        *mode = candidate;
        for (const Event& event : device.Plain(candidate).events) {
            if (event.kind == Event::kAsked) return true;
        }
    }
    return false;
}

// Looks at all events of the modes, up to the first finding; skips where nothing is asked for or
// given back.
Verdict EachRun(Device& device, const std::function<Verdict(const Events&, const char*)>& look) {
    bool any = false;
    for (const Mode mode : device.Claimed()) {
        const Events& events = device.Plain(mode).events;
        any = any || std::any_of(events.begin(), events.end(), [](const Event& event) {
                  return event.kind == Event::kAsked || event.kind == Event::kReturned;
              });
        Verdict found = look(events, NameOf(mode));
        if (!found.Good()) return found;
    }
    return any ? Verdict() : Skip("the service asks for no buffers");
}

std::vector<BufferMark> All(const Events& events, Event::Kind kind) {
    std::vector<BufferMark> buffers;
    for (const Event& event : events) {
        if (event.kind != kind) continue;
        buffers.insert(buffers.end(), event.buffers.begin(), event.buffers.end());
    }
    return buffers;
}

size_t Times(const std::vector<BufferMark>& buffers, const BufferMark& wanted) {
    return static_cast<size_t>(
            std::count_if(buffers.begin(), buffers.end(),
                          [&](const auto& buffer) { return buffer.Same(wanted); }));
}

Verdict AsksForSomething(Device& device) {
    return EachRun(device, [](const Events& events, const char* mode) -> Verdict {
        for (const Event& event : events) {
            if (event.kind != Event::kAsked) continue;
            const Stream& stream = event.stream;
            if (event.count > 0 && event.count <= 64 && stream.width > 0 && stream.height > 0)
                continue;
            return Fail("1 to 64 buffers of a stream with width and height",
                        Say(mode, " asks for ", event.count, " of ", stream.width, " x ",
                            stream.height));
        }
        return {};
    });
}

Verdict UsesWhatItAsksFor(Device& device) {
    return EachRun(device, [](const Events& events, const char* mode) -> Verdict {
        for (const BufferMark& buffer : All(events, Event::kReturned)) {
            if (buffer.good) continue;
            return Warn(Say(mode, " gives ", Text(buffer), " back as it was: was it needed?"));
        }
        return {};
    });
}

Verdict GivesBackOnlyLent(Device& device) {
    return EachRun(device, [](const Events& events, const char* mode) -> Verdict {
        const auto lent = All(events, Event::kAsked);
        for (const BufferMark& buffer : All(events, Event::kReturned)) {
            if (Times(lent, buffer) > 0) continue;
            return Fail(Say("buffers given back that were lent, in ", mode), Text(buffer));
        }
        return {};
    });
}

Verdict GivesBackOnce(Device& device) {
    return EachRun(device, [](const Events& events, const char* mode) -> Verdict {
        const auto returned = All(events, Event::kReturned);
        for (const BufferMark& buffer : All(events, Event::kAsked)) {
            const size_t times = Times(returned, buffer);
            if (times > 1)
                return Fail(Say("each lent buffer given back once in ", mode),
                            Say(Text(buffer), ": ", times, " times"));
        }
        return {};
    });
}

Verdict GivesBackAll(Device& device) {
    return EachRun(device, [](const Events& events, const char* mode) -> Verdict {
        const auto returned = All(events, Event::kReturned);
        for (const BufferMark& buffer : All(events, Event::kAsked)) {
            if (Times(returned, buffer) > 0) continue;
            return Fail(Say("each lent buffer given back before ", mode, "'s session is closed"),
                        Text(buffer) + " kept");
        }
        return {};
    });
}

// A frame of a mode that asks for buffers, with another answer than it wants.
Verdict Copes(Device& device, Lend lend, bool worksBetter = false) {
    Mode mode;
    if (!Asking(device, &mode)) return Skip("the service asks for no buffers");
    if (!device.Plain(mode).Works()) return Skip("no result to begin with: see process.result");
    return WithStreams(device, mode, [&](Session& session, const auto& info) -> Verdict {
        session.Client().lend = lend;
        const Answer sent = session.Process(device.Request(info));
        if (sent.Refused()) return {};
        const std::string problem = sent.Ok() ? session.AwaitResult(sent.number) : sent.Text();
        const bool failed = Failed(session.Client().All(), sent.number);
        if (!problem.empty() && !failed) {
            return Fail("result or error message of the frame", problem);
        }
        session.Close();
        const Events events = session.Client().All();
        const auto lent = All(events, Event::kAsked);
        for (const BufferMark& buffer : All(events, Event::kReturned)) {
            if (Times(lent, buffer) > 0) continue;
            return Fail("no use of a buffer that was not lent", Text(buffer) + " given back");
        }
        for (const BufferMark& buffer : lent) {
            if (Times(All(events, Event::kReturned), buffer) == 1) continue;
            return Fail("what was lent given back once", Text(buffer) + " was not");
        }
        if (worksBetter && failed) return Warn("the frame fails though its buffers were lent");
        return {};
    });
}

}  // namespace

Checks LendingChecks() {
    constexpr char kAnswer[] =
            "Test status, list and buffers of the answer; fail the frame otherwise.";
    return {
            {"lending.asks-for-something", "A request for buffers has a count and a real stream.",
             "Copy the stream from the configuration.", AsksForSomething},
            {"lending.uses-it", "No more buffers are asked for than used.",
             "Ask for buffers where they are needed, and for as many.", UsesWhatItAsksFor},
            {"lending.only-lent", "Only buffers that were lent are given back.",
             "Keep stream and buffer id of the answer.", GivesBackOnlyLent},
            {"lending.once", "Each lent buffer is given back once.",
             "Take a buffer off the list of the lent ones before it is given back.", GivesBackOnce},
            {"lending.all", "Each lent buffer is given back before the session is closed.",
             "Give back at the end of the frame, also when it failed.", GivesBackAll},
            {"lending.no-answer", "A frame is answered though its client lends nothing at all.",
             kAnswer, [](Device& d) { return Copes(d, Lend::kNoAnswers); }},
            {"lending.error-value",
             "A frame is answered though the client gives an error for buffers.", kAnswer,
             [](Device& d) { return Copes(d, Lend::kErrorValue); }},
            {"lending.too-few",
             "A frame is answered though fewer buffers are lent, which come back.", kAnswer,
             [](Device& d) { return Copes(d, Lend::kOneTooFew); }},
            {"lending.empty-handles", "A frame is answered though lent buffers have no handle.",
             "Test each handle before it is imported; give the buffer back by its id.",
             [](Device& d) { return Copes(d, Lend::kEmptyHandles); }},
            {"lending.refused-call",
             "A frame is answered though requestStreamBuffers itself fails.", kAnswer,
             [](Device& d) { return Copes(d, Lend::kRefused); }},
            {"lending.odd-status",
             "Buffers that were lent are better used whatever the status says.",
             "Look at the buffers: the test client leaves the status unset.",
             [](Device& d) { return Copes(d, Lend::kOddStatus, true); }},
    };
}

}  // namespace conformance
