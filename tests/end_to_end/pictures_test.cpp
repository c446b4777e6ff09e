// What is in a JPEG dump. The pictures of all modes are looked at in own_photo_test.cpp.

#include <gmock/gmock.h>
#include <imaging/jpeg.h>

#include "host/tools/offlineframes/picture_file.h"
#include "tests/end_to_end/device_run.h"

using ::testing::EndsWith;
using ::testing::Ge;
using ::testing::SizeIs;
using ::testing::StartsWith;

namespace end_to_end {
namespace {

TEST(Pictures, Y2JIsAWholeJpegToBeTurned) {
    DeviceRun device;
    const RunResult run = device.with({"--planes"}).tool({"-t", "Y2J"});
    ASSERT_THAT(run.dumps, SizeIs(1)) << run.AllOutput();
    const std::string path = device.dumpPath(run.dumps.begin()->first);
    const std::string jpeg = readFile(path);
    ASSERT_THAT(jpeg, SizeIs(Ge(262152u)));
    EXPECT_LT(jpeg.size(), 24'000'000u);
    EXPECT_THAT(jpeg, EndsWith("\xFF\xD9"));
    const std::string stored = device.folder() + "/stored.png";
    EXPECT_EQ(runProgram({OFFLINEFRAMES, "view", "--as-stored", path, stored}).status, 0);
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
        size_t size = 0;
        ASSERT_EQ(imaging::EncodeJpeg(view, {95, degrees}, file.data(), file.size(), &size), "");
        EXPECT_THAT(std::string(file.begin(), file.end()),
                    StartsWith(std::string("\xFF\xD8\xFF\xE0\x00\x10JFIF\x00\x01", 12)));
        const auto decoded = offlineframes::DecodeJpeg(file, "the JPEG");
        ASSERT_TRUE(decoded.Ok()) << decoded.Error();
        EXPECT_EQ(decoded.Value().orientation, orientation);
        EXPECT_EQ(decoded.Value().jpegBytes, size);
    }
}

}  // namespace
}  // namespace end_to_end
