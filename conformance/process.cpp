// Sends good requests, and checks what the service delivers for them: messages, results, pictures.
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
void Compare(const Buffer& buffer, const std::vector<uint8_t>& first,
             const std::vector<uint8_t>& second, PlainRun* run) {
    const auto size = static_cast<int64_t>(std::min(first.size(), second.size()));
    int64_t place = 0, plane = 0, row = 0;
    int64_t counts[2] = {};  // of wrong bytes beside and in the picture
    std::string places[2];   // the first ones
    const auto look = [&](bool inside, int64_t end) {
        for (; place < std::min(end, size); ++place) {
            const auto at = static_cast<size_t>(place);
            const bool kept = first[at] == kFills[0] && second[at] == kFills[1];
            if (kept != inside || ++counts[inside] > 1) continue;
            places[inside] = Say("byte ", place, ", in or before row ", row, " of plane ", plane);
        }
    };
    for (const Plane& p : buffer.Planes()) {
        for (row = 0; row < p.heightInSamples; ++row) {
            const int64_t begin = p.offsetInBytes + row * p.strideInBytes;
            look(false, begin);
            look(true, begin + RowBytes(p));
        }
        ++plane;
    }
    if (!buffer.Planes().empty()) look(false, size);
    run->Expect("whole-picture", counts[true] == 0, "all of " + run->Mode() + "'s picture written",
                Say("as before the request: ", counts[true], " bytes, first ", places[true]));
    run->Expect("nothing-else", counts[false] == 0,
                "nothing but " + run->Mode() + "'s picture written",
                Say("beside it changed: ", counts[false], " bytes, first ", places[false]));
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
    std::vector<std::vector<uint8_t>> pictures;
    for (size_t i = 0; i < PlainRun::kFrames; ++i) {
        for (const Stream& stream : run->info.streams) {
            for (size_t f = 0; IsInput(stream) && f < FramesOf(run->info.opMode); ++f) {
                session.device.pool.Get(stream, f).Fill(kInputs[i]);
            }
        }
        output.Fill(kFills[i]);
        if (!SendFrame(session, run)) break;
        pictures.push_back(output.Copy());
    }
    session.Close();
    if (!pictures.empty()) run->picture = pictures[0];
    if (run->picture.empty()) return;
    if (pictures.size() > 1) Compare(output, pictures[0], pictures[1], run);
    if (pictures.size() < PlainRun::kFrames) return;
    run->Expect("follows-input", pictures[2] != pictures[0],
                "another picture of " + run->Mode() + " for another input",
                "the same bytes for a dark and a bright frame");
    run->Expect("done", output.Copy() == pictures[2],
                "no writing to " + run->Mode() + "'s output after the result",
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

// Reads the markers up to the scan, and looks for the end right at the file's size. Returns why it
// is no JPEG file, or nothing.
std::string ParseJpeg(const std::vector<uint8_t>& bytes, size_t size, int32_t* width,
                      int32_t* height) {
    const auto big = [&](size_t place) { return bytes[place] << 8 | bytes[place + 1]; };
    size_t place = 2;
    for (uint8_t marker = 0; marker != 0xda;) {  // the scan
        const bool room = place + 9 < size && big(0) == 0xffd8;
        if (!room || bytes[place] != 0xff) return Say("no marker at byte ", room ? place : 0);
        marker = bytes[place + 1];
        const bool table = marker == 0xc4 || marker == 0xc8 || marker == 0xcc;
        if (marker >= 0xc0 && marker <= 0xcf && !table) {
            *height = big(place + 5);
            *width = big(place + 7);
        }
        place += 2 + static_cast<size_t>(big(place + 2));
    }
    // In a scan, ff is followed by 00 or a restart marker.
    while (place + 2 <= size && big(place) != 0xffd9) ++place;
    return place + 2 == size ? "" : Say("FF D9 not at its end but at byte ", place);
}

// What the reference service makes of frames that are raw code 341 everywhere, on average: red 200,
// green 146 and blue 176 after white balance and tone curve.
constexpr uint8_t kFlat[] = {0x55, 0xaa, 0x00};  // codes 341, 682, 0
constexpr int kLuma = 166, kBlue = 134, kRed = 153;

Verdict IsTheReferences(Session& session) {
    for (size_t f = 0; f < FramesOf(session.info.opMode); ++f) {
        session.device.pool.Get(session.info.streams[0], f).Fill(kFlat[f]);
    }
    Verdict verdict = session.Exchange("a picture");
    const Buffer& output = session.device.pool.Get(session.info.streams.back());
    const std::vector<uint8_t> bytes = output.Copy();
    if (bytes.empty()) return verdict;
    for (const Plane& plane : output.Planes()) {
        const int64_t width = RowBytes(plane), size = width * plane.heightInSamples;
        for (int64_t i = 0; verdict.Good() && i < size; ++i) {
            const int64_t row = i / width, x = i % width;
            const int64_t place = plane.offsetInBytes + row * plane.strideInBytes + x;
            const int value = bytes[static_cast<size_t>(place)];
            const int expected = plane.offsetInBytes == 0 ? kLuma : x % 2 == 0 ? kBlue : kRed;
            if (value == expected) continue;
            verdict = Fail(Say(expected, " in each pixel"),
                           Say(value, " at byte ", x, " of row ", row));
        }
    }
    return verdict;
}

void JudgeFile(PlainRun* run) {
    const Stream& stream = run->info.streams.back();
    const uint8_t* const end = run->picture.data() + stream.bufferSize;
    int32_t id = 0, size = 0;
    memcpy(&id, end - 8, sizeof(id));
    memcpy(&size, end - 4, sizeof(size));
    run->Expect("trailer-id", id == 255, "blob id 255, 8 bytes before the stream's buffer size",
                Say(id));
    const bool fits = size >= 4 && size <= stream.bufferSize - 8;
    run->Expect("trailer-size", fits, "the file's size, 4 bytes before the buffer size", Say(size));
    if (!fits) return;
    int32_t width = 0, height = 0;
    const std::string problem = ParseJpeg(run->picture, static_cast<size_t>(size), &width, &height);
    run->Expect("jpeg", problem.empty(), Say("a JPEG file of ", size, " bytes"), problem);
    if (!problem.empty()) return;
    const bool upright = width == stream.width && height == stream.height;
    const bool turned = width == stream.height && height == stream.width;
    run->Expect("jpeg-size", upright || turned,
                Say(stream.width, " x ", stream.height, ", or turned"), Say(width, " x ", height));
}

constexpr char kNoResult[] = "no result came: see process.result";
constexpr char kNoPicture[] = "no picture came: see process.result";
constexpr char kNoFile[] = "no file of Y2J to look at";

}  // namespace

bool PlainRun::Borrows() const {
    return !Of(events, Event::kAsked).empty() || !Of(events, Event::kReturned).empty();
}

void PlainRun::Note(const std::string& check, const Verdict& verdict) {
    Verdict& noted = findings[check];
    if (noted.Good()) noted = verdict;
}

PlainRun Device::RunPlain(Mode mode) {
    PlainRun run;
    run.info = ConfigurationOf(mode);
    if (!CanOpen()) return run;
    Session session(*this);
    if (!session.IsOpen()) return run;
    run.configured = session.Configure(run.info);
    if (!run.configured.Ok() || !pool.Ready()) return run;
    SendFrames(session, &run);
    run.events = session.All();
    JudgeFrames(&run);
    JudgeLending(&run);
    if (mode == kY2J && run.Works()) JudgeFile(&run);
    return run;
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

const Checks kContentChecks = {
        Noted("whole-picture", "Every byte of the picture is written, in each plane.", kNoPicture),
        Noted("nothing-else", "No byte beside the picture is written.", kNoPicture),
        Noted("follows-input", "Another input makes another picture.", kNoPicture),
        Noted("done", "After the result the output is not written any more.", kNoPicture),
        Noted("trailer-id", "A BLOB buffer ends with blob id 255 and file size.", kNoFile),
        Noted("trailer-size", "The size in the trailer fits into the buffer.", kNoFile),
        Noted("jpeg", "The file is a JPEG file and ends with its size.", kNoFile),
        Noted("jpeg-size", "The JPEG file has the stream's width and height.", kNoFile),
};

const Checks kPhysicsChecks = {
        {"b2y", "B2Y makes the reference service's picture of a flat frame.",
         OnStreams(IsTheReferences, Works(kB2Y))},
        {"mmf", "MMF makes the reference service's picture of three flat frames.",
         OnStreams(IsTheReferences, Works(kMMF))},
};

}  // namespace conformance
