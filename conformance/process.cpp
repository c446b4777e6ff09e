// Checks of what the service delivers for good requests.
#include <system/camera_metadata.h>

#include <algorithm>

#include "device.h"

namespace conformance {

namespace {

// A frame of a plain run with its messages and results.
struct Frame {
    const PlainRun& run;
    const SentFrame& sent;
    Events shutters, results;
    std::string name;   // such as "B2Y frame 3"
    BufferMark output;  // its request's
};

// Looks at every frame that was sent and taken, up to the first finding.
Run Frames(Verdict (*look)(const Frame&)) {
    const auto lookAtAll = [look](const PlainRun& run) -> std::optional<Verdict> {
        std::optional<Verdict> verdict;
        for (const SentFrame& sent : run.frames) {
            if (!sent.answer.Ok()) continue;
            const int32_t number = sent.answer.number;
            const auto of = [&](Event::Kind kind) { return Of(run.events, kind, number); };
            verdict = look({run,
                            sent,
                            of(Event::kShutter),
                            of(Event::kResult),
                            Say(run.Mode(), " frame ", number),
                            {run.info.streams.back().id, 1}});
            if (!verdict->Good()) break;
        }
        return verdict;
    };
    return OnPlainRuns(lookAtAll, "no frame was taken: see process.taken");
}

bool Contains(const std::vector<BufferMark>& buffers, const BufferMark& wanted) {
    return std::find(buffers.begin(), buffers.end(), wanted) != buffers.end();
}

Verdict IsTaken(const PlainRun& run) {
    return Require(run.frames.back().answer.Ok(), "OK for a request of " + run.Mode(),
                   run.frames.back().answer.Text());
}

Verdict NumbersRise(const PlainRun& run) {
    int32_t before = -1;
    for (const SentFrame& sent : run.frames) {
        const int32_t now = sent.answer.number;
        if (now <= before)
            return Fail(Say("a number above ", before, " in ", run.Mode()), Say(now));
        before = now;
    }
    return {};
}

Verdict HasOneShutter(const Frame& frame) {
    return Require(frame.shutters.size() == 1, "one shutter message for " + frame.name,
                   Say(frame.shutters.size(), " within 5 s"));
}

Verdict NumbersAreOwn(const PlainRun& run) {
    for (const Event& event : run.events) {
        const auto own = [&](const SentFrame& sent) { return sent.answer.number == event.frame; };
        const bool known = std::any_of(run.frames.begin(), run.frames.end(), own);
        if (event.kind > Event::kResult || known) continue;
        return Fail("messages and results of frames that were sent", Text(Events{event}));
    }
    return {};
}

Verdict TimestampsRise(const PlainRun& run) {
    const Events shutters = Of(run.events, Event::kShutter);
    for (size_t i = 1; i < shutters.size(); ++i) {
        const int64_t before = shutters[i - 1].timestamp, now = shutters[i].timestamp;
        if (now > before || shutters[i].frame == shutters[i - 1].frame) continue;
        return Fail(Say("a timestamp above ", before, " ns for frame ", shutters[i].frame),
                    Say(now, " ns"));
    }
    return {};
}

Verdict ShutterIsFirst(const Frame& frame) {
    const bool late = !frame.shutters.empty() && !frame.results.empty() &&
                      frame.shutters[0].at > frame.results[0].at;
    return late ? Warn("the result of " + frame.name + " came before its shutter") : Verdict();
}

Verdict NumberIsFirst(const Frame& frame) {
    const bool early = !frame.results.empty() && frame.results[0].at < frame.sent.answer.returned;
    return early ? Warn("the result of " + frame.name + " came before its number") : Verdict();
}

Verdict HasAResult(const Frame& frame) {
    return Require(frame.sent.result, "a full result of " + frame.name + " within 5 s",
                   Text(frame.run.events));
}

Verdict CoversAllOutputs(const Frame& frame) {
    const auto named = BuffersOf(frame.results);
    return Require(named.empty() || Contains(named, frame.output),
                   Text(frame.output) + " in the result of " + frame.name, Text(frame.results));
}

Verdict NamesOwnBuffers(const Frame& frame) {
    for (const BufferMark& buffer : BuffersOf(frame.results)) {
        if (buffer == frame.output) continue;
        return Fail("only the request's output in the result of " + frame.name, Text(buffer));
    }
    return {};
}

Verdict NamesOutputsOnce(const Frame& frame) {
    const auto named = BuffersOf(frame.results);
    const auto times = std::count(named.begin(), named.end(), frame.output);
    return Require(times <= 1, Text(frame.output) + " once for " + frame.name,
                   Say(times, " times"));
}

Verdict CoversTwoOutputs(Device& device, Session& session, Configuration info) {
    info.streams.push_back(info.streams.back());
    info.streams.back().id = 5;
    const Answer taken = session.Configure(info);
    if (taken.Refused()) return Skip("a second output stream: " + taken.Text());
    const Answer sent = session.Process(device.Request(info));
    const Verdict verdict = session.AwaitResult(sent, "a result with both outputs");
    if (!verdict.Good() || Contains(BuffersOf(session.All()), {5, 2})) return verdict;
    return Fail("stream 5 buffer 2, too", Text(session.All()));
}

Verdict DoesNotFail(const PlainRun& run) {
    for (const Event& event : run.events) {
        if (event.frame == -1 || !Failed({event}, event.frame)) continue;
        return Fail("no error message and no broken buffer in " + run.Mode(), Text(Events{event}));
    }
    return {};
}

Verdict PartsAddUp(const Frame& frame) {
    int32_t stated = 0, came = 0;
    for (const Event& result : frame.results) {
        stated = std::max(stated, result.count);
        came += !result.metadata.empty();
        if (result.count < 0) return Fail("a number of parts", Say(result.count));
    }
    const std::string parts = Say(stated, " stated for ", frame.name, ", ", came, " came");
    // The close may come before the last frame's last part.
    const bool last = &frame.sent == &frame.run.frames.back();
    if (stated == 0 || stated == came || !frame.sent.result || last) return {};
    return stated > 1 ? Fail("as many parts of metadata as stated", parts) : Warn(parts);
}

Verdict MetadataIsSound(const Frame& frame) {
    for (const Event& result : frame.results) {
        const size_t size = result.metadata.size();
        const auto* blob = reinterpret_cast<const camera_metadata_t*>(result.metadata.data());
        const size_t stated = size < sizeof(uint32_t) ? 0 : get_camera_metadata_size(blob);
        if (stated == size && (size == 0 || !validate_camera_metadata_structure(blob, &size)))
            continue;
        return Fail("a sound camera metadata blob for " + frame.name,
                    Say(size, " bytes; the blob states ", stated));
    }
    return {};
}

Verdict CallsWithSomething(const PlainRun& run) {
    const Events empty = Of(run.events, Event::kEmpty);
    return Require(empty.empty(), "callbacks with at least one entry", Text(empty));
}

}  // namespace

Checks ProcessChecks() {
    return {{"process.taken", "processOfflineRequest takes the test client's requests.",
             OnPlainRuns(IsTaken)},
            {"process.numbers-rise", "Frame numbers are 0 or more, unique in a session, and rise.",
             OnPlainRuns(NumbersRise)},
            {"process.shutter", "Each frame has exactly one shutter message within 5 s.",
             Frames(HasOneShutter)},
            {"process.own-numbers", "Messages and results carry numbers that were returned.",
             OnPlainRuns(NumbersAreOwn)},
            {"process.timestamps", "Shutter timestamps rise.", OnPlainRuns(TimestampsRise)},
            {"process.shutter-first", "A shutter better comes before the frame's result.",
             Frames(ShutterIsFirst)},
            {"process.number-first", "processOfflineRequest better returns before the result.",
             Frames(NumberIsFirst)},
            {"process.result", "Each frame has a result, complete within 5 s.", Frames(HasAResult)},
            {"process.result-covers-all-outputs", "A frame's results name its output buffer.",
             Frames(CoversAllOutputs)},
            {"process.result-own-buffers", "A frame's results name no other output buffers.",
             Frames(NamesOwnBuffers)},
            {"process.output-once", "Each output buffer is named once for each frame.",
             Frames(NamesOutputsOnce)},
            {"process.two-outputs", "A result covers two output streams, where they are taken.",
             OnStreams(CoversTwoOutputs)},
            {"process.no-failure", "Good requests bring no error messages and no broken buffers.",
             OnPlainRuns(DoesNotFail)},
            {"process.partial-results", "As many parts of metadata come as are stated.",
             Frames(PartsAddUp)},
            {"process.metadata", "Result metadata is empty, or one blob of just its size.",
             Frames(MetadataIsSound)},
            {"process.empty-callbacks", "No callback is called with an empty list.",
             OnPlainRuns(CallsWithSomething)}};
}

}  // namespace conformance
