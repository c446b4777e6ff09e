// What the pixel pipeline costs, beside memcpy, the tests' naive camera and libjpeg-turbo on one
// thread.
#include <imaging/b2y.h>
#include <imaging/jpeg.h>
#include <imaging/multi_frame.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "imaging_frames.h"
#include "measure.h"
#include "plain_jpeg.h"
#include "table.h"
#include "tests/host/imaging/naive_camera.h"

namespace {

using bench::Frame;
using bench::Number;
using bench::PrintComparison;
using bench::Subject;
using imaging::Execution;
using imaging::FastestInstructionSet;
using imaging::InstructionSet;

constexpr int kRounds = 15;

void Require(const std::string& problem) {
    if (problem.empty()) return;
    fprintf(stderr, "imaging_bench: %s\n", problem.c_str());
    exit(1);
}

Execution On(uint32_t threads) {
    return {threads, FastestInstructionSet()};
}

/** Whether a subject's buffers have been used before, or come straight from the allocator. */
enum class Memory { kWarm, kFresh };

void Renew(Frame& frame, Memory memory) {
    if (memory == Memory::kWarm) return;
    frame.raw.MapAnew();
    frame.picture.MakeFresh();
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
            const bool blue = x % 2 == 0;
            uint8_t* const luma = out.y + y * out.strideBytes + x;
            luma[0] = static_cast<uint8_t>(camera.Y(x, y));
            luma[out.strideBytes] = static_cast<uint8_t>(camera.Y(x, y + 1));
            out.uv[y / 2 * out.strideBytes + x] =
                    static_cast<uint8_t>(blue ? camera.Cb(x, y) : camera.Cr(x, y));
        }
    }
}

void BayerToYuv(Frame& frame, Memory memory) {
    const auto renew = [&] { Renew(frame, memory); };
    std::vector<uint8_t> copy(frame.picture.Layout().size, 1);
    const std::vector<Subject> subjects = {
            {"memcpy of the picture's bytes",
             [&] { memcpy(frame.picture.Data(), copy.data(), copy.size()); }, renew},
            {"naive camera, one row pair in 100", [&] { NaiveHundredth(frame); }, renew},
            {"B2Y, one thread",
             [&] { Require(imaging::RawToNv12(frame.Raw(), frame.Picture(), On(1))); }, renew},
            {"B2Y, two threads",
             [&] { Require(imaging::RawToNv12(frame.Raw(), frame.Picture(), On(2))); }, renew},
    };
    PrintComparison(memory == Memory::kWarm ? "B2Y beside the naive camera, buffers in use"
                                            : "B2Y beside the naive camera, fresh buffers",
                    subjects, MedianTimes(subjects, kRounds), 1, {0, 0, 0.45, 0.25});
}

void MultiFrame(Frame& frame, Memory memory, uint32_t threads) {
    Frame second(4, 2), third(4, 3), scratch(4, 4);
    const auto renew = [&] { Renew(frame, memory); };
    const auto renewAll = [&] {
        renew();
        if (memory == Memory::kWarm) return;
        second.raw.MapAnew();
        third.raw.MapAnew();
        scratch.raw.MakeFresh();
    };
    const std::vector<Subject> subjects = {
            {"B2Y", [&] { Require(imaging::RawToNv12(frame.Raw(), frame.Picture(), On(threads))); },
             renew},
            {"MMF of three frames",
             [&] {
                 Require(imaging::AverageToNv12({frame.Raw(), second.Raw(), third.Raw()},
                                                scratch.Raw(), frame.Picture(), On(threads)));
             },
             renewAll},
    };
    const std::string title = std::string("MMF beside B2Y, ") +
                              (memory == Memory::kWarm ? "buffers in use, " : "fresh buffers, ") +
                              std::to_string(threads) + (threads == 1 ? " thread" : " threads");
    PrintComparison(title, subjects, MedianTimes(subjects, kRounds), 0, {0, 1.5});
}

void YuvToJpeg(Frame& frame) {
    Require(imaging::RawToNv12(frame.Raw(), frame.Picture()));
    bench::PlanarPicture planes(frame.Picture());
    const auto bytes = static_cast<uint32_t>(frame.picture.Layout().size);
    bench::Buffer blob(bench::BlobBuffer(bytes));
    size_t size = 0;
    const auto encode = [&](uint32_t threads) {
        Require(imaging::EncodeJpeg(frame.Picture(), {}, blob.Data(), bytes, &size, On(threads)));
    };
    const std::vector<Subject> subjects = {
            {"libjpeg-turbo, raw data, one thread",
             [&] { bench::EncodePlainJpeg(planes, imaging::kJpegQuality, blob.Data(), bytes); }},
            {"Y2J, one thread", [&] { encode(1); }},
            {"Y2J, two threads", [&] { encode(2); }},
    };
    PrintComparison("Y2J beside libjpeg-turbo", subjects, MedianTimes(subjects, kRounds), 0,
                    {0, 1.05, 0.6});
    const size_t plain = bench::EncodePlainJpeg(planes, imaging::kJpegQuality, blob.Data(), bytes);
    printf("Files: %zu bytes, libjpeg-turbo's alone %zu.\n\n", size, plain);
}

/** Milliseconds for a picture of so many pixels as nanoseconds for one. */
std::string PerPixel(double milliseconds, uint64_t pixels) {
    return Number(milliseconds * 1e6 / static_cast<double>(pixels), 2);
}

void Growth() {
    printf("### Nanoseconds per pixel of the picture as it grows, two threads\n\n");
    bench::Table table({"picture", "B2Y", "MMF", "Y2J", "memcpy"});
    for (uint32_t quarters : {1u, 4u, 16u}) {
        Frame frame(quarters), second(quarters, 2), third(quarters, 3), scratch(quarters, 4);
        const auto bytes = static_cast<uint32_t>(frame.picture.Layout().size);
        bench::Buffer blob(bench::BlobBuffer(bytes));
        size_t size = 0;
        std::vector<uint8_t> copy(bytes, 1);
        const imaging::RawView raw = frame.Raw();
        const std::vector<Subject> subjects = {
                {"", [&] { Require(imaging::RawToNv12(raw, frame.Picture(), On(2))); }},
                {"",
                 [&] {
                     Require(imaging::AverageToNv12({raw, second.Raw(), third.Raw()}, scratch.Raw(),
                                                    frame.Picture(), On(2)));
                 }},
                {"",
                 [&] {
                     Require(imaging::EncodeJpeg(frame.Picture(), {}, blob.Data(), bytes, &size,
                                                 On(2)));
                 }},
                {"", [&] { memcpy(copy.data(), frame.picture.Data(), bytes); }},
        };
        std::vector<std::string> row = {std::to_string(frame.Picture().width) + " x " +
                                        std::to_string(frame.Picture().height)};
        for (double time : MedianTimes(subjects, kRounds)) {
            row.push_back(PerPixel(time, frame.Pixels()));
        }
        table.Add(row);
    }
    table.Print();
}

void InstructionSets(Frame& frame) {
    printf("### B2Y by instruction set, one thread\n\n");
    const auto name = [](InstructionSet set) {
        return set == InstructionSet::kAvx2 ? "AVX2" : "baseline";
    };
    std::vector<Subject> subjects;
    for (InstructionSet set : imaging::SupportedInstructionSets()) {
        subjects.push_back({name(set), [&frame, set] {
                                Require(imaging::RawToNv12(frame.Raw(), frame.Picture(), {1, set}));
                            }});
    }
    const std::vector<double> times = MedianTimes(subjects, kRounds);
    bench::Table table({"", "ms", "ns per pixel"});
    for (size_t i = 0; i < subjects.size(); ++i) {
        table.Add({subjects[i].name, Number(times[i], 2), PerPixel(times[i], frame.Pixels())});
    }
    table.Print();
}

}  // namespace

int main() {
    printf("## Pixels: RAW10 4096 x 3072, NV12 4000 x 3000\n\n");
    Frame frame(4);
    BayerToYuv(frame, Memory::kWarm);
    BayerToYuv(frame, Memory::kFresh);
    for (uint32_t threads : {1u, 2u}) {
        MultiFrame(frame, Memory::kWarm, threads);
        MultiFrame(frame, Memory::kFresh, threads);
    }
    YuvToJpeg(frame);
    InstructionSets(frame);
    Growth();
}
