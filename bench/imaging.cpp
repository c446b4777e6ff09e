// What the pixel pipeline costs, beside memcpy, the tests' naive camera and libjpeg-turbo on one
// thread.
#include <imaging/b2y.h>
#include <imaging/jpeg.h>
#include <imaging/multi_frame.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cstring>

#include "bench.h"
#include "frames.h"
#include "tests/host/imaging/naive_camera.h"

namespace bench {
namespace {

using imaging::Execution;
using imaging::InstructionSet;

template <class T>
void RequireDone(const base::Result<T>& result) {
    Require(result.Ok(), "measure: " + (result.Ok() ? "" : result.Error()));
}

Execution On(uint32_t threads) {
    return {threads, imaging::FastestInstructionSet()};
}

void Develop(Frame& frame, const Execution& execution) {
    RequireDone(imaging::RawToNv12(frame.Raw(), frame.Picture(), execution));
}

// One row pair in a hundred, by the naive camera.
void NaiveHundredth(Frame& frame) {
    const imaging::RawView raw = frame.Raw();
    const imaging::MutableNv12View out = frame.Picture();
    const auto code = [&raw](uint32_t x, uint32_t y) {
        const uint8_t* const group = raw.data + y * raw.strideBytes + x / 4 * 5;
        return group[x % 4] << 2 | (group[4] >> (x % 4 * 2) & 3);
    };
    const imaging::NaiveCamera camera({raw.width, raw.height, out.width, out.height}, code);
    for (uint32_t y = 0; y < out.height; y += 200) {
        for (uint32_t x = 0; x < out.width; ++x) {
            uint8_t* const luma = out.y + y * out.strideBytes + x;
            luma[0] = static_cast<uint8_t>(camera.Y(x, y));
            luma[out.strideBytes] = static_cast<uint8_t>(camera.Y(x, y + 1));
            out.uv[y / 2 * out.strideBytes + x] =
                    static_cast<uint8_t>(x % 2 == 0 ? camera.Cb(x, y) : camera.Cr(x, y));
        }
    }
}

// Three frames, and the buffer that their mean goes through.
struct FrameSet {
    void Average(uint32_t threads) {
        RequireDone(imaging::AverageToNv12({first.Raw(), second.Raw(), third.Raw()}, scratch.Raw(),
                                           first.Picture(), On(threads)));
    }
    // As the buffers of a request that just came.
    void Renew() {
        for (Frame* frame : {&first, &second, &third}) frame->raw.MapAnew();
        first.picture.MakeFresh();
        scratch.raw.MakeFresh();
    }

    Frame first{1}, second{2}, third{3}, scratch{4};
};

// Buffers are either in use, or come straight from the allocator.
void CompareDevelopment(FrameSet& set, bool fresh) {
    const std::string buffers = fresh ? "fresh buffers" : "buffers in use";
    const auto renew = fresh ? std::function<void()>([&] { set.Renew(); }) : nullptr;
    Frame& frame = set.first;
    std::vector<uint8_t> copy(frame.picture.Layout().size, 1);
    Compare("B2Y beside the naive camera, " + buffers,
            {{"memcpy of the picture's bytes",
              [&] { memcpy(frame.picture.Data(), copy.data(), copy.size()); }, renew},
             {"naive camera, one row pair in 100", [&] { NaiveHundredth(frame); }, renew},
             {"B2Y, one thread", [&] { Develop(frame, On(1)); }, renew, 0.45},
             {"B2Y, two threads", [&] { Develop(frame, On(2)); }, renew, 0.25}},
            1);
    for (uint32_t threads : {1u, 2u}) {
        Compare("MMF beside B2Y, " + buffers + ", threads: " + std::to_string(threads),
                {{"B2Y", [&, threads] { Develop(frame, On(threads)); }, renew},
                 {"MMF of three frames", [&, threads] { set.Average(threads); }, renew, 1.5}});
    }
}

// A picture by colour, as libjpeg-turbo takes it without any preparation of its own: whole blocks,
// the last row repeated.
struct Planes {
    explicit Planes(const imaging::Nv12View& picture)
        : width(picture.width), rows((picture.height + 15) / 16 * 16) {
        for (uint32_t row = 0; row < rows; ++row) {
            const uint8_t* from =
                    picture.y + std::min(row, picture.height - 1) * picture.strideBytes;
            y.insert(y.end(), from, from + width);
        }
        for (uint32_t row = 0; row < rows / 2; ++row) {
            const uint8_t* from =
                    picture.uv + std::min(row, picture.height / 2 - 1) * picture.strideBytes;
            for (uint32_t x = 0; x < width; x += 2) {
                cb.push_back(from[x]);
                cr.push_back(from[x + 1]);
            }
        }
    }

    // One thread, 4:2:0, standard tables, no restart markers.
    void Encode(uint8_t* out) const {
        static const tjhandle encoder = tjInitCompress();
        const uint8_t* planes[] = {y.data(), cb.data(), cr.data()};
        unsigned long size = 0;
        Require(tjCompressFromYUVPlanes(encoder, planes, static_cast<int>(width), nullptr,
                                        static_cast<int>(rows), TJSAMP_420, &out, &size,
                                        imaging::kJpegQuality,
                                        TJFLAG_NOREALLOC | TJFLAG_ACCURATEDCT) == 0,
                "encode with libjpeg-turbo");
    }

    const uint32_t width, rows;
    std::vector<uint8_t> y, cb, cr;
};

void CompareJpeg(Frame& frame) {
    Develop(frame, On(2));
    const Planes planes(frame.Picture());
    // TurboJPEG asks for room for the worst case.
    const unsigned long room =
            tjBufSize(static_cast<int>(planes.width), static_cast<int>(planes.rows), TJSAMP_420);
    Buffer blob(Describe(graphics::kFormatBlob, static_cast<uint32_t>(room), 1));
    const auto encode = [&](uint32_t threads) {
        RequireDone(imaging::EncodeJpeg(frame.Picture(), {}, blob.Data(), blob.Layout().size,
                                        On(threads)));
    };
    Compare("Y2J beside libjpeg-turbo",
            {{"libjpeg-turbo, raw data, one thread", [&] { planes.Encode(blob.Data()); }},
             {"Y2J, one thread", [&] { encode(1); }, {}, 1.05},
             {"Y2J, two threads", [&] { encode(2); }, {}, 0.6}});
}

void CompareInstructionSets(Frame& frame) {
    std::vector<Subject> subjects;
    for (InstructionSet set : imaging::SupportedInstructionSets()) {
        subjects.push_back({set == InstructionSet::kAvx2 ? "AVX2" : "baseline", [&frame, set] {
                                Develop(frame, {1, set});
                            }});
    }
    Compare("B2Y by instruction set, one thread", subjects);
}

}  // namespace

void MeasureImaging() {
    FrameSet set;
    CompareDevelopment(set, false);
    CompareDevelopment(set, true);
    CompareJpeg(set.first);
    CompareInstructionSets(set.first);
}

}  // namespace bench
