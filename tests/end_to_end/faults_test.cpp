// What the tool does when the service or the allocator misbehaves: one case for each fault.
// Those without a shutter or result really wait for 5 s each.

#include <ctype.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/end_to_end/device_run.h"
#include "tests/end_to_end/log_matchers.h"

using ::testing::AnyOf;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;

namespace end_to_end {
namespace {

enum class End { Normal, BySignal };

struct Fault {
    const char* name;
    End end;
    size_t dumps;                     // files written
    std::vector<std::string> lines;   // in the log, in this order
    std::vector<std::string> absent;  // not in the log
};

void PrintTo(const Fault& fault, std::ostream* stream) {
    *stream << fault.name;
}

class Faults : public ::testing::TestWithParam<Fault> {};

TEST_P(Faults, LeadTo) {
    const Fault& fault = GetParam();
    DeviceRun device;
    const RunResult run = device.with({"--fault", fault.name}).tool({"-t", "B2Y"});
    if (fault.end == End::Normal) {
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.messages(), Contains("main: offline camera client exit"));
    } else {
        EXPECT_GT(run.status, 128);
        EXPECT_NE(run.status, 255);
    }
    EXPECT_THAT(run.dumps, SizeIs(fault.dumps));
    EXPECT_THAT(run.messages(), InOrder(fault.lines));
    for (const std::string& line : fault.absent) {
        EXPECT_THAT(run.messages(), Not(Contains(line)));
    }
    if (HasFailure()) ADD_FAILURE() << run.allOutput();
}

// The fault's name as letters and digits only.
std::string caseName(const ::testing::TestParamInfo<Fault>& info) {
    std::string name = info.param.name;
    for (char& letter : name) {
        if (!isalnum(static_cast<unsigned char>(letter))) letter = '_';
    }
    return name;
}

const char kOpened[] = "OpenOfflineSession";
const char kConfigured[] = "ConfigureOfflineStreams sucessfully";
const char kConfigureFailed[] = "ConfigureOfflineStreams, FAILED...";
const char kProcessed[] = "ProcessOfflineRequest sucessfully";
const char kProcessFailed[] = "ProcessOfflineRequest, FAILED...";
const char kShutter[] = "WaitForShutter frame 1 received 1";
const char kNoShutter[] = "WaitForShutter frame 1 received 0";
const char kResult[] = "WaitForResult received is 1";
const char kNoResult[] = "WaitForResult received is 0";
const char kCompleted[] = "WaitCaptureResultCompleted status is 0";
const char kTimedOut[] = "WaitCaptureResultCompleted status is -110";
const char kClosed[] = "CloseOfflineSession";

INSTANTIATE_TEST_SUITE_P(
        OfTheCalls, Faults,
        ::testing::Values(Fault{"open-error", End::BySignal, 0, {}, {kOpened, kConfigured}},
                          Fault{"open-null", End::BySignal, 0, {}, {kOpened, kConfigured}},
                          Fault{"die-on-open", End::BySignal, 0, {}, {kOpened, kConfigured}},
                          Fault{"configure-error",
                                End::Normal,
                                0,
                                {kOpened, kConfigureFailed, kClosed},
                                {"ProcessOfflineRequest"}},
                          Fault{"die-on-configure",
                                End::Normal,
                                0,
                                {kOpened, kConfigureFailed, kClosed},
                                {"ProcessOfflineRequest"}},
                          Fault{"process-error",
                                End::Normal,
                                0,
                                {kConfigured, kProcessFailed,
                                 "request id frameNumber:0 return frameNumber 0", kClosed},
                                {"WaitCaptureResultCompleted"}},
                          Fault{"die-on-process",
                                End::Normal,
                                0,
                                {kConfigured, kProcessFailed, kClosed},
                                {"WaitCaptureResultCompleted"}},
                          Fault{"die-after-process",
                                End::Normal,
                                0,
                                {kProcessed, kNoShutter, kNoResult, kTimedOut, kClosed},
                                {kCompleted}}),
        caseName);

INSTANTIATE_TEST_SUITE_P(
        OfTheShutter, Faults,
        ::testing::Values(Fault{"no-shutter", End::Normal, 1, {kNoShutter, kCompleted}, {kShutter}},
                          Fault{"error-notify",
                                End::Normal,
                                1,
                                {"notify: callback notify", kNoShutter, kCompleted},
                                {kShutter}},
                          Fault{"shutter-other-frame",
                                End::Normal,
                                1,
                                {"notify: callback notify", kNoShutter, kCompleted},
                                {kShutter}},
                          Fault{"result-first",
                                End::Normal,
                                1,
                                {"ProcessOfflineResult 1", "notify: callback notify", kCompleted},
                                {}}),
        caseName);

INSTANTIATE_TEST_SUITE_P(
        OfTheResult, Faults,
        ::testing::Values(
                Fault{"no-result",
                      End::Normal,
                      0,
                      {kProcessed, kNoResult, kTimedOut, kClosed},
                      {"ProcessOfflineResult 1"}},
                Fault{"late-result",
                      End::Normal,
                      0,
                      {kProcessed, kNoResult, kTimedOut, kClosed},
                      {kCompleted}},
                Fault{"early-result",
                      End::Normal,
                      1,
                      {"ProcessOfflineResult 1", kProcessed, "WaitForResult result timeout_ms 5000",
                       "IsResultReceivedLocked sucessfully", kCompleted},
                      {kResult}},
                Fault{"split-result",
                      End::Normal,
                      1,
                      {"GetResultFrameInfo: result.end() ",
                       "GetResultFrameInfo: isBufferUpdate 1 isPartialMetaUpdate 0 isMetaUpdate 0",
                       kCompleted},
                      {}},
                Fault{"wrong-buffers",
                      End::Normal,
                      0,
                      {"IsResultReceivedLocked failed", kNoResult, kTimedOut},
                      {kCompleted}},
                Fault{"extra-buffer",
                      End::Normal,
                      0,
                      {"IsResultReceivedLocked failed", kNoResult, kTimedOut},
                      {kCompleted}},
                Fault{"reordered-buffers", End::Normal, 1, {kCompleted}, {}},
                Fault{"duplicate-result", End::Normal, 1, {kCompleted}, {kTimedOut}},
                Fault{"corrupt-metadata",
                      End::Normal,
                      1,
                      {"convertFromAidl: input CameraMetadata is corrupt!",
                       "GetResultFrameInfo: result.end() pMetadata (nil)", kCompleted},
                      {}},
                Fault{"empty-callbacks", End::Normal, 1, {kCompleted}, {}}),
        caseName);

INSTANTIATE_TEST_SUITE_P(
        OfBuffers, Faults,
        ::testing::Values(
                Fault{"lend=3",
                      End::Normal,
                      1,
                      {"m_nextBufferId 1", "m_nextBufferId 2", "m_nextBufferId 3", kCompleted},
                      {}},
                Fault{"return-twice",
                      End::Normal,
                      1,
                      {"m_nextBufferId 1", "returnStreamBuffers: unknown buffer ID 1"},
                      {}},
                Fault{"return-unknown", End::Normal, 1, {kCompleted}, {}},
                Fault{"allocate-error", End::Normal, 0, {kConfigured, kProcessFailed, kClosed}, {}},
                Fault{"allocate-none",
                      End::Normal,
                      0,
                      {"Invalid buffer array size (got 0, expected 1)", kProcessFailed, kClosed},
                      {}},
                Fault{"allocate-two",
                      End::Normal,
                      0,
                      {"Invalid buffer array size (got 2, expected 1)", kProcessFailed, kClosed},
                      {}},
                Fault{"bad-handle", End::Normal, 0, {kConfigured, kProcessFailed, kClosed}, {}}),
        caseName);

// Below the tool's least size the whole span and as much again behind it is written.
TEST(JpegFaults, SmallJpegIsWrittenAtTheFallbackSize) {
    DeviceRun device;
    const RunResult run = device.with({"--planes", "--fault", "small-jpeg"}).tool({"-t", "Y2J"});
    EXPECT_EQ(run.status, 0) << run.allOutput();
    ASSERT_THAT(run.dumps, SizeIs(1));
    EXPECT_EQ(run.dumps.begin()->second, 48'000'000u);
}

}  // namespace
}  // namespace end_to_end
