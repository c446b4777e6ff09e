// What a program that links the log sink writes where.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include <set>
#include <sstream>

#include "tests/end_to_end/device_run.h"
#include "tests/support/subprocess.h"

namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::SizeIs;

std::vector<std::string> LinesOf(std::istringstream text) {
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) lines.push_back(line);
    return lines;
}

constexpr char kTime[] = "[01][0-9]-[0-3][0-9] [0-2][0-9]:[0-5][0-9]:[0-6][0-9]\\.[0-9]{6} ";

struct Outcome {
    int pid = -1;
    std::vector<std::string> log;    // lines on the log's descriptor
    std::vector<std::string> error;  // lines on standard error
};

// Runs the probe. In `logFd`, "%" becomes the number of a descriptor, which appends as the log's.
Outcome RunProbe(std::string logFd, const char* echo) {
    const int log = memfd_create("log", 0);
    fcntl(log, F_SETFL, O_APPEND);
    if (logFd == "%") logFd = std::to_string(log);
    end_to_end::Subprocess probe({LOG_PROBE},
                                 {{"STANDIN_LOG_FD", logFd}, {"STANDIN_LOG_ECHO", echo}});
    const int pid = probe.Pid();
    const end_to_end::Finished finished = probe.Finish();
    EXPECT_EQ(finished.status, 0);
    const std::string written = end_to_end::ReadFile("/proc/self/fd/" + std::to_string(log));
    close(log);
    return {pid, LinesOf(std::istringstream(written)), LinesOf(std::istringstream(finished.err))};
}

TEST(LogSink, KeepsEveryMessageWholeInTheDevicesFormAndEchoesIt) {
    const auto [pid, log, error] = RunProbe("%", "1");
    // Two threads may reach log and standard error in different orders.
    EXPECT_EQ(std::multiset<std::string>(error.begin(), error.end()),
              std::multiset<std::string>(log.begin(), log.end()));
    ASSERT_THAT(log, SizeIs(6 + 4 + 800));
    char ids[32];
    std::snprintf(ids, sizeof(ids), "%5d %5d ", pid, pid);  // one thread: the same
    for (size_t i = 0; i < 6; ++i) {
        EXPECT_THAT(log[i], MatchesRegex(std::string(kTime) + ids + "VDIWEF"[i] +
                                         " Probe: priority " + std::to_string(i + 2)));
    }
    EXPECT_THAT(log[6], EndsWith(" D Probe: first"));
    EXPECT_THAT(log[7], EndsWith(" D Probe: "));
    EXPECT_THAT(log[8], EndsWith(" D Probe: third"));
    EXPECT_THAT(log[9], EndsWith(" D Probe: " + std::string(20000, 'x')));
    for (size_t i = 10; i < log.size(); i += 2) {
        EXPECT_THAT(log[i], EndsWith("D Probe: from a thread"));
        EXPECT_THAT(log[i + 1], EndsWith("D Probe: second line"));
        EXPECT_EQ(log[i].substr(0, 34), log[i + 1].substr(0, 34));
    }
    EXPECT_THAT(RunProbe("2", "1").error, SizeIs(log.size())) << "twice to one descriptor";
}

TEST(LogSink, WithoutAUsableDescriptorLiblogGoesOn) {
    // liblog's own form, which leaves VERBOSE and DEBUG out.
    EXPECT_THAT(RunProbe("", "").error, SizeIs(4));
    const int readOnly = open("/dev/null", O_RDONLY);
    for (const std::string& number :
         {std::string("999"), std::string("3x"), std::to_string(readOnly)}) {
        const Outcome outcome = RunProbe(number, "");
        ASSERT_THAT(outcome.error, SizeIs(5)) << number;
        EXPECT_THAT(outcome.error[0], HasSubstr("STANDIN_LOG_FD=" + number + ": "));
        EXPECT_THAT(outcome.error[1], MatchesRegex("Probe I .*priority 4"));
    }
    close(readOnly);
    const int full = open("/dev/full", O_WRONLY);  // write() fails, the program goes on
    RunProbe(std::to_string(full), "");
    close(full);
}

}  // namespace
