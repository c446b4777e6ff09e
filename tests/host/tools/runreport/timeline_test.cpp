// Phases from what the main thread logged and called.

#include "host/tools/runreport/timeline.h"

#include <gmock/gmock.h>

namespace runreport {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr int kPid = 24;
constexpr int kPoolThread = 31;

// A report in which everything takes 10 us.
class Made {
  public:
    Made& line(const std::string& message, char priority = 'I', int tid = kPid) {
        LogLine made;
        made.timeUs = mNow += 10;
        made.pid = kPid;
        made.tid = tid;
        made.priority = priority;
        made.message = message;
        report.log.push_back(made);
        report.run.durationUs = mNow + 10;
        return *this;
    }
    Made& call(const std::string& method, bool incoming = false, int64_t durationUs = 1) {
        Call made;
        made.startUs = mNow += 10;
        made.durationUs = durationUs;
        made.pid = kPid;
        made.incoming = incoming;
        made.method = method;
        report.calls.push_back(made);
        return *this;
    }
    std::vector<Phase> phases() const { return makePhases(report); }

    Report report;

  private:
    int64_t mNow = 0;
};

std::vector<std::string> names(const std::vector<Phase>& phases) {
    std::vector<std::string> all;
    for (const Phase& phase : phases) all.push_back(phase.name);
    return all;
}

Made opened() {
    return Made()
            .line("main: offline camera client connect to service ")
            .line("main: offline camera client opMode 0")
            .line("OpenOfflineSession")
            .line("ProcessOfflineRequest");
}

TEST(Timeline, WaitsTellWhetherTheyTimedOut) {
    const std::vector<Phase> phases = opened().line("WaitForShutter frame 1 time 5000")
                                              .line("notify: callback notify", 'I', kPoolThread)
                                              .line("WaitForShutter frame 1 received 0")
                                              .line("WaitForResult result timeout_ms 5000")
                                              .line("WaitForResult received is 1")
                                              .phases();
    ASSERT_THAT(names(phases), ElementsAre("device", "start-up", "open", "configure", "fill",
                                           "shutter", "result"));
    EXPECT_EQ(phases[5].end, PhaseEnd::kTimedOut);
    EXPECT_EQ(phases[5].endUs - phases[5].startUs, 30);
    EXPECT_EQ(phases[6].end, PhaseEnd::kDone);
    EXPECT_TRUE(phases[5].waits && phases[6].waits && !phases[4].waits);
    EXPECT_EQ(phaseAt(phases, phases[5].startUs)->name, "shutter");
}

TEST(Timeline, EachBufferIsAStepOfItsOwn) {
    const std::vector<Phase> phases =
            opened().call("allocate")
                    .line("buffer allocationsize: 100")
                    .line("input streamId 3, bufferStride 64, bufferScanline 9 buffer 0x1 width 40,"
                          " height 30 bufferSize  1234567")
                    .line("LoadOffineSourceRawFrame: open input file /data/x/4.raw")
                    .call("allocate")
                    .call("allocate")
                    .line("output streamId 1, bufferStride 64, bufferScanline 9, buffer 0x1 width"
                          " 40, height 30 bufferSize  20")
                    .phases();
    ASSERT_THAT(names(phases), ElementsAre("device", "start-up", "open", "configure", "fill",
                                           "allocate", "fill", "allocate", "allocate"));
    EXPECT_EQ(phases[5].detail, "input stream 3: 40 × 30, 1,234,567 bytes");
    EXPECT_EQ(phases[6].detail, "4.raw");
    EXPECT_EQ(phases[8].detail, "output stream 1: 40 × 30, 20 bytes");
}

TEST(Timeline, CallsOfThePoolBelongToNoPhase) {
    const std::vector<Phase> phases = opened().line("WaitForResult result timeout_ms 5000")
                                              .call("requestStreamBuffers", true, 50)
                                              .call("allocate")
                                              .line("CloseOfflineSession")
                                              .phases();
    EXPECT_THAT(names(phases),
                ElementsAre("device", "start-up", "open", "configure", "fill", "result", "close"));
}

TEST(Timeline, FailuresShowInTheirPhase) {
    Made run;
    run.line("main: offline camera client connect to service ")
            .line("main: offline camera client opMode 0")
            .line("stream size:2, sizeof(Stream):120")
            .line("ConfigureOfflineStreams, FAILED...", 'E');
    run.report.run.command = {"tool"};
    run.report.run.status = 139;
    std::vector<Phase> phases = run.phases();
    ASSERT_THAT(names(phases), ElementsAre("device", "start-up", "open", "configure"));
    EXPECT_EQ(phases[2].end, PhaseEnd::kFailed);  // no session
    EXPECT_EQ(phases[3].end, PhaseEnd::kCutShort);
    run.report.run.status = 0;
    EXPECT_EQ(run.phases()[3].end, PhaseEnd::kFailed);
}

TEST(Timeline, StaysWithinARunWhoseClockJumps) {
    Made run = opened();
    run.report.run.durationUs = 25;  // less than the log says
    int64_t end = 0;
    for (const Phase& phase : run.phases()) {
        EXPECT_EQ(phase.startUs, end);
        EXPECT_GE(phase.endUs, phase.startUs);
        end = phase.endUs;
    }
    EXPECT_EQ(end, 25);
    EXPECT_THAT(makePhases(Report()), IsEmpty());
}

}  // namespace
}  // namespace runreport
