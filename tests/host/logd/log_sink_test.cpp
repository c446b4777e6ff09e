// What a program that links the log sink writes where.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include <sstream>

#include "tests/end_to_end/device_run.h"
#include "tests/end_to_end/subprocess.h"

namespace {

using ::testing::AllOf;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::SizeIs;

std::vector<std::string> linesOf(const std::string& text) {
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
Outcome runProbe(const char* what, std::string logFd, const char* echo) {
    const int log = memfd_create("log", 0);
    fcntl(log, F_SETFL, O_APPEND);
    if (logFd == "%") logFd = std::to_string(log);
    end_to_end::Subprocess::Environment environment;
    if (!logFd.empty()) environment.emplace_back("STANDIN_LOG_FD", logFd);
    if (*echo != '\0') environment.emplace_back("STANDIN_LOG_ECHO", echo);
    end_to_end::Subprocess probe({LOG_PROBE, what}, environment);
    const int pid = probe.pid();
    const end_to_end::Finished finished = probe.finish();
    const std::string written = end_to_end::readFile("/proc/self/fd/" + std::to_string(log));
    close(log);
    return {pid, finished.status, linesOf(written), linesOf(finished.err)};
}

const char* const kHead = "[01][0-9]-[0-3][0-9] [0-2][0-9]:[0-5][0-9]:[0-6][0-9]\\.[0-9]{6} ";

TEST(LogSink, KeepsEveryPriorityInTheDevicesForm) {
    const Outcome outcome = runProbe("priorities", "%", "");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.error, IsEmpty());
    ASSERT_THAT(outcome.log, SizeIs(6));
    char ids[32];
    std::snprintf(ids, sizeof(ids), "%5d %5d", outcome.pid, outcome.pid);  // one thread: the same
    const std::string letters = "VDIWEF";
    for (size_t i = 0; i < letters.size(); ++i) {
        EXPECT_THAT(outcome.log[i], MatchesRegex(std::string(kHead) + ids + " " + letters[i] +
                                                 " Probe: priority " + std::to_string(i + 2)));
    }
}

TEST(LogSink, EveryLineOfAMessageHasItsHeadAndNothingIsCut) {
    const Outcome outcome = runProbe("shapes", "%", "");
    EXPECT_THAT(outcome.log, Each(MatchesRegex(std::string(kHead) + ".* I Probe: .*")));
    EXPECT_THAT(outcome.log,
                ElementsAre(EndsWith(": first"), EndsWith(" I Probe: "), EndsWith(": third"),
                            EndsWith(" I Probe: "), EndsWith(": " + std::string(20000, 'x'))));
}

TEST(LogSink, MessagesOfThreadsStayWhole) {
    const Outcome outcome = runProbe("threads", "%", "");
    ASSERT_THAT(outcome.log, SizeIs(800));
    for (size_t i = 0; i < outcome.log.size(); i += 2) {
        EXPECT_THAT(outcome.log[i], EndsWith("D Probe: from a thread"));
        EXPECT_THAT(outcome.log[i + 1], EndsWith("D Probe: second line"));
        EXPECT_EQ(outcome.log[i].substr(0, 34), outcome.log[i + 1].substr(0, 34));
    }
}

TEST(LogSink, EchoGoesToStandardErrorAsWell) {
    const Outcome both = runProbe("priorities", "%", "1");
    EXPECT_THAT(both.log, SizeIs(6));
    EXPECT_EQ(both.error, both.log);
    const Outcome echoOnly = runProbe("priorities", "", "1");
    EXPECT_THAT(echoOnly.log, IsEmpty());
    EXPECT_THAT(echoOnly.error, SizeIs(6));
    EXPECT_THAT(runProbe("priorities", "2", "1").error, SizeIs(6)) << "twice to one descriptor";
}

TEST(LogSink, WithoutVariablesNothingChanges) {
    for (const char* echo : {"", "0"}) {
        const Outcome outcome = runProbe("priorities", "", echo);
        EXPECT_THAT(outcome.log, IsEmpty());
        // liblog's own form, which leaves VERBOSE and DEBUG out.
        ASSERT_THAT(outcome.error, SizeIs(4));
        EXPECT_THAT(outcome.error[0], AllOf(MatchesRegex("Probe I .*"), EndsWith("priority 4")));
    }
}

TEST(LogSink, ABadDescriptorIsToldOnceAndLiblogGoesOn) {
    for (const char* number : {"999", "-1", "3x", "99999999999999999999", "none"}) {
        const Outcome outcome = runProbe("priorities", number, "");
        EXPECT_EQ(outcome.status, 0);
        ASSERT_THAT(outcome.error, SizeIs(5)) << number;
        EXPECT_THAT(outcome.error[0], HasSubstr(std::string("STANDIN_LOG_FD=") + number + ": "));
        EXPECT_THAT(outcome.error[1], MatchesRegex("Probe I .*"));
    }
    const int readOnly = open("/dev/null", O_RDONLY);
    EXPECT_THAT(runProbe("priorities", std::to_string(readOnly), "1").error, SizeIs(7));
    close(readOnly);
}

TEST(LogSink, LoggingLeavesErrnoAlone) {
    EXPECT_EQ(runProbe("errno", "%", "").status, 0);
    // A full device: write() fails, the program goes on.
    const int full = open("/dev/full", O_WRONLY);
    EXPECT_EQ(runProbe("errno", std::to_string(full), "").status, 0);
    close(full);
}

}  // namespace
