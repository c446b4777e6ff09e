// With plane layouts the dumps are the chart of the source files: right size, place and colours.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/end_to_end/device_run.h"

using ::testing::Ge;
using ::testing::HasSubstr;
using ::testing::SizeIs;

namespace end_to_end {
namespace {

const char kYuvSource[] = SOURCE_FOLDER "/offlinecameratest/4000_3000_NV12.yuv";

// PSNR of all channels in dB between two frame files; 0 when they cannot be compared.
double psnr(const std::string& a, const std::string& b) {
    const Finished compared = runProgram({OFFLINEFRAMES, "compare", a, b});
    EXPECT_EQ(compared.status, 0) << compared.err;
    const size_t all = compared.out.find("  all ");
    if (all == std::string::npos) return 0;
    return strtod(compared.out.c_str() + all + 6, nullptr);
}

// Path of the one dump of a run with plane layouts.
std::string dumpOf(DeviceRun* device, const char* command) {
    const RunResult run = device->with({"--planes"}).tool({"-t", command});
    EXPECT_EQ(run.status, 0) << run.allOutput();
    EXPECT_THAT(run.dumps, SizeIs(1)) << run.allOutput();
    return run.dumps.empty() ? "" : device->dumpPath(run.dumps.begin()->first);
}

// The RAW10 and NV12 sources hold one chart, so the camera's picture of the one resembles the
// other: a wrong row length, colour order, crop or turn costs far more than demosaicing does.
TEST(Pictures, B2YDevelopsTheChart) {
    DeviceRun device;
    EXPECT_GT(psnr(dumpOf(&device, "B2Y"), kYuvSource), 25);
}

TEST(Pictures, MMFOfEqualFramesIsB2Y) {
    DeviceRun device;
    const std::string averaged = dumpOf(&device, "MMF");
    DeviceRun single;
    const std::string developed = dumpOf(&single, "B2Y");
    EXPECT_TRUE(readFile(averaged) == readFile(developed));
}

TEST(Pictures, Y2JIsAWholeJpegOfTheSource) {
    DeviceRun device;
    const std::string path = dumpOf(&device, "Y2J");
    const std::string jpeg = readFile(path);
    ASSERT_THAT(jpeg, SizeIs(Ge(262152u)));
    EXPECT_LT(jpeg.size(), 24'000'000u);
    EXPECT_EQ(jpeg.substr(0, 2), "\xFF\xD8");
    EXPECT_EQ(jpeg.substr(jpeg.size() - 2), "\xFF\xD9");
    // The tool asks for a picture that is to be shown turned by 90 degrees.
    const std::string stored = device.folder() + "/stored.png";
    EXPECT_EQ(runProgram({OFFLINEFRAMES, "view", "--as-stored", path, stored}).status, 0);
    EXPECT_GT(psnr(stored, kYuvSource), 30);
}

}  // namespace
}  // namespace end_to_end
