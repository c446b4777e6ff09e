// The reference camera's work on the chart, known exactly: less noise from more frames, and JPEGs
// that an independent reader understands.

#include <gmock/gmock.h>
#include <imaging/b2y.h>
#include <imaging/jpeg.h>
#include <imaging/multi_frame.h>

#include <cmath>
#include <string>

#include "host/tools/offlineframes/chart.h"
#include "host/tools/offlineframes/frame_encoder.h"
#include "host/tools/offlineframes/picture_file.h"

using namespace std::string_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace end_to_end {
namespace {

using offlineframes::Bytes;
using offlineframes::FrameFormat;
using offlineframes::FrameGeometry;

constexpr uint32_t kWidth = 1024, kHeight = 768;
// Raw levels: more than rounding, but little enough that the tone curve is nearly straight over it.
constexpr double kSigma = 4;

// The chart on the sensor with the noise of one exposure; seed 0 is the noiseless one.
Bytes exposure(uint64_t seed) {
    const offlineframes::ChartFrame frame = offlineframes::ChartOnSensor({kWidth, kHeight});
    const FrameGeometry geometry = AllocatorGeometry(FrameFormat::kRaw10, frame.sensor);
    return EncodeRaw10(DrawSensorChart(frame), geometry, {seed == 0 ? 0 : kSigma, seed}, frame);
}

// Luma of the developed average of exposures.
Bytes developedLuma(const std::vector<uint64_t>& seeds) {
    const uint32_t stride = AllocatorGeometry(FrameFormat::kRaw10, {kWidth, kHeight}).stride;
    std::vector<Bytes> frames;
    std::vector<imaging::RawView> views;
    for (const uint64_t seed : seeds) frames.push_back(exposure(seed));
    for (const Bytes& frame : frames) views.push_back({frame.data(), kWidth, kHeight, stride});
    Bytes scratch(frames[0].size());
    Bytes picture(kWidth * kHeight * 3 / 2);
    const imaging::MutableNv12View out = {picture.data(), picture.data() + kWidth * kHeight, kWidth,
                                          kHeight, kWidth};
    EXPECT_EQ(views.size() == 1 ? imaging::RawToNv12(views[0], out)
                                : imaging::AverageToNv12(
                                          views, {scratch.data(), kWidth, kHeight, stride}, out),
              "");
    picture.resize(kWidth * kHeight);
    return picture;
}

double meanSquare(const Bytes& a, const Bytes& b) {
    double sum = 0;
    for (size_t i = 0; i < a.size(); ++i) sum += (a[i] - b[i]) * (a[i] - b[i]);
    return sum / static_cast<double>(a.size());
}

// Three exposures have a third of the noise power: 4.8 dB less, if each is used and none twice.
TEST(KnownScene, ThreeFramesHaveLessNoiseThanOne) {
    const Bytes clean = developedLuma({0});
    const double one = meanSquare(developedLuma({1}), clean);
    const double three = meanSquare(developedLuma({1, 2, 3}), clean);
    EXPECT_GT(one, 4) << "no noise to reduce";
    EXPECT_GT(10 * std::log10(one / three), 4);
    EXPECT_LT(10 * std::log10(one / meanSquare(developedLuma({1, 1, 1}), clean)), 0.1);
}

TEST(KnownScene, JpegsSayWhatTheyAreToEveryReader) {
    constexpr uint32_t kOutWidth = 1000, kOutHeight = 750;
    const FrameGeometry geometry = {
            FrameFormat::kNv12, {kOutWidth, kOutHeight}, kOutWidth, kOutHeight};
    const auto frame = offlineframes::ChartOfVisible(geometry.size);
    const Bytes nv12 = EncodeNv12(DrawVisibleChart(frame), geometry, {});
    const imaging::Nv12View view = {nv12.data(), nv12.data() + kOutWidth * kOutHeight, kOutWidth,
                                    kOutHeight, kOutWidth};
    for (const auto& [degrees, orientation] : {std::pair(0, 1), {90, 6}, {180, 3}, {270, 8}}) {
        imaging::JpegSettings settings;
        settings.orientationDegrees = degrees;
        Bytes file(nv12.size() * 2);
        size_t size = 0;
        ASSERT_EQ(imaging::EncodeJpeg(view, settings, file.data(), file.size(), &size), "");
        file.resize(size);

        // ITU-T T.81 B.2.2: precision, height, width, components; luma is sampled 2 x 2.
        const std::string text(file.begin(), file.end());
        EXPECT_THAT(text, StartsWith("\xFF\xD8\xFF\xE0\x00\x10JFIF\x00\x01"s));
        EXPECT_THAT(text, HasSubstr("\xFF\xC0\x00\x11\x08\x02\xEE\x03\xE8"
                                    "\x03\x01\x22\x00\x02\x11\x01\x03\x11\x01"s));

        const auto decoded = offlineframes::DecodeJpeg(file, "the JPEG");
        ASSERT_TRUE(decoded.Ok());
        EXPECT_EQ(decoded.Value().orientation, orientation);
        EXPECT_EQ(decoded.Value().jpegBytes, size);
        EXPECT_EQ(decoded.Value().picture.width, kOutWidth);
        EXPECT_EQ(decoded.Value().picture.height, kOutHeight);
    }
}

}  // namespace
}  // namespace end_to_end
