// Three requests of a mode in a row as the test client would send them: what most checks look at.
#pragma once

#include "device.h"

namespace conformance {

// What the service wrote to the output buffer of the first two frames, whose input is the same
// while the buffer's bytes were others before.
struct Picture {
    bool read = false;       // the buffer could be looked at
    uint64_t unwritten = 0;  // bytes of the picture that kept their value both times
    std::string firstUnwritten;
    uint64_t outside = 0;  // bytes beside the picture that changed
    std::string firstOutside;
    bool sameForOtherInput = false;  // the third frame's picture is the first one's
    bool changedLater = false;       // the third one changed after its result
    std::vector<uint8_t> file;       // of a BLOB: the whole buffer after the first frame
};

struct SentFrame {
    Answer answer;
    Clock::time_point sent, answered, done;
    bool shutter = false, result = false;  // within kWait
};

struct PlainRun {
    Mode mode = Mode::kB2Y;
    OfflineSessionConfigureInfo info;
    Answer configured;
    std::vector<SentFrame> frames;  // none if the streams were refused
    Events events;                  // up to the answer of the session's close
    Picture picture;
    std::string problem;  // why the frames could not be sent at all; not the service's fault

    bool Works() const { return frames.size() == kFrames && frames[0].result; }

    static constexpr size_t kFrames = 3;
};

std::shared_ptr<PlainRun> RunPlain(Device& device, Mode mode);

// Fills the inputs of a mode's requests with one of two pictures.
void FillInputs(Device& device, const OfflineSessionConfigureInfo& info, uint8_t variant);

}  // namespace conformance
