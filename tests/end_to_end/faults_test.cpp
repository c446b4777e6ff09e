// Deliveries out of the usual order: the tool's lines that show what it made of them. What each
// fault comes to in the end is in docs/faults.md.

#include <gmock/gmock.h>

#include "tests/end_to_end/device_run.h"
#include "tests/end_to_end/log_matchers.h"

using ::testing::Contains;
using ::testing::Not;

namespace end_to_end {
namespace {

struct Fault {
    const char* option;
    std::vector<std::string> lines;  // in the log, in this order
    const char* absent = "no line";  // not in the log
};

const char kProcessed[] = "ProcessOfflineRequest sucessfully";
const char kNotified[] = "notify: callback notify";
const char kDelivered[] = "ProcessOfflineResult 1";
const char kUpdated[] = "GetResultFrameInfo: isBufferUpdate 1 isPartialMetaUpdate 0 isMetaUpdate 0";
const char kIgnored[] = "GetResultFrameInfo: isBufferUpdate 0 isPartialMetaUpdate 0 isMetaUpdate 0";
const char kShutter[] = "WaitForShutter frame 1 received 1";
const char kNoShutter[] = "WaitForShutter frame 1 received 0";
const char kCompleted[] = "WaitCaptureResultCompleted status is 0";
const char kTimedOut[] = "WaitCaptureResultCompleted status is -110";

void PrintTo(const Fault& fault, std::ostream* stream) {
    *stream << fault.option;
}

class Faults : public ::testing::TestWithParam<Fault> {};

TEST_P(Faults, LeadTo) {
    DeviceRun device;
    const RunResult run = device.with({"--fault", GetParam().option}).tool({"-t", "B2Y"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.messages(), InOrder(GetParam().lines));
    EXPECT_THAT(run.messages(), Not(Contains(GetParam().absent)));
    if (HasFailure()) ADD_FAILURE() << run.allOutput();
}

INSTANTIATE_TEST_SUITE_P(
        OfDeliveries, Faults,
        ::testing::Values(
                Fault{"error-notify", {kNotified, kNoShutter, kCompleted}, kShutter},
                Fault{"result-first", {kDelivered, kNotified, kCompleted}},
                Fault{"early-result",
                      {kDelivered, kProcessed, "WaitForResult result timeout_ms 5000",
                       "IsResultReceivedLocked sucessfully", kCompleted},
                      "WaitForResult received is 1"},
                Fault{"split-result", {kDelivered, kDelivered, kUpdated, kCompleted}},
                Fault{"duplicate-result", {kDelivered, kCompleted}, kUpdated},
                Fault{"wrong-buffers", {"IsResultReceivedLocked failed", kTimedOut}, kCompleted},
                Fault{"late-result", {kProcessed, kNotified, kTimedOut}, kIgnored},
                Fault{"lend=3",
                      {"m_nextBufferId 1", "m_nextBufferId 2", "m_nextBufferId 3", kCompleted}},
                Fault{"process-error",
                      {"ProcessOfflineRequest, FAILED...",
                       "request id frameNumber:0 return frameNumber 0", "CloseOfflineSession"},
                      "WaitCaptureResultCompleted"}),
        [](const auto& info) {
            const std::string name = info.param.option;
            return name.substr(0, name.find_first_of("-=")) + std::to_string(info.index);
        });

}  // namespace
}  // namespace end_to_end
