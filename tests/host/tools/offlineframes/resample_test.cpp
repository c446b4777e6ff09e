// Fitting keeps what it must: flat colours, the middle, equal sizes.

#include "host/tools/offlineframes/resample.h"

#include "host/tools/offlineframes/compare.h"
#include "test_support.h"

namespace offlineframes {
namespace {

int largestDifference(const Picture& a, const Picture& b) {
    return valueOf(comparePictures(a, b)).largest;
}

TEST(FitPicture, KeepsFlatColoursAtAnyScale) {
    for (const PictureSize size : {PictureSize{4, 2}, {100, 6}, {640, 480}, {6, 100}}) {
        const Picture fitted = fitPicture(flatPicture(33, 47, {10, 130, 250}), size);
        EXPECT_EQ(largestDifference(fitted, flatPicture(size.width, size.height, {10, 130, 250})),
                  0);
    }
}

TEST(FitPicture, CutsTheOverhangEvenly) {
    // Left and right thirds black, the middle white: a square cut holds only the middle.
    Picture wide = flatPicture(90, 30, {0, 0, 0});
    for (uint32_t y = 0; y < 30; ++y) {
        for (uint32_t x = 30; x < 60; ++x) std::fill_n(wide.pixel(x, y), 3, uint8_t{255});
    }
    const Picture cut = fitPicture(wide, {30, 30});
    EXPECT_EQ(largestDifference(cut, flatPicture(30, 30, {255, 255, 255})), 0);
}

TEST(FitPicture, ShrinksAndGrowsWithoutShiftingThePicture) {
    const Picture fine = gradientPicture(400, 300);
    EXPECT_LE(largestDifference(fitPicture(fine, {100, 74}), gradientPicture(100, 74)), 3);
    EXPECT_LE(largestDifference(fitPicture(gradientPicture(100, 76), {400, 304}),
                                gradientPicture(400, 304)),
              3);
    // Bars finer than the result's pixels turn grey instead of false bars.
    Picture bars(400, 300);
    for (uint32_t y = 0; y < 300; ++y) {
        for (uint32_t x = 0; x < 400; x += 2) std::fill_n(bars.pixel(x, y), 3, uint8_t{255});
    }
    const Picture shrunk = fitPicture(bars, {100, 75});
    EXPECT_LE(largestDifference(shrunk, flatPicture(100, 75, {128, 128, 128})), 24);
}

}  // namespace
}  // namespace offlineframes
