// PSNR and largest difference on pictures whose answers are known by hand.

#include "host/tools/offlineframes/compare.h"

#include <gtest/gtest.h>

#include "test_support.h"

namespace offlineframes {
namespace {

TEST(Compare, GivesPsnrAndThePlaceOfTheLargestDifference) {
    const Picture a = flatPicture(10, 10, {100, 100, 100});
    Picture b = a;
    b.pixel(3, 7)[1] = 90;   // the largest, in green
    b.pixel(8, 8)[1] = 110;  // as large, but later
    b.pixel(9, 9)[2] = 97;
    const Comparison c = valueOf(comparePictures(a, b));
    EXPECT_EQ(c.largest, 10);
    EXPECT_EQ(c.x, 3u);
    EXPECT_EQ(c.y, 7u);
    EXPECT_EQ(c.channel, 1);
    EXPECT_TRUE(std::isinf(c.channelPsnr[0]));
    // Mean squares: green (100 + 100) / 100 = 2, blue 9 / 100, all 209 / 300.
    EXPECT_NEAR(c.channelPsnr[1], 20 * std::log10(255) - 10 * std::log10(2), 1e-9);
    EXPECT_NEAR(c.channelPsnr[2], 20 * std::log10(255) - 10 * std::log10(0.09), 1e-9);
    EXPECT_NEAR(c.psnr, 20 * std::log10(255) - 10 * std::log10(209.0 / 300), 1e-9);
}

}  // namespace
}  // namespace offlineframes
