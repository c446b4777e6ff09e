// Runs a mode's requests, looks at the pictures, and finds events.
#include <poll.h>

#include <algorithm>
#include <cstring>

#include "device.h"

namespace conformance {

namespace {

constexpr uint8_t kFills[] = {0x5a, 0xa5, 0x5a};  // of the outputs before each frame
constexpr int kVariants[] = {0, 0, 1};            // of the inputs

// Gradients that differ between the variants in every byte.
void FillInput(Buffer& buffer, int variant) {
    buffer.Access([&](uint8_t* bytes) {
        for (const Plane& plane : buffer.Planes()) {
            for (uint64_t row = 0; row < plane.rows; ++row) {
                uint8_t* const to = bytes + plane.offset + row * plane.stride;
                for (uint64_t i = 0; i < plane.rowBytes; ++i) {
                    to[i] = static_cast<uint8_t>(40 + 80 * variant + i / 64 % 60 + row / 64 % 60);
                }
            }
        }
    });
}

void FillInputs(Device& device, const Configuration& info, int variant) {
    for (const Stream& stream : info.streams) {
        for (size_t f = 0; IsInput(stream) && f < FramesOf(info.opMode); ++f) {
            FillInput(device.pool.Get(stream, f), variant);
        }
    }
}

// Goes through the buffer after the first and after the second frame, row by row: picture, padding,
// and what belongs to no row.
void Compare(const Buffer& buffer, const uint8_t* first, const uint8_t* second, Picture* picture) {
    uint64_t place = 0, plane = 0, row = 0, unwritten = 0, outside = 0;
    const auto look = [&](bool inside, uint64_t end) {
        uint64_t& count = inside ? unwritten : outside;
        for (; place < end; ++place) {
            const bool kept = first[place] == kFills[0] && second[place] == kFills[1];
            if (kept != inside || ++count > 1) continue;
            (inside ? picture->unwritten : picture->outside) =
                    Say("byte ", place, ", in or before row ", row, " of plane ", plane);
        }
    };
    for (const Plane& p : buffer.Planes()) {
        for (row = 0; row < p.rows; ++row) {
            const uint64_t begin = p.offset + row * p.stride;
            look(false, begin);
            look(true, std::min(begin + p.rowBytes, buffer.Size()));
        }
        ++plane;
    }
    if (!buffer.Planes().empty()) look(false, buffer.Size());
    if (unwritten > 0) picture->unwritten = Say(unwritten, " bytes, first ", picture->unwritten);
    if (outside > 0) picture->outside = Say(outside, " bytes, first ", picture->outside);
}

// Sends a frame and waits for its result, and for its shutter unless an earlier one had none.
SentFrame SendFrame(Device& device, Session& session, const PlainRun& run) {
    SentFrame frame;
    frame.answer = session.Process(device.Request(run.info));
    frame.result = session.AwaitResult(frame.answer).Good();
    if (!frame.result) return frame;
    const auto shutters = [](const Events& events) { return Of(events, Event::kShutter).size(); };
    const size_t before = run.frames.size();
    if (before == 0 || shutters(session.All()) >= before) {
        session.client->WaitFor([&](const Events& events) { return shutters(events) > before; });
    }
    FencesSignal(session.All());
    return frame;
}

}  // namespace

void Device::RunPlain(Mode mode, PlainRun* run) {
    run->info = ConfigurationOf(mode);
    if (!CanOpen()) return;
    Session session(*this);
    if (!session.IsOpen()) return;
    run->configured = session.Configure(run->info);
    if (!run->configured.Ok() || !pool.Ready()) return;
    Buffer& output = pool.Get(run->info.streams.back());
    Picture& picture = run->picture;
    std::vector<uint8_t> last;
    for (size_t i = 0; i < PlainRun::kFrames; ++i) {
        FillInputs(*this, run->info, kVariants[i]);
        output.Fill(kFills[i]);
        run->frames.push_back(SendFrame(*this, session, *run));
        const SentFrame& sent = run->frames.back();
        // A number that is not new has messages already.
        if (!sent.result || (i > 0 && sent.answer.number <= run->frames[i - 1].answer.number))
            break;
        output.Access([&](const uint8_t* bytes) {
            if (i == 0) picture.bytes.assign(bytes, bytes + output.Size());
            if (i == 1) Compare(output, picture.bytes.data(), bytes, &picture);
            if (i == 2) last.assign(bytes, bytes + output.Size());
        });
    }
    session.Close();
    run->events = session.All();
    if (last.empty()) return;
    picture.sameForOtherInput = last == picture.bytes;
    output.Access([&](const uint8_t* bytes) {
        picture.changedLater = memcmp(bytes, last.data(), last.size()) != 0;
    });
}

Events Of(const Events& events, Event::Kind kind, int32_t frame) {
    Events found;
    std::copy_if(events.begin(), events.end(), std::back_inserter(found), [&](const Event& event) {
        return event.kind == kind && (frame == -1 || event.frame == frame);
    });
    return found;
}

std::vector<BufferMark> BuffersOf(const Events& events) {
    std::vector<BufferMark> buffers;
    for (const Event& event : events) {
        buffers.insert(buffers.end(), event.buffers.begin(), event.buffers.end());
    }
    return buffers;
}

bool Failed(const Events& events, int32_t frame) {
    const auto buffers = BuffersOf(Of(events, Event::kResult, frame));
    return !Of(events, Event::kError, frame).empty() ||
           !std::all_of(buffers.begin(), buffers.end(), [](const auto& mark) { return mark.good; });
}

bool FencesSignal(const Events& events) {
    for (const Event& event : events) {
        for (const auto& fence : event.fences) {
            pollfd wait = {fence->get(), POLLIN, 0};
            if (poll(&wait, 1, static_cast<int>(kWait.count())) != 1) return false;
        }
    }
    return true;
}

std::string Text(const BufferMark& buffer) {
    return Say("stream ", buffer.stream, " buffer ", buffer.id);
}

std::string Text(const Events& events) {
    constexpr const char* kNames[] = {"shutter",           "error",    "result",
                                      "asked for buffers", "returned", "empty "};
    std::string text;
    for (const Event& event : events) {
        text += (text.empty() ? "" : ", ") + std::string(kNames[event.kind]) + event.callback;
        if (event.kind <= Event::kResult) text += Say(" ", event.frame);
        for (const BufferMark& buffer : event.buffers) text += Say(" (", Text(buffer), ")");
    }
    return text.empty() ? "nothing" : text;
}

}  // namespace conformance
