// With plane layouts the dumps are the chart of the source files: right size, place and colours.

#include <gmock/gmock.h>
#include <imaging/jpeg.h>

#include "host/tools/offlineframes/chart.h"
#include "host/tools/offlineframes/picture_file.h"
#include "tests/end_to_end/device_run.h"

using offlineframes::Picture;
using ::testing::EndsWith;
using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace end_to_end {
namespace {

const char kYuvSource[] = SOURCE_FOLDER "/offlinecameratest/4000_3000_NV12.yuv";

// Path of the one dump of a run with plane layouts.
std::string DumpOf(DeviceRun* device, const char* command) {
    const RunResult run = device->With({"--planes"}).Tool({"-t", command});
    EXPECT_EQ(run.status, 0) << run.AllOutput();
    EXPECT_THAT(run.dumps, SizeIs(1)) << run.AllOutput();
    return run.dumps.empty() ? "" : device->DumpPath(run.dumps.begin()->first);
}

// A wrong row length, crop, turn or colour order costs far more than demosaicing does: two columns
// bring 29 dB down to 17.
TEST(Pictures, B2YDevelopsTheChart) {
    DeviceRun device;
    const std::string dump = DumpOf(&device, "B2Y");
    EXPECT_GE(Psnr(dump, kYuvSource), 28);
    const std::string png = device.Folder() + "/developed.png";
    ASSERT_EQ(RunProgram({OFFLINEFRAMES, "view", dump, png}).status, 0);
    const auto developed = offlineframes::ReadPicture(png);
    ASSERT_TRUE(developed.Ok());
    const Picture& picture = developed.Value();
    for (const offlineframes::ChartPatch& patch : offlineframes::ChartPatches()) {
        const auto x = static_cast<uint32_t>((patch.box.left + patch.box.right) / 2);
        const auto y = static_cast<uint32_t>((patch.box.top + patch.box.bottom) / 2);
        const uint8_t* const pixel = picture.Pixel(x, y);
        EXPECT_NEAR(pixel[0], patch.colour.r, 2) << "red at " << x << ", " << y;
        EXPECT_NEAR(pixel[1], patch.colour.g, 2) << "green at " << x << ", " << y;
        EXPECT_NEAR(pixel[2], patch.colour.b, 2) << "blue at " << x << ", " << y;
    }
}

TEST(Pictures, MMFOfEqualFramesIsB2Y) {
    DeviceRun device;
    const std::string averaged = DumpOf(&device, "MMF");
    DeviceRun single;
    const std::string developed = DumpOf(&single, "B2Y");
    EXPECT_TRUE(ReadFile(averaged) == ReadFile(developed));
}

TEST(Pictures, Y2JIsAWholeJpegOfTheSource) {
    DeviceRun device;
    const std::string path = DumpOf(&device, "Y2J");
    const std::string jpeg = ReadFile(path);
    ASSERT_THAT(jpeg, SizeIs(Ge(262152u)));
    EXPECT_LT(jpeg.size(), 24'000'000u);
    EXPECT_THAT(jpeg, EndsWith("\xFF\xD9"));
    const std::string stored = device.Folder() + "/stored.png";
    EXPECT_EQ(RunProgram({OFFLINEFRAMES, "view", "--as-stored", path, stored}).status, 0);
    EXPECT_GE(Psnr(stored, kYuvSource), 38);
    // The tool asks for a picture that is to be shown turned by 90 degrees clockwise.
    const auto lying = offlineframes::ReadPicture(stored);
    const auto upright = offlineframes::ReadPicture(path);
    ASSERT_TRUE(lying.Ok() && upright.Ok());
    ASSERT_EQ(upright.Value().width, 3000u);
    ASSERT_EQ(upright.Value().height, 4000u);
    for (uint32_t i = 0; i < 3000; i += 100) {
        EXPECT_EQ(*upright.Value().Pixel(i, i), *lying.Value().Pixel(i, 2999 - i));
    }
}

// Read back by an independent reader of JPEG and EXIF.
TEST(Pictures, JpegsSayHowTheyAreToBeTurned) {
    const offlineframes::Bytes grey(32 * 16 * 3 / 2, 128);
    const imaging::Nv12View view = {grey.data(), grey.data() + 32 * 16, 32, 16, 32};
    for (const auto& [degrees, orientation] : {std::pair(0, 1), {90, 6}, {180, 3}, {270, 8}}) {
        offlineframes::Bytes file(20000);
        const auto size = imaging::EncodeJpeg(view, {95, degrees}, file.data(), file.size());
        ASSERT_TRUE(size.Ok());
        EXPECT_THAT(std::string(file.begin(), file.end()),
                    StartsWith(std::string("\xFF\xD8\xFF\xE0\x00\x10JFIF\x00\x01", 12)));
        const auto decoded = offlineframes::DecodePicture(file, "the JPEG");
        ASSERT_TRUE(decoded.Ok()) << decoded.Error();
        EXPECT_EQ(decoded.Value().orientation, orientation);
        EXPECT_EQ(decoded.Value().jpegBytes, size.Value());
    }
}

}  // namespace
}  // namespace end_to_end
