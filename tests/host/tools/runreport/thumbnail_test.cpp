// Reduced pictures show what the frame shows.

#include "host/tools/runreport/thumbnail.h"

#include <gmock/gmock.h>

#include "host/tools/offlineframes/compare.h"
#include "host/tools/offlineframes/picture_file.h"
#include "host/tools/offlineframes/resample.h"
#include "tests/host/tools/offlineframes/test_support.h"

namespace runreport {
namespace {

using offlineframes::allocatorGeometry;
using offlineframes::Bytes;
using offlineframes::FrameFormat;
using offlineframes::FrameGeometry;
using offlineframes::Picture;
using offlineframes::PictureSize;
using offlineframes::Result;

// Of the reduced picture beside the frame's own picture, scaled; dB.
double likeness(const Result<Thumbnail>& thumbnail, const Picture& full) {
    if (!thumbnail.Ok()) {
        ADD_FAILURE() << thumbnail.Error();
        return 0;
    }
    const auto jpeg = offlineframes::decodeJpeg(thumbnail.Value().jpeg, "thumbnail");
    EXPECT_TRUE(jpeg.Ok()) << jpeg.Error();
    EXPECT_EQ(jpeg.Value().fullSize.width, thumbnail.Value().width);
    EXPECT_EQ(jpeg.Value().fullSize.height, thumbnail.Value().height);
    const Picture scaled = offlineframes::fitPicture(full, jpeg.Value().fullSize);
    return offlineframes::comparePictures(jpeg.Value().picture, scaled).Value().psnr;
}

TEST(Thumbnail, ShowsFramesOfEveryFormat) {
    for (const PictureSize size : {PictureSize{2408, 1804}, {160, 120}}) {
        const Picture picture = offlineframes::gradientPicture(size.width, size.height);
        const FrameGeometry nv12 = allocatorGeometry(FrameFormat::kNv12, size);
        EXPECT_GT(likeness(thumbnailOfFrame(encodeNv12(picture, nv12, {}), nv12), picture), 33)
                << size.width;
        const FrameGeometry raw = allocatorGeometry(FrameFormat::kRaw10, size);
        EXPECT_GT(likeness(thumbnailOfFrame(encodeRaw10(picture, raw, {}, std::nullopt), raw),
                           picture),
                  30)
                << size.width;
    }
}

TEST(Thumbnail, ReducesJpegsAndTellsTheirSize) {
    const Picture picture = offlineframes::gradientPicture(2000, 1500);
    PictureSize size;
    const auto thumbnail = thumbnailOfJpeg(offlineframes::jpegBytes(picture, 0), "whole", &size);
    EXPECT_GT(likeness(thumbnail, picture), 33);
    EXPECT_LE(thumbnail.Value().width, 1000u);
    EXPECT_EQ(size.width, 2000u);
    EXPECT_EQ(size.height, 1500u);
    EXPECT_FALSE(thumbnailOfJpeg({0xff, 0xd8, 0xff}, "damaged", &size).Ok());
}

TEST(Thumbnail, RefusesWhatIsTooSmallToShow) {
    const FrameGeometry thin = {FrameFormat::kNv12, {4000, 2}, 4096, 2};
    const Bytes frame(4096 * 3);
    EXPECT_FALSE(thumbnailOfFrame(frame, thin).Ok());
}

}  // namespace
}  // namespace runreport
