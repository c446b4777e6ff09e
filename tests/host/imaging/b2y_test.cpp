// The pipeline against its naive twin: every sample of every frame, on any threads and
// instructions.
#include <gmock/gmock.h>
#include <imaging/b2y.h>

#include <algorithm>
#include <random>

#include "frames.h"
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
    ASSERT_EQ(RawToNv12(raw.View(), picture.View(), execution), "");
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

}  // namespace

TEST(B2yTwin, NoiseOfAllLevels) {
    const Frame frame = {180, 150, 176, 146};
    ExpectAgreement(frame, AllLevels(frame, 1));
    // The shadows, where the tone curve is steepest.
    ExpectAgreement(frame, [all = AllLevels(frame, 2)](uint32_t x, uint32_t y) {
        return static_cast<uint16_t>(50 + all(x, y) / 16);
    });
}

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
                         {out.y, out.uv, outWidth, outHeight, out.strideBytes});
    };
    EXPECT_THAT(develop(8, 17, 10, 6), HasSubstr("10 x 6 is larger than"));
    EXPECT_THAT(develop(8, 17, 8, 5), HasSubstr("8 x 5"));
    EXPECT_THAT(develop(8, 9, 8, 6), HasSubstr("stride of 9"));
    EXPECT_THAT(develop(6, 17, 6, 6), HasSubstr("multiple of 4"));
    EXPECT_THAT(picture.bytes, testing::Each(Nv12Picture::kUntouched));
}

}  // namespace imaging
