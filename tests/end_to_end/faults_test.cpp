// A fault of each kind: how the run ends, and what shows in the tool's log what it made of it. What
// each fault comes to in each mode is in docs/faults.md.

#include <algorithm>

#include "tests/end_to_end/device_run.h"

using ::testing::Contains;
using ::testing::Not;
using ::testing::SizeIs;

namespace end_to_end {
namespace {

enum class End { kDump, kNoDump, kCrash };

struct Fault {
    const char* name;
    End end;
    std::vector<std::string> lines;  // in the log, in this order
    const char* absent = "no line";  // not in the log
    const char* spoil = nullptr;     // commands in the data folder before a run without --fault
};

const char kProcessed[] = "ProcessOfflineRequest sucessfully";
const char kDelivered[] = "ProcessOfflineResult 1";
const char kUpdated[] = "GetResultFrameInfo: isBufferUpdate 1 isPartialMetaUpdate 0 isMetaUpdate 0";
const char kCompleted[] = "WaitCaptureResultCompleted status is 0";
const char kTimedOut[] = "WaitCaptureResultCompleted status is -110";
const char kNotLocked[] = "Failed to lock buffer (nil): 2";
const char kClosed[] = "CloseOfflineSession";

const Fault kFaults[] = {
        {"error-notify",
         End::kDump,
         {"notify: callback notify", "WaitForShutter frame 1 received 0", kCompleted}},
        {"early-result", End::kDump, {kDelivered, kProcessed}, "WaitForResult received is 1"},
        {"split-result", End::kDump, {kDelivered, kDelivered, kUpdated, kCompleted}},
        {"wrong-buffers", End::kNoDump, {"IsResultReceivedLocked failed", kTimedOut}, kCompleted},
        {"corrupt-metadata", End::kDump, {"convertFromAidl: input CameraMetadata is corrupt!"}},
        {"lend=3", End::kDump, {"m_nextBufferId 1", "m_nextBufferId 2", "m_nextBufferId 3"}},
        {"return-unknown", End::kDump, {"returnStreamBuffers: unknown buffer ID 2125315823"}},
        {"open-error", End::kCrash, {"stream size:2, sizeof(Stream):120"}, kClosed},
        {"die-on-configure", End::kNoDump, {"ConfigureOfflineStreams, FAILED...", kClosed}},
        {"allocate-error", End::kNoDump, {"Failed to allocate buffer: -8", kNotLocked, kClosed}},
        {"bad-handle", End::kNoDump, {kNotLocked, "ProcessOfflineRequest, FAILED...", kClosed}},
        {"a source cut short",
         End::kNoDump,
         {"readSize 5119 is not same as width 5120", "load source raw frame failed", kClosed},
         kProcessed,
         "f=offlinecameratest/4096_3072_RAW10.raw; cp $f short; truncate -s -1 short; ln -sf "
         "../short $f"},
        {"no metadata dump",
         End::kDump,
         {kCompleted},
         "LoadOffineInputMetadata: read meta from dump bin, bin size: 120.",
         "rm metadata/original_dump.bin"},
        {"a dump with no room",
         End::kNoDump,
         {kCompleted, "WaitCaptureResultCompleted: store fp failed", kClosed},
         "no line",
         "mkdir 'offlinecameratest/"
         "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[3072].yuv'"}};

void PrintTo(const Fault& fault, std::ostream* stream) {
    *stream << fault.name;
}

class Faults : public ::testing::TestWithParam<Fault> {};

TEST_P(Faults, LeadTo) {
    const Fault& fault = GetParam();
    DeviceRun device;
    const std::string spoil = std::string("cd /data/vendor/camera; ") +
                              (fault.spoil ? fault.spoil : "") +
                              "\nexec vexofflinecameratest -t B2Y";
    device.With(fault.spoil ? Words{"--planes"} : Words{"--fault", fault.name});
    const RunResult run = device.Command({"sh", "-ec", spoil});
    EXPECT_EQ(run.status > 128, fault.end == End::kCrash);
    EXPECT_EQ(run.status == 0, fault.end != End::kCrash);
    EXPECT_THAT(run.Messages(), InOrder(fault.lines));
    EXPECT_THAT(run.Messages(), Not(Contains(fault.absent)));
    EXPECT_THAT(run.dumps, SizeIs(fault.end == End::kDump ? 1 : 0));
    if (HasFailure()) ADD_FAILURE() << run.AllOutput();
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, Faults, ::testing::ValuesIn(kFaults), [](const auto& info) {
    std::string name = info.param.name;
    std::replace_if(
            name.begin(), name.end(), [](char c) { return !isalnum(c); }, '_');
    return name;
});

}  // namespace
}  // namespace end_to_end
