// What a program that links the log sink writes where.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include <sstream>

#include "tests/end_to_end/device_run.h"
#include "tests/support/subprocess.h"

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::SizeIs;

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream rest(text);
    for (std::string line; std::getline(rest, line);) lines.push_back(line);
    return lines;
}

struct Outcome {
    int pid = -1;
    int status = -1;
    std::vector<std::string> log;    // lines on the log's descriptor
    std::vector<std::string> error;  // lines on standard error
};

// Runs the probe. In `logFd`, "%" becomes the number of a descriptor, which appends as the log's.
Outcome RunProbe(const char* what, std::string logFd, const char* echo) {
    const int log = memfd_create("log", 0);
    fcntl(log, F_SETFL, O_APPEND);
    if (logFd == "%") logFd = std::to_string(log);
    end_to_end::Subprocess probe({LOG_PROBE, what},
                                 {{"STANDIN_LOG_FD", logFd}, {"STANDIN_LOG_ECHO", echo}});
    const int pid = probe.pid();
    const end_to_end::Finished finished = probe.finish();
    const std::string written = end_to_end::readFile("/proc/self/fd/" + std::to_string(log));
    close(log);
    return {pid, finished.status, LinesOf(written), LinesOf(finished.err)};
}

TEST(LogSink, KeepsEveryPriorityInTheDevicesFormAndEchoesIt) {
    const Outcome outcome = RunProbe("priorities", "%", "1");
    EXPECT_EQ(outcome.error, outcome.log);
    char ids[32];
    std::snprintf(ids, sizeof(ids), "%5d %5d", outcome.pid, outcome.pid);  // one thread: the same
    const std::string letters = "VDIWEF";
    ASSERT_THAT(outcome.log, SizeIs(letters.size()));
    for (size_t i = 0; i < letters.size(); ++i) {
        EXPECT_THAT(
                outcome.log[i],
                MatchesRegex("[01][0-9]-[0-3][0-9] [0-2][0-9]:[0-5][0-9]:[0-6][0-9]\\.[0-9]{6} " +
                             std::string(ids) + " " + letters[i] + " Probe: priority " +
                             std::to_string(i + 2)));
    }
    EXPECT_THAT(RunProbe("priorities", "2", "1").error, SizeIs(6)) << "twice to one descriptor";
}

TEST(LogSink, EveryLineOfAMessageHasItsHeadAndNothingIsCut) {
    EXPECT_THAT(RunProbe("shapes", "%", "").log,
                ElementsAre(EndsWith(" I Probe: first"), EndsWith(" I Probe: "),
                            EndsWith(" I Probe: third"), EndsWith(" I Probe: "),
                            EndsWith(" I Probe: " + std::string(20000, 'x'))));
}

TEST(LogSink, MessagesOfThreadsStayWhole) {
    const Outcome outcome = RunProbe("threads", "%", "");
    ASSERT_THAT(outcome.log, SizeIs(800));
    for (size_t i = 0; i < outcome.log.size(); i += 2) {
        EXPECT_THAT(outcome.log[i], EndsWith("D Probe: from a thread"));
        EXPECT_THAT(outcome.log[i + 1], EndsWith("D Probe: second line"));
        EXPECT_EQ(outcome.log[i].substr(0, 34), outcome.log[i + 1].substr(0, 34));
    }
}

TEST(LogSink, WithoutAUsableDescriptorLiblogGoesOn) {
    // liblog's own form, which leaves VERBOSE and DEBUG out.
    EXPECT_THAT(RunProbe("priorities", "", "").error, SizeIs(4));
    const int readOnly = open("/dev/null", O_RDONLY);
    for (const std::string& number :
         {std::string("999"), std::string("3x"), std::to_string(readOnly)}) {
        const Outcome outcome = RunProbe("priorities", number, "");
        EXPECT_EQ(outcome.status, 0);
        ASSERT_THAT(outcome.error, SizeIs(5)) << number;
        EXPECT_THAT(outcome.error[0], HasSubstr("STANDIN_LOG_FD=" + number + ": "));
        EXPECT_THAT(outcome.error[1], MatchesRegex("Probe I .*priority 4"));
    }
    close(readOnly);
}

TEST(LogSink, LoggingLeavesErrnoAlone) {
    EXPECT_EQ(RunProbe("errno", "%", "").status, 0);
    const int full = open("/dev/full", O_WRONLY);  // write() fails, the program goes on
    EXPECT_EQ(RunProbe("errno", std::to_string(full), "").status, 0);
    close(full);
}

}  // namespace
