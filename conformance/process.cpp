// Sends good requests, and checks what the service delivers for them.
#include <system/camera_metadata.h>

#include <algorithm>
#include <cstring>

#include "device.h"

namespace conformance {

namespace {

// Of the outputs before each frame, and of the inputs.
constexpr uint8_t kFills[] = {0x5a, 0xa5, 0x5a}, kInputs[] = {40, 40, 120};

// Goes through the buffer after the first and after the second frame, row by row: picture, padding,
// and what belongs to no row.
void Compare(const Buffer& buffer, const uint8_t* second, PlainRun* run) {
    int64_t place = 0, plane = 0, row = 0, unwritten = 0, outside = 0;
    std::string places[2];  // the first ones beside and in the picture
    const auto look = [&](bool inside, int64_t end) {
        int64_t& count = inside ? unwritten : outside;
        for (; place < end; ++place) {
            const bool kept =
                    run->picture[size_t(place)] == kFills[0] && second[place] == kFills[1];
            if (kept != inside || ++count > 1) continue;
            places[inside] = Say("byte ", place, ", in or before row ", row, " of plane ", plane);
        }
    };
    for (const Plane& p : buffer.Planes()) {
        for (row = 0; row < p.heightInSamples; ++row) {
            const int64_t begin = p.offsetInBytes + row * p.strideInBytes;
            look(false, begin);
            look(true, std::min(begin + RowBytes(p), buffer.Size()));
        }
        ++plane;
    }
    if (!buffer.Planes().empty()) look(false, buffer.Size());
    run->Expect("whole-picture", unwritten == 0, "all of " + run->Mode() + "'s picture written",
                Say("as before the request: ", unwritten, " bytes, first ", places[true]));
    run->Expect("nothing-else", outside == 0, "nothing but " + run->Mode() + "'s picture written",
                Say("beside it changed: ", outside, " bytes, first ", places[false]));
}

// Sends a frame and waits for its result, and for its shutter unless an earlier one had none.
// Returns whether all of the result came.
bool SendFrame(Session& session, PlainRun* run) {
    run->sent.push_back(session.Process(session.Request()));
    if (!session.AwaitResult(run->sent.back()).Good()) return false;
    const auto shutters = [](const Events& events) { return Of(events, Event::kShutter).size(); };
    const size_t before = run->complete++;
    if (before == 0 || shutters(session.All()) >= before) {
        session.client->WaitFor([&](const Events& events) { return shutters(events) > before; });
    }
    FencesSignal(session.All());
    // A number that is not new has messages already.
    return before == 0 || run->sent[before].number > run->sent[before - 1].number;
}

// Sends the frames and compares their pictures. Stops at the first frame without a result.
void SendFrames(Session& session, PlainRun* run) {
    Buffer& output = session.device.pool.Get(run->info.streams.back());
    std::vector<uint8_t> last;
    bool changed = false;
    for (size_t i = 0; i < PlainRun::kFrames; ++i) {
        for (const Stream& stream : run->info.streams) {
            for (size_t f = 0; IsInput(stream) && f < FramesOf(run->info.opMode); ++f) {
                session.device.pool.Get(stream, f).Fill(kInputs[i]);
            }
        }
        output.Fill(kFills[i]);
        if (!SendFrame(session, run)) break;
        output.Access([&](const uint8_t* bytes) {
            if (i == 0) run->picture.assign(bytes, bytes + output.Size());
            if (i == 1 && !run->picture.empty()) Compare(output, bytes, run);
            if (i == 2) last.assign(bytes, bytes + output.Size());
        });
    }
    session.Close();
    if (last.empty()) return;
    output.Access(
            [&](const uint8_t* bytes) { changed = memcmp(bytes, last.data(), last.size()) != 0; });
    run->Expect("follows-input", last != run->picture,
                "another picture of " + run->Mode() + " for another input",
                "the same bytes for a dark and a bright frame");
    run->Expect("done", !changed, "no writing to " + run->Mode() + "'s output after the result",
                "bytes that changed until the session was closed");
}

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
    const Events earlier = index > 0 ? Of(run->events, Event::kShutter, before) : Events();
    const int64_t time = shutters.empty() ? INT64_MAX : shutters[0].timestamp;
    const int64_t timeBefore = earlier.empty() ? INT64_MIN : earlier[0].timestamp;
    const bool last = index + 1 == run->sent.size();
    const bool came = !results.empty();

    run->Expect("numbers-rise", number > before,
                Say("a number above ", before, " in ", run->Mode()), Say(number));
    run->Expect("shutter", shutters.size() == 1, "one shutter message for " + name,
                Say(shutters.size(), " within 5 s"));
    run->Expect("timestamps", time > timeBefore || number <= before,
                Say("a timestamp above ", timeBefore, " ns for ", name), Say(time, " ns"));
    run->Note("shutter-first", Better(!came || shutters.empty() || shutters[0].at <= results[0].at,
                                      "the result of " + name + " came before its shutter"));
    run->Note("number-first", Better(!came || results[0].at >= sent.returned,
                                     "the result of " + name + " came before its number"));
    run->Expect("result", index < run->complete, "a full result of " + name + " within 5 s",
                Text(run->events));
    run->Expect("result-covers-all-outputs", named.empty() || times > 0,
                Text(output) + " in the result of " + name, Text(results));
    for (const BufferMark& buffer : named) {
        run->Expect("result-own-buffers", buffer == output,
                    "only the request's output in the result of " + name, Text(buffer));
    }
    run->Expect("output-once", times <= 1, Text(output) + " once for " + name,
                Say(times, " times"));
    run->Note("partial-results", PartsAddUp(results, name, last || index >= run->complete));
    for (const Event& result : results) run->Note("metadata", IsSound(result.metadata, name));
}

void JudgeFrames(PlainRun* run) {
    run->Note("taken", run->sent.back().MustSucceed("OK for a request of " + run->Mode()));
    for (size_t i = 0; i < run->sent.size(); ++i) {
        if (run->sent[i].Ok()) JudgeFrame(i, run);
    }
    for (const Event& event : run->events) {
        const auto own = [&](const Answer& sent) { return sent.number == event.frame; };
        const bool known = std::any_of(run->sent.begin(), run->sent.end(), own);
        const std::string text = Text(Events{event});
        run->Expect("own-numbers", event.kind > Event::kResult || known,
                    "messages and results of frames that were sent", text);
        run->Expect("no-failure", event.frame == -1 || !Failed({event}, event.frame),
                    "no error message and no broken buffer in " + run->Mode(), text);
        run->Expect("empty-callbacks", event.kind != Event::kEmpty,
                    "callbacks with at least one entry", text);
    }
}

constexpr char kNoResult[] = "no result came: see process.result";

}  // namespace

bool PlainRun::Borrows() const {
    return !Of(events, Event::kAsked).empty() || !Of(events, Event::kReturned).empty();
}

void PlainRun::Note(const std::string& check, const Verdict& verdict) {
    Verdict& noted = findings[check];
    if (noted.Good()) noted = verdict;
}

void Device::RunPlain(Mode mode, PlainRun* run) {
    run->info = ConfigurationOf(mode);
    if (!CanOpen()) return;
    Session session(*this);
    if (!session.IsOpen()) return;
    run->configured = session.Configure(run->info);
    if (!run->configured.Ok() || !pool.Ready()) return;
    SendFrames(session, run);
    run->events = session.All();
    JudgeFrames(run);
    JudgeLending(run);
    if (mode == kY2J && run->Works()) JudgeFile(run);
}

const Checks kProcessChecks = {
        Noted("taken", "processOfflineRequest takes the test client's requests."),
        Noted("numbers-rise", "Frame numbers are 0 or more, unique in a session, and rise."),
        {"numbers-go-on", "A session's frame numbers rise, whatever other sessions do.",
         OnStreams(NumbersGoOn)},
        Noted("shutter", "Each frame has exactly one shutter message within 5 s."),
        Noted("own-numbers", "Messages and results carry numbers that were returned."),
        Noted("timestamps", "Shutter timestamps rise."),
        Noted("shutter-first", "A shutter better comes before the frame's result."),
        Noted("number-first", "processOfflineRequest better returns before the result."),
        Noted("result", "Each frame has a result, complete within 5 s."),
        Noted("result-covers-all-outputs", "A frame's results name its output buffer."),
        Noted("result-own-buffers", "A frame's results name no other output buffers.", kNoResult),
        Noted("output-once", "Each output buffer is named once for each frame."),
        {"two-outputs", "A result covers two output streams, where they are taken.",
         OnStreams(CoversTwoOutputs)},
        Noted("no-failure", "Good requests bring no error messages and no broken buffers."),
        Noted("partial-results", "As many parts of metadata come as are stated."),
        Noted("metadata", "Result metadata is empty, or one blob of just its size.", kNoResult),
        Noted("empty-callbacks", "No callback is called with an empty list."),
};

}  // namespace conformance
