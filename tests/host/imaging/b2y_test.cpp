// The pipeline against its naive twin: every sample of every frame, on any threads and
// instructions; the average of frames; the inverses of the physics.
#include <gmock/gmock.h>
#include <imaging/b2y.h>
#include <imaging/camera_physics.h>
#include <imaging/multi_frame.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "frames.h"
#include "host/imaging/instruction_sets.h"
#include "naive_camera.h"

namespace imaging {

using testing::HasSubstr;

namespace {

using Frame = NaiveCamera::Frame;

// The first sample in which a picture differs from its twin, "" when there is none.
std::string FirstDifference(const Nv12Picture& picture, const NaiveCamera& twin) {
    for (uint32_t y = 0; y < picture.height; ++y) {
        for (uint32_t x = 0; x < picture.width; ++x) {
            const bool chroma = x % 2 == 0 && y % 2 == 0;
            if (picture.Y(x, y) != twin.Y(x, y) || (chroma && picture.Cb(x, y) != twin.Cb(x, y)) ||
                (chroma && picture.Cr(x, y) != twin.Cr(x, y))) {
                return "at " + std::to_string(x) + "," + std::to_string(y);
            }
        }
    }
    return "";
}

void ExpectAgreement(const Frame& frame, const RawFrame::Pixels& pixels,
                     const Execution& execution = {}) {
    RawFrame raw(frame.width, frame.height, pixels);
    Nv12Picture picture(frame.outWidth, frame.outHeight);
    ASSERT_TRUE(RawToNv12(raw.View(), picture.View(), execution).Ok());
    EXPECT_EQ(FirstDifference(picture, {frame, pixels}), "") << frame.outWidth;
    for (size_t row = 0; row < frame.outHeight * 3 / 2; ++row) {
        const auto padding = picture.bytes.begin() + (row * picture.Stride() + frame.outWidth);
        EXPECT_EQ(std::count(padding, padding + 6, Nv12Picture::kUntouched), 6) << row;
    }
}

// Every level equally often, in an order without sense.
RawFrame::Pixels AllLevels(const Frame& frame, uint32_t seed) {
    std::vector<uint16_t> codes(size_t{frame.width} * frame.height);
    for (size_t i = 0; i < codes.size(); ++i) codes[i] = static_cast<uint16_t>(i % 1024);
    std::shuffle(codes.begin(), codes.end(), std::mt19937(seed));
    return [codes, width = frame.width](uint32_t x, uint32_t y) {
        return codes[size_t{y} * width + x];
    };
}

// Noise, in three of four frames near white, so that sums grow as large as they can.
uint16_t Code(uint32_t frame, uint32_t x, uint32_t y) {
    uint32_t noise = (frame * 0x9E3779B1u) ^ (x * 0x85EBCA77u) ^ (y * 0xC2B2AE3Du);
    noise = (noise ^ (noise >> 15)) * 0x2C1B3C6Du >> 8;
    return static_cast<uint16_t>(frame % 4 != 0 ? 1023 - noise % 8 : noise % 1024);
}

uint16_t Average(uint32_t count, uint32_t x, uint32_t y) {
    uint32_t sum = count / 2;
    for (uint32_t frame = 0; frame < count; ++frame) sum += Code(frame, x, y);
    return static_cast<uint16_t>(sum / count);
}

struct Burst {
    Burst(uint32_t count, uint32_t width, uint32_t height) {
        for (uint32_t i = 0; i < count; ++i) {
            frames.emplace_back(width, height,
                                [i](uint32_t x, uint32_t y) { return Code(i, x, y); });
        }
        for (RawFrame& frame : frames) views.push_back(frame.View());
    }
    std::vector<RawFrame> frames;
    std::vector<RawView> views;
};

}  // namespace

TEST(B2yTwin, EveryCropOfASmallFrame) {
    // Widths on both sides of one and two vectors, down to the smallest.
    for (uint32_t width : {4u, 36u, 68u}) {
        for (uint32_t outWidth = 2; outWidth <= width; outWidth += 2) {
            const Frame frame = {width, 14, outWidth, 2 + outWidth % 14};
            ExpectAgreement(frame, AllLevels(frame, outWidth));
        }
    }
    const Frame lowest = {8, 2, 8, 2};
    ExpectAgreement(lowest, AllLevels(lowest, 3));
}

TEST(B2yTwin, AnyThreadsInstructionsAndStrips) {
    // Two strips of rows and a bit, and one row pair more or less.
    for (uint32_t outHeight : {254u, 256u, 258u, 262u}) {
        const Frame frame = {76, 264, 74, outHeight};
        for (InstructionSet instructions : SupportedInstructionSets()) {
            for (uint32_t threads : {0u, 1u, 2u, 64u}) {
                ExpectAgreement(frame, AllLevels(frame, outHeight), {threads, instructions});
            }
        }
    }
}

TEST(B2y, ImpossibleSizesAreNamed) {
    RawFrame raw(8, 6);
    Nv12Picture picture(8, 6);
    const MutableNv12View out = picture.View();
    const auto develop = [&](uint32_t width, size_t stride, uint32_t outWidth, uint32_t outHeight) {
        return RawToNv12({raw.bytes.data(), width, 6, stride},
                         {out.y, out.uv, outWidth, outHeight, out.strideBytes})
                .Error();
    };
    EXPECT_THAT(develop(8, 17, 10, 6), HasSubstr("10 x 6 is larger than"));
    EXPECT_THAT(develop(8, 17, 8, 5), HasSubstr("8 x 5"));
    EXPECT_THAT(develop(8, 9, 8, 6), HasSubstr("stride of 9"));
    EXPECT_THAT(develop(6, 17, 6, 6), HasSubstr("multiple of 4"));
    EXPECT_THAT(picture.bytes, testing::Each(Nv12Picture::kUntouched));
}

TEST(AverageRows, AreTheNearestCodesOfAnyCountAndWidth) {
    for (uint32_t count : {1u, 2u, 3u, 7u, 63u, 64u}) {
        for (uint32_t width : {4u, 8u, 12u, 16u, 20u, 68u}) {
            Burst burst(count, width, 6);
            const RawFrame expected(
                    width, 4, [count](uint32_t x, uint32_t y) { return Average(count, x, y + 2); });
            for (InstructionSet instructions : SupportedInstructionSets()) {
                RawFrame out(width, 4);
                FunctionsFor(instructions).average({burst.views, 2, out.View()});
                EXPECT_EQ(out.bytes, expected.bytes) << count << " frames, " << width << " wide";
            }
        }
    }
}

TEST(AverageToNv12, IsTheDevelopedAverageWhateverTheThreadsAndInstructions) {
    // Scratch frames with room for one worker, for one barely, for several; crops at both ends.
    for (const auto& [height, outHeight] :
         {std::pair(2u, 2u), {132u, 132u}, {136u, 130u}, {270u, 258u}, {540u, 520u}}) {
        Burst burst(3, 36, height);
        RawFrame average(36, height, [](uint32_t x, uint32_t y) { return Average(3, x, y); });
        Nv12Picture expected(34, outHeight);
        ASSERT_TRUE(
                RawToNv12(average.View(), expected.View(), {1, InstructionSet::kBaseline}).Ok());
        for (InstructionSet instructions : SupportedInstructionSets()) {
            for (uint32_t threads : {0u, 1u, 2u, 3u, 64u}) {
                RawFrame scratch(36, height);
                Nv12Picture picture(34, outHeight);
                ASSERT_TRUE(AverageToNv12(burst.views, scratch.View(), picture.View(),
                                          {threads, instructions})
                                    .Ok());
                EXPECT_EQ(picture.bytes, expected.bytes) << height << " " << threads;
            }
        }
    }
}

TEST(AverageToNv12, FramesOfDifferentSizesAreRefused) {
    RawFrame large(8, 4);
    RawFrame small(8, 2);
    Nv12Picture picture(8, 2);
    const auto refusal = [&](const std::vector<RawView>& frames) {
        return AverageToNv12(frames, large.View(), picture.View()).Error();
    };
    EXPECT_THAT(refusal({large.View(), small.View()}), HasSubstr("8 x 2"));
    EXPECT_THAT(refusal({small.View()}), HasSubstr("8 x 4"));
    EXPECT_THAT(refusal({}), HasSubstr("average of 0 frames"));
}

TEST(CameraPhysics, InversesReturnToneAndValue) {
    for (int v = 0; v <= kLinearMax; ++v) {
        const uint8_t tone = ToneFromLinear(v);
        EXPECT_EQ(ToneFromLinear(static_cast<int>(std::lround(LinearFromTone(tone)))), tone) << v;
    }
    for (Channel channel : {Channel::kRed, Channel::kGreen, Channel::kBlue}) {
        const int slack = channel == Channel::kGreen ? 0 : 1;
        for (int v = 0; v <= kLinearMax; ++v) {
            EXPECT_LE(std::abs(LinearFromRaw(RawFromLinear(v, channel), channel) - v), slack) << v;
        }
    }
}

}  // namespace imaging
