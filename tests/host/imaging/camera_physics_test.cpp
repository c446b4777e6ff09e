// The inverses of the physics, and colours against figures worked out by hand. The rest has a twin.
#include <gmock/gmock.h>
#include <imaging/camera_physics.h>

#include <cstdlib>

namespace imaging {

TEST(CameraPhysics, RawOfALinearValueDevelopsBackWithinHalfAGain) {
    for (Channel channel : {Channel::kRed, Channel::kGreen, Channel::kBlue}) {
        const int slack = channel == Channel::kGreen ? 0 : 1;
        for (int v = 0; v <= kLinearMax; ++v) {
            EXPECT_LE(std::abs(LinearFromRaw(RawFromLinear(v, channel), channel) - v), slack) << v;
        }
    }
}

TEST(CameraPhysics, InverseToneCurveReturnsEveryToneOfAWholeCode) {
    for (int v = 0; v <= kLinearMax; ++v) {
        const uint8_t tone = ToneFromLinear(v);
        EXPECT_EQ(ToneFromLinear(LinearFromTone(tone)), tone) << v;
    }
    EXPECT_EQ(LinearFromTone(255), 959);
}

TEST(CameraPhysics, YCbCrIsFullRangeBt601) {
    EXPECT_EQ(Luma(255, 0, 0), 76);
    EXPECT_EQ(Luma(0, 255, 0), 150);
    EXPECT_EQ(Luma(0, 0, 255), 29);
    for (int grey = 0; grey <= 255; ++grey) {
        EXPECT_EQ(Luma(grey, grey, grey), grey);
        EXPECT_EQ(ChromaBlue(4 * grey, 4 * grey, 4 * grey), 128);
        EXPECT_EQ(ChromaRed(4 * grey, 4 * grey, 4 * grey), 128);
    }
    EXPECT_EQ(ChromaBlue(0, 0, 1020), 255);   // 255.5, ties down
    EXPECT_EQ(ChromaBlue(1020, 1020, 0), 0);  // 0.5
    EXPECT_EQ(ChromaBlue(1020, 0, 0), 85);    // 128 - 43.03
    EXPECT_EQ(ChromaRed(1020, 0, 0), 255);
    EXPECT_EQ(ChromaRed(0, 1020, 0), 21);  // 128 - 106.8
}

}  // namespace imaging
