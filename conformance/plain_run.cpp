// Runs a mode's requests and looks at the pictures.
#include "plain_run.h"

#include <algorithm>
#include <cstring>

namespace conformance {

namespace {

constexpr uint8_t kFills[] = {0x5a, 0xa5, 0x5a};

// Gradients that differ between the variants in every pixel.
void FillPicture(Buffer& buffer, uint8_t variant) {
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

class PictureReader {
  public:
    PictureReader(Buffer& buffer, Picture* picture) : m_buffer(buffer), m_picture(*picture) {}

    // Right after a frame's result.
    void Look(size_t frame) {
        m_buffer.Access([&](const uint8_t* bytes) {
            if (frame == 0) m_first.assign(bytes, bytes + m_buffer.Size());
            if (frame == 1) Compare(bytes);
            if (frame == 2) m_third.assign(bytes, bytes + m_buffer.Size());
        });
    }

    // After the end of the session.
    void Finish() {
        if (m_buffer.Planes().empty()) m_picture.file = m_first;
        m_buffer.Access([&](const uint8_t* bytes) {
            if (m_first.empty() || m_third.empty()) return;
            m_picture.read = true;
            m_picture.changedLater = memcmp(bytes, m_third.data(), m_third.size()) != 0;
            m_picture.sameForOtherInput = m_first == m_third;
        });
    }

  private:
    // Goes through the buffer row by row: picture, padding, and what belongs to no row.
    void Compare(const uint8_t* second) {
        uint64_t place = 0;
        for (const Plane& plane : m_buffer.Planes()) {
            for (uint64_t row = 0; row < plane.rows; ++row) {
                const uint64_t begin = plane.offset + row * plane.stride;
                for (; place < begin; ++place) CheckOutside(second, place, plane, row);
                for (; place < begin + plane.rowBytes; ++place)
                    CheckInside(second, place, plane, row);
            }
        }
        const Plane end;
        for (; !m_buffer.Planes().empty() && place < m_buffer.Size(); ++place) {
            CheckOutside(second, place, end, 0);
        }
    }

    void CheckInside(const uint8_t* second, uint64_t place, const Plane& plane, uint64_t row) {
        if (m_first[place] != kFills[0] || second[place] != kFills[1]) return;
        if (m_picture.unwritten++ > 0) return;
        m_picture.firstUnwritten = Say("plane ", plane.name, ", row ", row, ", byte ",
                                       place - plane.offset - row * plane.stride);
    }

    void CheckOutside(const uint8_t* second, uint64_t place, const Plane& next, uint64_t row) {
        if (m_first[place] == kFills[0] && second[place] == kFills[1]) return;
        if (m_picture.outside++ > 0) return;
        m_picture.firstOutside = Say("byte ", place, " of the buffer, ");
        m_picture.firstOutside += next.rows == 0 ? std::string("after the last plane's picture")
                                                 : Say("before row ", row, " of plane ", next.name);
    }

    Buffer& m_buffer;
    Picture& m_picture;
    std::vector<uint8_t> m_first, m_third;
};

// The problem of any buffer of a mode's requests; empty where there is none.
std::string BufferProblem(Device& device, const OfflineSessionConfigureInfo& info) {
    if (!device.pool.Problem().empty()) return device.pool.Problem();
    for (const Stream& stream : info.streams) {
        const std::string& problem = device.pool.Get(stream).Problem();
        if (!problem.empty()) return problem;
    }
    return "";
}

// Sends a frame and waits for its shutter and its result; for the shutter only if the frames before
// had one.
SentFrame SendFrame(Device& device, Session& session, const PlainRun& run) {
    SentFrame frame;
    OfflineRequestInfo request = device.Request(run.info);
    frame.sent = Clock::now();
    frame.answer = session.Process(std::move(request));
    frame.answered = Clock::now();
    if (!frame.answer.Ok()) return frame;
    const int32_t number = frame.answer.number;
    frame.result = session.AwaitResult(number).empty();
    if (frame.result) FencesSignal(session.Client().All());
    frame.done = Clock::now();
    const bool expected = run.frames.empty() || run.frames.back().shutter;
    const auto shutter = [&](const Events& events) {
        return Count(events, Event::kShutter, number) > 0;
    };
    const auto left = std::max(std::chrono::milliseconds(0),
                               std::chrono::duration_cast<std::chrono::milliseconds>(
                                       frame.answered + kWait - Clock::now()));
    frame.shutter = session.Client().WaitFor(shutter, expected ? left : left * 0);
    return frame;
}

}  // namespace

void FillInputs(Device& device, const OfflineSessionConfigureInfo& info, uint8_t variant) {
    for (const Stream& stream : info.streams) {
        if (!IsInput(stream)) continue;
        for (size_t f = 0; f < FramesOf(static_cast<Mode>(info.opMode)); ++f) {
            FillPicture(device.pool.Get(stream, f), variant);
        }
    }
}

std::shared_ptr<PlainRun> RunPlain(Device& device, Mode mode) {
    const auto run = std::make_shared<PlainRun>();
    run->mode = mode;
    run->info = ConfigurationOf(mode);
    if (!device.CanOpen()) return run;
    Session session(device);
    if (!session.IsOpen()) return run;
    run->configured = session.Configure(run->info);
    if (!run->configured.Ok()) return run;
    run->problem = BufferProblem(device, run->info);
    if (!run->problem.empty()) return run;
    Buffer& output = device.pool.Get(run->info.streams.back());
    PictureReader reader(output, &run->picture);
    for (size_t i = 0; i < PlainRun::kFrames; ++i) {
        if (i != 1) FillInputs(device, run->info, i == 0 ? 0 : 1);
        output.Fill(kFills[i]);
        run->frames.push_back(SendFrame(device, session, *run));
        if (!run->frames.back().result) break;
        reader.Look(i);
    }
    session.Close();
    run->events = session.Client().All();
    reader.Finish();
    return run;
}

}  // namespace conformance
