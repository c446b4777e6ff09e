// Each operation mode, as the tool stands and with plane layouts: its log and its dumps.

#include <gmock/gmock.h>

#include "tests/end_to_end/device_run.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Pair;

namespace end_to_end {
namespace {

constexpr uint64_t kNv12Bytes = 4096ULL * 3072 * 3 / 2;
constexpr uint64_t kSmallJpegBytes = 4000ULL * 3000 * 4;

const std::string kDumpStart = "OfflineAidl_CameraId_2_Frame_1_";
const std::string kData = "/data/vendor/camera/offlinecameratest/";
const std::string kRaw =
        "LoadOffineSourceRawFrame: open input file " + kData + "4096_3072_RAW10.raw";
const std::string kYuv =
        "LoadOffineSourceYUVFrame: open input file " + kData + "4000_3000_NV12.yuv";
const std::string kFace = "LoadOffineSourceYUVFrame: open input file " + kData + "mmf_fd.yuv";

struct Mode {
    std::string command;
    int number;
    bool planes;
    std::string dump;  // the end of its name
    uint64_t bytes;
    std::vector<std::string> sourceLines;  // of the loaders, in order
};

void PrintTo(const Mode& mode, std::ostream* stream) {
    *stream << mode.dump;
}

class Modes : public ::testing::TestWithParam<Mode> {};

TEST_P(Modes, DumpOneFrame) {
    const Mode& mode = GetParam();
    DeviceRun device;
    if (mode.planes) device.With({"--planes"});
    const RunResult run = device.Tool({"-t", mode.command});
    EXPECT_EQ(run.status, 0) << run.AllOutput();
    EXPECT_EQ(run.out, "cmd: -t=" + mode.command + "\nopMode: " + mode.command + "=" +
                               std::to_string(mode.number) + "\nret: =0\n");
    EXPECT_EQ(run.err, "");
    EXPECT_THAT(run.dumps, ElementsAre(Pair(kDumpStart + mode.dump, mode.bytes)));
    EXPECT_THAT(run.Messages(), InOrder(mode.sourceLines));
    EXPECT_THAT(
            run.Messages(),
            InOrder(Words{
                    "main: offline camera client connect to service ", "OpenOfflineSession",
                    "ConfigureOfflineStreams sucessfully", "ProcessOfflineRequest",
                    "ProcessOfflineRequest sucessfully",
                    "request id frameNumber:1 return frameNumber 1", "WaitCaptureResultCompleted",
                    "WaitCaptureResultCompleted result frameNum is 1",
                    "WaitForShutter frame 1 time 5000", "WaitForResult result timeout_ms 5000",
                    "WaitCaptureResultCompleted status is 0",
                    "result completed outputResult->second.buffers.size 1", "CloseOfflineSession",
                    "main: offline camera client exit",
                    "[AIDL] OfflineCameraClient destructor called"}))
            << run.AllOutput();
    for (const LogLine& line : run.log) EXPECT_NE(line.priority, 'E') << line.message;
    EXPECT_THAT(run.deviceLog, Not(HasSubstr("was ended by signal")));
}

const std::vector<std::string> kRawUnread = {
        kRaw, "LoadOffineSourceRawFrame: f_wxf_h 5120x0, stridexscanline 5120x0, f_off 0,"};
const std::vector<std::string> kRawRead = {
        "LoadOffineInputMetadata: read meta from dump bin, bin size: 120.", kRaw,
        "LoadOffineSourceRawFrame: f_wxf_h 5120x3072, stridexscanline 5120x3072, f_off 0,",
        "GetPlaneLayout: plane info: component - 6",
        "h_subsampling - 2, v_subsampling - 2, offset - 12582912, pixel_increment/step - 2"};
const std::vector<std::string> kFaceRead = {
        kFace,
        "LoadOffineSourceYUVFrame: f_wxf_h 640x512, stridexscanline 640x512, f_uv_off 327680,"};
// The picture of an empty frame is a JPEG below the tool's least size.
const std::vector<std::string> kYuvUnread = {kYuv, "imageSize 48000000 bufferSize  24000000"};
const std::vector<std::string> kAllOfMmf = {kRaw, kFace, kRaw, kFace, kRaw, kFace};

const Mode kModes[] = {
        {"B2Y", 0, false, "B2Y_Stride[4096]_Scanline[0].yuv", kNv12Bytes, kRawUnread},
        {"Y2J", 1, false, "Y2J_Width[4000]_Height[3000].jpg", kSmallJpegBytes, kYuvUnread},
        {"MMF", 3, false, "MMF_Stride[4096]_Scanline[0].yuv", kNv12Bytes, kAllOfMmf},
        {"B2Y", 0, true, "B2Y_Stride[4096]_Scanline[3072].yuv", kNv12Bytes, kRawRead},
        {"MMF", 3, true, "MMF_Stride[4096]_Scanline[3072].yuv", kNv12Bytes, kFaceRead}};

INSTANTIATE_TEST_SUITE_P(All, Modes, ::testing::ValuesIn(kModes), [](const auto& info) {
    return info.param.command + (info.param.planes ? "WithPlanes" : "");
});

TEST(StreamlessModes, AreRefusedByTheServiceAndStillClosed) {
    struct Case {
        Words arguments;
        std::string out;
        int mode;
    };
    for (const auto& [arguments, out, mode] :
         {Case{{"-t", "Y2Y"}, "cmd: -t=Y2Y\nopMode: Y2Y=2\nret: =0\n", 2},
          // The last command wins.
          Case{{"-t", "Y2J", "-t", "QLL"}, "cmd: -t=QLL\nopMode: MMF=4\nret: =0\n", 4},
          Case{{"-t", "R2R"}, "cmd: -t=R2R\nopMode: R2R=5\nret: =0\n", 5}}) {
        const std::string number = std::to_string(mode);
        DeviceRun device;
        const RunResult run = device.Tool(arguments);
        EXPECT_EQ(run.status, 0) << run.AllOutput();
        EXPECT_EQ(run.out, out);
        EXPECT_THAT(run.dumps, IsEmpty());

        std::vector<std::string> lines;
        bool started = false;
        for (const LogLine& line : run.log) {
            started |= line.message == "main: offline camera client opMode " + number;
            // The service may let go of the callback before or after the process has ended.
            if (line.message == "[AIDL]OfflineCameraCallBacks destructor called") continue;
            if (started) lines.push_back(std::string(1, line.priority) + " " + line.message);
        }
        EXPECT_THAT(
                lines,
                ElementsAre("I main: offline camera client opMode " + number,
                            "I [AIDL] setOpMode opMode " + number, "I OpenOfflineSession",
                            "E invalid op mode " + number, "I stream size:0, sizeof(Stream):120",
                            "E ConfigureOfflineStreams, FAILED...", "I CloseOfflineSession",
                            "I main: offline camera client exit",
                            "I [AIDL] OfflineCameraClient destructor called"));
    }
}

}  // namespace
}  // namespace end_to_end
