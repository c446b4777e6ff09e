// The average of RAW10 frames, bare and developed.
#include <gmock/gmock.h>
#include <imaging/b2y.h>
#include <imaging/multi_frame.h>

#include "frames.h"
#include "host/imaging/instruction_sets.h"

namespace imaging {

namespace {

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
        ASSERT_EQ(RawToNv12(average.View(), expected.View(), {1, InstructionSet::kBaseline}), "");
        for (InstructionSet instructions : SupportedInstructionSets()) {
            for (uint32_t threads : {0u, 1u, 2u, 3u, 64u}) {
                RawFrame scratch(36, height);
                Nv12Picture picture(34, outHeight);
                ASSERT_EQ(AverageToNv12(burst.views, scratch.View(), picture.View(),
                                        {threads, instructions}),
                          "");
                EXPECT_EQ(picture.bytes, expected.bytes) << height << " " << threads;
            }
        }
    }
}

TEST(AverageToNv12, FramesOfDifferentSizesAreRefused) {
    RawFrame large(8, 4);
    RawFrame small(8, 2);
    Nv12Picture picture(8, 2);
    EXPECT_THAT(AverageToNv12({large.View(), small.View()}, large.View(), picture.View()),
                testing::HasSubstr("8 x 2"));
    EXPECT_THAT(AverageToNv12({small.View()}, large.View(), picture.View()),
                testing::HasSubstr("8 x 4"));
    EXPECT_NE(AverageToNv12({}, large.View(), picture.View()), "");
}

}  // namespace imaging
