// The average of RAW10 frames, bare and developed.
#include <gmock/gmock.h>
#include <imaging/b2y.h>
#include <imaging/multi_frame.h>

#include <cmath>
#include <random>

#include "frames.h"
#include "host/imaging/instruction_sets.h"

namespace imaging {

namespace {

// Frames of noise, three quarters of them near white so that sums grow as large as they can.
class Burst {
  public:
    Burst(uint32_t count, uint32_t width, uint32_t height) : mWidth(width), mCodes(count) {
        std::mt19937 random(count);
        mFrames.reserve(count);
        for (auto& codes : mCodes) {
            const bool bright = random() % 4 != 0;
            for (uint32_t i = 0; i < width * height; ++i) {
                codes.push_back(bright ? 1023 - random() % 8 : random() % 1024);
            }
            mFrames.emplace_back(width, height,
                                 [&](uint32_t x, uint32_t y) { return codes[y * width + x]; });
            views.push_back(mFrames.back().View());
        }
    }

    uint16_t Average(uint32_t x, uint32_t y) const {
        double sum = 0;
        for (const auto& codes : mCodes) sum += codes[y * mWidth + x];
        return static_cast<uint16_t>(std::floor(sum / static_cast<double>(mCodes.size()) + 0.5));
    }

    std::vector<RawView> views;

  private:
    const uint32_t mWidth;
    std::vector<std::vector<uint16_t>> mCodes;
    std::vector<RawFrame> mFrames;
};

}  // namespace

TEST(AverageRows, AreTheNearestCodesOfAnyCountAndWidth) {
    for (uint32_t count : {1u, 2u, 3u, 7u, 63u, 64u}) {
        for (uint32_t width : {4u, 8u, 12u, 16u, 20u, 68u}) {
            Burst burst(count, width, 6);
            for (InstructionSet instructions : SupportedInstructionSets()) {
                RawFrame out(width, 4, [](uint32_t, uint32_t) { return 7; });
                FunctionsFor(instructions).average({burst.views, 2, out.View()});
                for (uint32_t y = 0; y < 4; ++y) {
                    for (uint32_t x = 0; x < width; ++x) {
                        ASSERT_EQ(out.At(x, y), burst.Average(x, y + 2))
                                << count << " frames, " << width << " wide, " << x << "," << y;
                    }
                    const uint8_t* row = out.View().data + y * out.Stride();
                    for (size_t i = Raw10RowBytes(width); i < out.Stride(); ++i) {
                        EXPECT_EQ(row[i], 0) << "padding";
                    }
                }
            }
        }
    }
}

TEST(AverageToNv12, IsTheDevelopedAverageWhateverTheThreadsAndInstructions) {
    struct Case {
        uint32_t height, outHeight;
    };
    // Scratch frames with room for one worker, for one barely, for several; crops at both ends.
    for (const Case& size :
         {Case{2, 2}, Case{132, 132}, Case{136, 130}, Case{270, 258}, Case{540, 520}}) {
        Burst burst(3, 36, size.height);
        RawFrame average(36, size.height,
                         [&](uint32_t x, uint32_t y) { return burst.Average(x, y); });
        Nv12Picture expected(34, size.outHeight);
        ASSERT_EQ(RawToNv12(average.View(), expected.View(), {1, InstructionSet::kBaseline}), "");
        for (InstructionSet instructions : SupportedInstructionSets()) {
            for (uint32_t threads : {0u, 1u, 2u, 3u, 64u}) {
                RawFrame scratch(36, size.height, [](uint32_t, uint32_t) { return 0; });
                Nv12Picture picture(34, size.outHeight);
                ASSERT_EQ(AverageToNv12(burst.views, scratch.View(), picture.View(),
                                        {threads, instructions}),
                          "");
                EXPECT_EQ(picture.bytes, expected.bytes) << size.height << " " << threads;
            }
        }
    }
}

TEST(AverageToNv12, FramesOfDifferentSizesAreRefused) {
    const auto grey = [](uint32_t, uint32_t) { return uint16_t{500}; };
    RawFrame large(8, 4, grey);
    RawFrame small(8, 2, grey);
    Nv12Picture picture(8, 2);
    EXPECT_THAT(AverageToNv12({large.View(), small.View()}, large.View(), picture.View()),
                testing::HasSubstr("8 x 2"));
    EXPECT_THAT(AverageToNv12({small.View()}, large.View(), picture.View()),
                testing::HasSubstr("8 x 4"));
    EXPECT_NE(AverageToNv12({}, large.View(), picture.View()), "");
    EXPECT_THAT(picture.bytes, testing::Each(Nv12Picture::kUntouched));
}

}  // namespace imaging
