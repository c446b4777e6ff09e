// The pipeline against its naive twin: every sample of every frame, whatever the threads and the
// instructions.
#include <gmock/gmock.h>
#include <imaging/b2y.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "frames.h"
#include "naive_camera.h"

namespace imaging {

using testing::HasSubstr;

namespace {

using Frame = NaiveCamera::Frame;
using Precision = NaiveCamera::Precision;

// Largest difference of any sample, and how it came about.
struct Difference {
    int largest = 0;
    std::string place;

    void See(const char* plane, uint32_t x, uint32_t y, int expected, int actual) {
        const int difference = std::abs(expected - actual);
        if (difference <= largest) return;
        largest = difference;
        place = std::string(plane) + " at " + std::to_string(x) + "," + std::to_string(y) + ": " +
                std::to_string(actual) + ", the twin has " + std::to_string(expected);
    }
};

Difference Compare(const Nv12Picture& picture, const NaiveCamera& twin) {
    Difference difference;
    for (uint32_t y = 0; y < picture.height; ++y) {
        for (uint32_t x = 0; x < picture.width; ++x) {
            difference.See("Y", x, y, twin.Y(x, y), picture.Y(x, y));
            if (x % 2 != 0 || y % 2 != 0) continue;
            difference.See("Cb", x, y, twin.Cb(x, y), picture.Cb(x, y));
            difference.See("Cr", x, y, twin.Cr(x, y), picture.Cr(x, y));
        }
    }
    return difference;
}

void ExpectAgreement(const Frame& frame, const RawFrame::Pixels& pixels) {
    RawFrame raw(frame.width, frame.height, pixels);
    Nv12Picture picture(frame.outWidth, frame.outHeight);
    ASSERT_EQ(RawToNv12(raw.View(), picture.View()), "");
    const Difference stated = Compare(picture, {frame, pixels, Precision::kStated});
    EXPECT_EQ(stated.largest, 0) << stated.place;
    const Difference real = Compare(picture, {frame, pixels, Precision::kReal});
    EXPECT_LE(real.largest, 1) << real.place;
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

TEST(B2yTwin, FlatFramesAndGradients) {
    const Frame frame = {40, 24, 36, 20};
    for (uint16_t code : {0, 63, 64, 65, 1022, 1023}) {
        ExpectAgreement(frame, [code](uint32_t, uint32_t) { return code; });
    }
    const Frame wide = {1024, 6, 1024, 6};
    ExpectAgreement(wide, [](uint32_t x, uint32_t) { return static_cast<uint16_t>(x); });
}

TEST(B2yTwin, OneHotOrDeadPixelAnywhere) {
    // Small enough that corners, edges and the inside of every colour are all there.
    const Frame frame = {12, 10, 12, 10};
    for (uint32_t place = 0; place < 12 * 10; ++place) {
        const auto isHere = [place](uint32_t x, uint32_t y) { return y * 12 + x == place; };
        ExpectAgreement(frame, [&](uint32_t x, uint32_t y) {
            return static_cast<uint16_t>(isHere(x, y) ? 1023 : 100);
        });
        ExpectAgreement(frame, [&](uint32_t x, uint32_t y) {
            return static_cast<uint16_t>(isHere(x, y) ? 0 : 400);
        });
    }
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

TEST(B2y, ThreadsInstructionsAndStripsLeaveNoTrace) {
    // Two strips of rows and a bit, and one row pair more or less.
    for (uint32_t outHeight : {254u, 256u, 258u, 262u}) {
        const Frame frame = {76, 264, 74, outHeight};
        const RawFrame::Pixels pixels = AllLevels(frame, outHeight);
        RawFrame raw(frame.width, frame.height, pixels);
        const NaiveCamera twin(frame, pixels, Precision::kStated);
        for (InstructionSet instructions : SupportedInstructionSets()) {
            for (uint32_t threads : {0u, 1u, 2u, 64u}) {
                Nv12Picture picture(frame.outWidth, frame.outHeight);
                ASSERT_EQ(RawToNv12(raw.View(), picture.View(), {threads, instructions}), "");
                EXPECT_EQ(Compare(picture, twin).largest, 0)
                        << int(instructions) << " " << threads << " " << outHeight;
            }
        }
    }
}

TEST(B2y, ImpossibleSizesAreNamed) {
    RawFrame raw(8, 6, [](uint32_t x, uint32_t) { return static_cast<uint16_t>(x); });
    Nv12Picture picture(8, 6);
    Nv12Picture wide(10, 6);
    EXPECT_THAT(RawToNv12(raw.View(), wide.View()), HasSubstr("10 x 6 is larger than"));
    MutableNv12View odd = picture.View();
    odd.height = 5;
    EXPECT_THAT(RawToNv12(raw.View(), odd), HasSubstr("8 x 5"));
    MutableRawView narrow = raw.View();
    narrow.strideBytes = 9;
    EXPECT_THAT(RawToNv12(narrow, picture.View()), HasSubstr("stride of 9"));
    MutableRawView six = raw.View();
    six.width = 6;
    EXPECT_THAT(RawToNv12(six, picture.View()), HasSubstr("multiple of 4"));
    EXPECT_THAT(picture.bytes, testing::Each(Nv12Picture::kUntouched));
}

}  // namespace imaging
