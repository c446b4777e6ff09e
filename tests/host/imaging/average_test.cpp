// The average of RAW10 frames.
#include <gmock/gmock.h>
#include <imaging/average.h>

#include <cmath>
#include <random>

#include "frames.h"

namespace imaging {

TEST(AverageRaw10, ThreeFramesGiveTheNearestCode) {
    // Column by column: sums 0, 1, 2, 3, 4, 5, 3069, 3068.
    const uint16_t codes[3][8] = {{0, 1, 1, 1, 2, 2, 1023, 1023},
                                  {0, 0, 1, 1, 1, 2, 1023, 1022},
                                  {0, 0, 0, 1, 1, 1, 1023, 1023}};
    std::vector<RawFrame> frames;
    for (int f = 0; f < 3; ++f) {
        frames.emplace_back(8, 2, [&, f](uint32_t x, uint32_t y) {
            return static_cast<uint16_t>(y == 0 ? codes[f][x] : 100 * f);
        });
    }
    RawFrame out(8, 2, [](uint32_t, uint32_t) { return 7; });
    ASSERT_EQ(AverageRaw10({frames[0].View(), frames[1].View(), frames[2].View()}, out.View()), "");
    const uint16_t expected[8] = {0, 0, 1, 1, 1, 2, 1023, 1023};
    for (uint32_t x = 0; x < 8; ++x) {
        EXPECT_EQ(out.At(x, 0), expected[x]) << x;
        EXPECT_EQ(out.At(x, 1), 100);
    }
}

TEST(AverageRaw10, AnyCountAndWidthOnAnyThreadsWithAnyInstructions) {
    std::mt19937 random(1);
    for (uint32_t count : {1u, 2u, 3u, 7u, 63u, 64u}) {
        // Rows that end inside a vector of the unpacking and of the sums; more than one strip.
        const uint32_t width = 4 * (1 + count % 9);
        constexpr uint32_t kHeight = 130;
        std::vector<std::vector<uint16_t>> codes(count);
        std::vector<RawFrame> frames;
        std::vector<RawView> views;
        frames.reserve(count);
        for (auto& frame : codes) {
            const bool bright = random() % 4 != 0;
            for (uint32_t i = 0; i < width * kHeight; ++i) {
                frame.push_back(bright ? 1023 - random() % 8 : random() % 1024);
            }
            frames.emplace_back(width, kHeight,
                                [&](uint32_t x, uint32_t y) { return frame[y * width + x]; });
            views.push_back(frames.back().View());
        }
        for (InstructionSet instructions : SupportedInstructionSets()) {
            for (uint32_t threads : {1u, 3u}) {
                RawFrame out(width, kHeight, [](uint32_t, uint32_t) { return 7; });
                ASSERT_EQ(AverageRaw10(views, out.View(), {threads, instructions}), "");
                std::vector<uint16_t> row(width);
                for (uint32_t y = 0; y < kHeight; ++y) {
                    UnpackRaw10Row(out.View().data + y * out.Stride(), width, row.data());
                    for (uint32_t x = 0; x < width; ++x) {
                        double sum = 0;
                        for (const auto& frame : codes) sum += frame[y * width + x];
                        ASSERT_EQ(row[x], std::floor(sum / count + 0.5)) << count << " " << x;
                    }
                }
            }
        }
    }
}

TEST(AverageRaw10, OnlyTheFramesPixelsAreWritten) {
    RawFrame frame(8, 2, [](uint32_t, uint32_t) { return 1023; });
    RawFrame out(8, 2, [](uint32_t, uint32_t) { return 0; });
    ASSERT_EQ(AverageRaw10({frame.View()}, out.View()), "");
    for (size_t i = Raw10RowBytes(8); i < out.Stride(); ++i) EXPECT_EQ(out.View().data[i], 0);
}

TEST(AverageRaw10, FramesOfDifferentSizesAreRefused) {
    const auto grey = [](uint32_t, uint32_t) { return uint16_t{500}; };
    RawFrame large(8, 4, grey);
    RawFrame small(8, 2, grey);
    EXPECT_THAT(AverageRaw10({large.View(), small.View()}, large.View()),
                testing::HasSubstr("8 x 2"));
    EXPECT_NE(AverageRaw10({}, large.View()), "");
}

}  // namespace imaging
