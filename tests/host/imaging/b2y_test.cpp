// The raw-to-YUV pipeline against predictions from its stated physics.
#include <gmock/gmock.h>
#include <imaging/b2y.h>
#include <imaging/camera_physics.h>
#include <imaging/demosaic.h>

#include "frames.h"

namespace imaging {

using testing::HasSubstr;

namespace {

/** Reproducible texture with large steps. */
uint16_t Texture(uint32_t x, uint32_t y) {
    const uint32_t mixed = (x * 2654435761u) ^ (y * 40503u * 65537u);
    return static_cast<uint16_t>((mixed >> 13) % 1024);
}

}  // namespace

TEST(RawToNv12, FlatColoursComeOutAsPredicted) {
    struct Flat {
        uint16_t red, green, blue;  // raw codes
        uint8_t y, cb, cr;
    };
    // Linear 0, 959 and, of the mixed one, 400, 172, 60 with tones 173, 117, 71:
    // Y = 128.5, a tie in decimals that the integer coefficients send up; Cb = 95.6; Cr = 159.7.
    const Flat flats[] = {
            {64, 64, 64, 0, 128, 128},    {1023, 1023, 1023, 255, 128, 128},
            {1023, 64, 64, 76, 85, 255},  {64, 1023, 64, 150, 44, 21},
            {64, 64, 1023, 29, 255, 107}, {264, 236, 104, 129, 96, 160},
    };
    for (const Flat& flat : flats) {
        RawFrame raw(8, 6, [&](uint32_t x, uint32_t y) {
            const uint16_t codes[3] = {flat.red, flat.green, flat.blue};
            return codes[static_cast<int>(MosaicChannel(x, y))];
        });
        Nv12Picture picture(8, 6);
        ASSERT_EQ(RawToNv12(raw.View(), picture.View()), "");
        for (uint32_t y = 0; y < 6; ++y) {
            for (uint32_t x = 0; x < 8; ++x) {
                EXPECT_EQ(picture.Y(x, y), flat.y) << x << "," << y;
                EXPECT_EQ(picture.Cb(x, y), flat.cb);
                EXPECT_EQ(picture.Cr(x, y), flat.cr);
            }
        }
    }
}

TEST(RawToNv12, EdgesLookAsIfTheFrameWereMirroredAboutItsOutermostPixels) {
    for (const auto& size : {std::pair(12u, 10u), std::pair(4u, 2u)}) {
        const uint32_t width = size.first;
        const uint32_t height = size.second;
        constexpr uint32_t kBorder = 4;
        RawFrame small(width, height, Texture);
        RawFrame large(width + 2 * kBorder, height + 2 * kBorder, [&](uint32_t x, uint32_t y) {
            return Texture(Mirror(int64_t{x} - kBorder, width),
                           Mirror(int64_t{y} - kBorder, height));
        });
        Nv12Picture direct(width, height);
        Nv12Picture inside(width, height);
        ASSERT_EQ(RawToNv12(small.View(), direct.View()), "");
        ASSERT_EQ(RawToNv12(large.View(), inside.View()), "");
        EXPECT_EQ(direct.bytes, inside.bytes);
    }
    // Spelled out, since the frame above leans on the same function.
    EXPECT_EQ(Mirror(-1, 8), 1u);
    EXPECT_EQ(Mirror(-2, 8), 2u);
    EXPECT_EQ(Mirror(8, 8), 6u);
    EXPECT_EQ(Mirror(9, 8), 5u);
    EXPECT_EQ(Mirror(-2, 2), 0u);
}

TEST(RawToNv12, CropTakesTheMiddleAndLeavesThePaddingAlone) {
    RawFrame raw(16, 12, Texture);
    Nv12Picture full(16, 12);
    Nv12Picture cropped(8, 6);
    ASSERT_EQ(RawToNv12(raw.View(), full.View()), "");
    ASSERT_EQ(RawToNv12(raw.View(), cropped.View()), "");
    for (uint32_t y = 0; y < 6; ++y) {
        for (uint32_t x = 0; x < 8; ++x) {
            EXPECT_EQ(cropped.Y(x, y), full.Y(x + 4, y + 2));
            EXPECT_EQ(cropped.Cb(x, y), full.Cb(x + 4, y + 2));
            EXPECT_EQ(cropped.Cr(x, y), full.Cr(x + 4, y + 2));
        }
    }
    for (size_t row = 0; row < 9; ++row) {
        for (size_t x = 8; x < cropped.Stride(); ++x) {
            EXPECT_EQ(cropped.bytes[row * cropped.Stride() + x], Nv12Picture::kUntouched);
        }
    }
}

TEST(RawToNv12, ImpossibleSizesAreNamed) {
    RawFrame raw(8, 6, Texture);
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
