// The scalar functions of the physics against figures worked out by hand.
#include <gmock/gmock.h>
#include <imaging/camera_physics.h>

#include <cstdlib>

namespace imaging {

TEST(CameraPhysics, GainsActAfterTheBlackLevelAndClipAtWhite) {
    for (Channel channel : {Channel::kRed, Channel::kGreen, Channel::kBlue}) {
        EXPECT_EQ(LinearFromRaw(0, channel), 0);
        EXPECT_EQ(LinearFromRaw(64, channel), 0);
        EXPECT_EQ(LinearFromRaw(1023, channel), 959);
    }
    EXPECT_EQ(LinearFromRaw(164, Channel::kRed), 200);
    EXPECT_EQ(LinearFromRaw(164, Channel::kGreen), 100);
    EXPECT_EQ(LinearFromRaw(164, Channel::kBlue), 150);
    EXPECT_EQ(LinearFromRaw(165, Channel::kBlue), 152);  // 151.5
    EXPECT_EQ(LinearFromRaw(543, Channel::kRed), 958);
    EXPECT_EQ(LinearFromRaw(544, Channel::kRed), 959);  // 960 clipped
}

TEST(CameraPhysics, RawOfALinearValueDevelopsBackWithinHalfAGain) {
    for (Channel channel : {Channel::kRed, Channel::kGreen, Channel::kBlue}) {
        const int slack = channel == Channel::kGreen ? 0 : 1;
        for (int v = 0; v <= kLinearMax; ++v) {
            EXPECT_LE(std::abs(LinearFromRaw(RawFromLinear(v, channel), channel) - v), slack) << v;
        }
    }
}

TEST(CameraPhysics, ToneCurveIsTheSrgbTransferFunction) {
    EXPECT_EQ(ToneFromLinear(0), 0);
    EXPECT_EQ(ToneFromLinear(1), 3);      // 12.92 x 255 / 959 = 3.44
    EXPECT_EQ(ToneFromLinear(173), 118);  // 18 % grey: 0.4618 x 255 = 117.8
    EXPECT_EQ(ToneFromLinear(480), 188);  // 0.7357 x 255 = 187.6
    EXPECT_EQ(ToneFromLinear(959), 255);
    const ToneTable& tone = ToneCurve();
    EXPECT_EQ(tone[1], 0);  // eighths: 3.44 / 8 = 0.43
    EXPECT_EQ(tone[2], 1);
    EXPECT_EQ(tone[4], 2);
    // Finer than the tones: none is left out, none comes twice with another between.
    for (size_t f = 1; f < tone.size(); ++f) {
        EXPECT_GE(tone[f], tone[f - 1]) << f;
        EXPECT_LE(tone[f], tone[f - 1] + 1) << f;
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
    EXPECT_EQ(Luma(255, 255, 255), 255);
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
    EXPECT_EQ(ChromaRed(1020, 0, 0), 255);
    EXPECT_EQ(ChromaRed(0, 1020, 1020), 0);
    EXPECT_EQ(ChromaBlue(1020, 0, 0), 85);  // 128 - 43.03
    EXPECT_EQ(ChromaRed(0, 1020, 0), 21);   // 128 - 106.8
}

}  // namespace imaging
