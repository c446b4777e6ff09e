// Runs a mode's requests and looks at the pictures.
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
    run->Note("whole-picture",
              Require(unwritten == 0, "all of " + run->Mode() + "'s picture written",
                      Say("as before the request: ", unwritten, " bytes, first ", places[true])));
    run->Note("nothing-else",
              Require(outside == 0, "nothing but " + run->Mode() + "'s picture written",
                      Say("beside it changed: ", outside, " bytes, first ", places[false])));
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
    const auto inputs = [&](const Stream& s) {
        return IsInput(s) ? FramesOf(run->info.opMode) : 0;
    };
    Buffer& output = session.device.pool.Get(run->info.streams.back());
    std::vector<uint8_t> last;
    bool changed = false;
    for (size_t i = 0; i < PlainRun::kFrames; ++i) {
        for (const Stream& stream : run->info.streams) {
            for (size_t f = 0; f < inputs(stream); ++f) {
                session.device.pool.Get(stream, f).Fill(kInputs[i]);
            }
        }
        output.Fill(kFills[i]);
        if (!SendFrame(session, run)) break;
        output.Access([&](const uint8_t* bytes) {
            if (i == 0) run->picture.assign(bytes, bytes + output.Size());
            if (i == 1) Compare(output, bytes, run);
            if (i == 2) last.assign(bytes, bytes + output.Size());
        });
    }
    session.Close();
    if (last.empty()) return;
    output.Access(
            [&](const uint8_t* bytes) { changed = memcmp(bytes, last.data(), last.size()) != 0; });
    run->Note("follows-input", Require(last != run->picture,
                                       "another picture of " + run->Mode() + " for another input",
                                       "the same bytes for a dark and a bright frame"));
    run->Note("done",
              Require(!changed, "no writing to " + run->Mode() + "'s output after the result",
                      "bytes that changed until the session was closed"));
}

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

}  // namespace conformance
