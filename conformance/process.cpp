// Checks of what the service delivers for good requests.
#include <system/camera_metadata.h>

#include <algorithm>

#include "device.h"

namespace conformance {

namespace {

// While other sessions are opened, configured and closed.
Verdict NumbersGoOn(Session& session) {
    int32_t before = -1;
    for (int i = 0; i < 3; ++i) {
        Session other(session.device);
        if (other.IsOpen()) other.Configure(session.info);
        const Answer sent = session.Process(session.Request(100 * i));
        if (!sent.Ok()) return sent.MustSucceed("OK for a request");
        if (sent.number <= before) return Fail(Say("a number above ", before), Say(sent.number));
        before = sent.number;
    }
    return {};
}

Verdict CoversTwoOutputs(Session& session) {
    Configuration info = session.info;
    info.streams.push_back(info.streams.back());
    info.streams.back().id = 5;
    const Answer taken = session.Configure(info);
    if (taken.Refused()) return Skip("a second output stream: " + taken.Text());
    const Answer sent = session.Process(session.Request());
    const Verdict verdict = session.AwaitResult(sent, "a result with both outputs");
    const auto named = BuffersOf(session.All());
    const BufferMark second = {5, 2};
    if (!verdict.Good() || std::count(named.begin(), named.end(), second) > 0) return verdict;
    return Fail("stream 5 buffer 2, too", Text(session.All()));
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

Verdict PartsAddUp(const Events& results, const std::string& name, bool last) {
    int32_t stated = 0, came = 0;
    for (const Event& result : results) {
        stated = std::max(stated, result.count);
        came += !result.metadata.empty();
        if (result.count < 0) return Fail("a number of parts", Say(result.count));
    }
    const std::string parts = Say(stated, " stated for ", name, ", ", came, " came");
    // The close may come before the last frame's last part.
    if (stated == 0 || stated == came || last) return {};
    return stated > 1 ? Fail("as many parts of metadata as stated", parts) : Warn(parts);
}

Verdict IsSound(const std::vector<uint8_t>& metadata, const std::string& name) {
    const size_t size = metadata.size();
    const auto* blob = reinterpret_cast<const camera_metadata_t*>(metadata.data());
    const size_t stated = size < sizeof(uint32_t) ? 0 : get_camera_metadata_size(blob);
    const bool sized = stated == size;
    return Require(sized && (size == 0 || !validate_camera_metadata_structure(blob, &size)),
                   "a sound camera metadata blob for " + name,
                   Say(size, " bytes; the blob states ", stated));
}

void JudgeFrame(size_t index, PlainRun* run) {
    const Answer& sent = run->sent[index];
    const int32_t number = sent.number, before = index > 0 ? run->sent[index - 1].number : -1;
    const std::string name = Say(run->Mode(), " frame ", number);
    const BufferMark output = {run->info.streams.back().id, 1};
    const Events shutters = Of(run->events, Event::kShutter, number);
    const Events results = Of(run->events, Event::kResult, number);
    const auto named = BuffersOf(results);
    const auto times = std::count(named.begin(), named.end(), output);
    const bool last = index + 1 == run->sent.size();
    const bool came = !results.empty();

    run->Note("numbers-rise",
              Require(number > before, Say("a number above ", before, " in ", run->Mode()),
                      Say(number)));
    run->Note("shutter", Require(shutters.size() == 1, "one shutter message for " + name,
                                 Say(shutters.size(), " within 5 s")));
    run->Note("shutter-first", Better(!came || shutters.empty() || shutters[0].at <= results[0].at,
                                      "the result of " + name + " came before its shutter"));
    run->Note("number-first", Better(!came || results[0].at >= sent.returned,
                                     "the result of " + name + " came before its number"));
    run->Note("result", Require(index < run->complete, "a full result of " + name + " within 5 s",
                                Text(run->events)));
    run->Note("result-covers-all-outputs",
              Require(named.empty() || times > 0, Text(output) + " in the result of " + name,
                      Text(results)));
    for (const BufferMark& buffer : named) {
        run->Note("result-own-buffers",
                  Require(buffer == output, "only the request's output in the result of " + name,
                          Text(buffer)));
    }
    run->Note("output-once",
              Require(times <= 1, Text(output) + " once for " + name, Say(times, " times")));
    run->Note("partial-results", PartsAddUp(results, name, last || index >= run->complete));
    for (const Event& result : results) run->Note("metadata", IsSound(result.metadata, name));
}

constexpr char kNotTaken[] = "no frame was taken: see process.taken";
constexpr char kNoResult[] = "no result came: see process.result";

}  // namespace

void JudgeFrames(PlainRun* run) {
    run->Note("taken", run->sent.back().MustSucceed("OK for a request of " + run->Mode()));
    for (size_t i = 0; i < run->sent.size(); ++i) {
        if (run->sent[i].Ok()) JudgeFrame(i, run);
    }
    for (const Event& event : run->events) {
        const auto own = [&](const Answer& sent) { return sent.number == event.frame; };
        const bool known = std::any_of(run->sent.begin(), run->sent.end(), own);
        const std::string text = Text(Events{event});
        run->Note("own-numbers", Require(event.kind > Event::kResult || known,
                                         "messages and results of frames that were sent", text));
        run->Note("no-failure",
                  Require(event.frame == -1 || !Failed({event}, event.frame),
                          "no error message and no broken buffer in " + run->Mode(), text));
        run->Note("empty-callbacks",
                  Require(event.kind != Event::kEmpty, "callbacks with at least one entry", text));
    }
    run->Note("timestamps", TimestampsRise(*run));
}

const Checks kProcessChecks = {
        Noted("taken", "processOfflineRequest takes the test client's requests.", kNotTaken),
        Noted("numbers-rise", "Frame numbers are 0 or more, unique in a session, and rise.",
              kNotTaken),
        {"numbers-go-on", "A session's frame numbers rise, whatever other sessions do.",
         OnStreams(NumbersGoOn)},
        Noted("shutter", "Each frame has exactly one shutter message within 5 s.", kNotTaken),
        Noted("own-numbers", "Messages and results carry numbers that were returned.", kNotTaken),
        Noted("timestamps", "Shutter timestamps rise.", kNotTaken),
        Noted("shutter-first", "A shutter better comes before the frame's result.", kNotTaken),
        Noted("number-first", "processOfflineRequest better returns before the result.", kNotTaken),
        Noted("result", "Each frame has a result, complete within 5 s.", kNotTaken),
        Noted("result-covers-all-outputs", "A frame's results name its output buffer.", kNotTaken),
        Noted("result-own-buffers", "A frame's results name no other output buffers.", kNoResult),
        Noted("output-once", "Each output buffer is named once for each frame.", kNotTaken),
        {"two-outputs", "A result covers two output streams, where they are taken.",
         OnStreams(CoversTwoOutputs)},
        Noted("no-failure", "Good requests bring no error messages and no broken buffers.",
              kNotTaken),
        Noted("partial-results", "As many parts of metadata come as are stated.", kNotTaken),
        Noted("metadata", "Result metadata is empty, or one blob of just its size.", kNoResult),
        Noted("empty-callbacks", "No callback is called with an empty list.", kNotTaken),
};

}  // namespace conformance
