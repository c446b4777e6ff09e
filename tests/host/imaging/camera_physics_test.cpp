// The inverses of the physics; the naive camera checks the rest.
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

}  // namespace imaging
