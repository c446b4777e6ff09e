// The average of RAW10 frames.
#include <gmock/gmock.h>
#include <imaging/average.h>

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

TEST(AverageRaw10, FramesOfDifferentSizesAreRefused) {
    const auto grey = [](uint32_t, uint32_t) { return uint16_t{500}; };
    RawFrame large(8, 4, grey);
    RawFrame small(8, 2, grey);
    EXPECT_THAT(AverageRaw10({large.View(), small.View()}, large.View()),
                testing::HasSubstr("8 x 2"));
    EXPECT_NE(AverageRaw10({}, large.View()), "");
}

}  // namespace imaging
