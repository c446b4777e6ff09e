// Logs and traces, whole and damaged, and what they say about a run.

#include "host/tools/runlog/runlog.h"

#include <gmock/gmock.h>
#include <time.h>

#include <fstream>

#include "tests/support/temporary_folder.h"

namespace runlog {
namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Words = std::vector<std::string>;

// 2026-11-21 23:59:59.5 local time.
int64_t LateStart() {
    tm local = {};
    strptime("2026-11-21 23:59:59", "%F %T", &local);
    local.tm_isdst = -1;
    return mktime(&local) * int64_t{1'000'000} + 500'000;
}

class RunLog : public ::testing::Test {
  protected:
    Log LogOf(const std::string& text) { return ReadLog(File(text), LateStart()).Value(); }

    std::string File(const std::string& text) {
        std::ofstream(m_folder.Path("file"), std::ios::binary) << text;
        return m_folder.Path("file");
    }

    const TemporaryFolder m_folder{"runlog"};
};

std::string TextOf(const Line& line) {
    return std::to_string(line.timeUs) + " " + std::to_string(line.pid) + " " +
           std::to_string(line.tid) + " " + line.priority + " <" + line.tag + "> " + line.message;
}

TEST_F(RunLog, ReadsLinesAcrossMidnightAndKeepsWhatIsNone) {
    const Log log =
            LogOf("11-21 23:59:59.400000    24    25 W Tag one: two: words\n"
                  "11-22 00:00:01.000250 12345 12346 F T: \n\n"
                  "11-22 00:00:02.000000 1 1 Q T: no such priority\n"
                  "11-22 00:00:02.000000 99999999999 1 I T: m\n" +
                  std::string("\0\xff", 2) + std::string(300'000, 'x') + "\n11-22 00:00:02");
    ASSERT_THAT(log.lines, SizeIs(7));
    EXPECT_EQ(TextOf(log.lines[0]), "-100000 24 25 W <Tag one> two: words");
    EXPECT_EQ(TextOf(log.lines[1]), "1500250 12345 12346 F <T> ");
    EXPECT_EQ(TextOf(log.lines[3]),
              "1500250 0 0   <> 11-22 00:00:02.000000 1 1 Q T: no such priority");
    EXPECT_EQ(log.lines[4].priority, ' ');
    EXPECT_THAT(log.lines[5].message, EndsWith("x [295906 bytes more]"));
    EXPECT_EQ(log.lines[6].message, "11-22 00:00:02");
}

TEST_F(RunLog, KeepsBothEndsAndTheErrorsOfALongLog) {
    std::string text;
    for (int line = 0; line < 70'000; ++line) {
        text += std::string("11-22 00:00:00.000000 1 1 ") + (line % 30'000 == 1 ? 'E' : 'I') +
                " T: " + std::to_string(line) + "\n";
    }
    const Log log = LogOf(text);
    ASSERT_THAT(log.lines, SizeIs(2 * kKeptAtEachEnd + 1));
    EXPECT_EQ(log.omitted, 70'000 - log.lines.size());
    EXPECT_EQ(log.lines[kKeptAtEachEnd - 1].message, "19999");
    EXPECT_EQ(log.lines[kKeptAtEachEnd].message, "30001");
    EXPECT_EQ(log.lines[kKeptAtEachEnd + 1].message, "50000");
}

TEST_F(RunLog, OrdersCallsByTheirStartAndCountsDamagedLines) {
    const Trace trace =
            ReadTrace(File("00:00:02.000000 24 <- 7/peer a.b.ICallback.notify oneway 184 bytes 1 "
                           "fds begins\n"
                           "00:00:02.000000 24 <- 7/peer a.b.ICallback.notify oneway 184 bytes 1 "
                           "fds 44 us DEAD\n"
                           "00:00:01.000000 25 -> 2/manager ?.(descriptor) 0 bytes 0 fds 58 us OK, "
                           "answered EX_ILLEGAL_STATE: no\n"
                           "00:00:03.000000 24 -> 2/manager a.b.C.d 10 bytes 0 fds "
                           "5\n\n00:00:03.000000 24"))
                    .Value();
    EXPECT_EQ(trace.unreadable, 3u);
    ASSERT_THAT(trace.calls, SizeIs(2));
    const Call& first = trace.calls[0];
    EXPECT_EQ(first.peer + " " + first.interface + " " + first.method, "2/manager ? (descriptor)");
    EXPECT_FALSE(first.incoming || first.oneway);
    const Call& second = trace.calls[1];
    EXPECT_TRUE(second.incoming && second.oneway);
    EXPECT_EQ(second.interface + " " + second.status, "a.b.ICallback DEAD");
    EXPECT_EQ(second.startUs - first.startUs, 1'000'000);
    EXPECT_EQ(second.bytes * 1000 + second.durationUs, 184'044u);
}

// A run in which everything takes 10 us. A text that begins with '>' or '<' is a call out or in,
// one with '*' a line of another thread, one with '!' an error.
struct Made {
    explicit Made(const Words& texts) {
        for (const std::string& text : texts) {
            now += 10;
            const std::string rest = text.substr(1);
            if (text[0] == '>' || text[0] == '<') {
                Call& call = calls.emplace_back();
                call.startUs = now;
                call.durationUs = text[0] == '<' ? 50 : 1;
                call.incoming = text[0] == '<';
                call.method = rest;
            } else {
                Line& line = log.emplace_back();
                line.timeUs = now;
                line.tid = text[0] == '*' ? 31 : 24;
                line.priority = text[0] == '!' ? 'E' : 'I';
                line.message = text[0] == '*' || text[0] == '!' ? rest : text;
            }
        }
        facts = FindFacts(log);
    }
    // "NAME", "NAME: DETAIL", with "!" for one that failed, "?" timed out, "#" cut short.
    Words Texts(bool cutShort = false) const {
        Words texts;
        for (const Phase& phase : FindPhases(log, calls, facts, now + 10, cutShort)) {
            const std::string end(1, " !?#"[static_cast<int>(phase.end)]);
            texts.push_back((end == " " ? "" : end) + phase.name +
                            (phase.detail.empty() ? "" : ": " + phase.detail));
        }
        return texts;
    }

    int64_t now = 0;
    std::vector<Line> log;
    std::vector<Call> calls;
    Facts facts;
};

const Words kRun = {
        "main: offline camera client connect to service ",
        "main: offline camera client opMode 0",
        "OpenOfflineSession",
        "stream size:2, sizeof(Stream):120",
        ">allocate",
        ">allocate",
        "output streamId 1, bufferStride 64, bufferScanline 9, buffer 0x1 width 40, height 30 "
        "bufferSize  1234567",
        "WaitForShutter frame 1 time 5000",
        "*notify: callback notify",
        "WaitForShutter frame 1 received 0",
        "WaitForResult result timeout_ms 5000",
        "<requestStreamBuffers",
        ">allocate",
        "WaitForResult received is 1",
        "WaitCaptureResultCompleted status is 0",
        "CloseOfflineSession"};

TEST_F(RunLog, TellsTheStepsOfARun) {
    const Made run(kRun);
    EXPECT_THAT(run.Texts(),
                ElementsAre("device", "start-up", "open", "configure: 2 streams", "allocate",
                            "allocate: output stream 1: 40 × 30, 1,234,567 bytes",
                            "?shutter: waits 5000 ms at most", "result: waits 5000 ms at most",
                            "close"));
    int64_t end = 0;
    for (const Phase& phase : FindPhases(run.log, run.calls, run.facts, run.now + 10, false)) {
        EXPECT_EQ(phase.startUs, end);
        EXPECT_EQ(phase.waits, phase.name == "shutter" || phase.name == "result");
        end = phase.endUs;
    }
    EXPECT_EQ(end, run.now + 10);
    // A clock that jumps leaves every step within the run.
    EXPECT_EQ(FindPhases(run.log, {}, run.facts, 25, false).back().endUs, 25);
    EXPECT_THAT(FindPhases({}, run.calls, {}, 25, false), IsEmpty());

    EXPECT_THAT(
            Made({"main: offline camera client opMode 0", "stream size:2", "!FAILED"}).Texts(true),
            ElementsAre("device", "!open: no session was opened", "#configure: 2 streams"));
    // A shutter that came before the wait has no line of its own.
    EXPECT_THAT(
            Made({"WaitForShutter frame 1 time 50", "WaitForResult result timeout_ms 50"}).Texts(),
            ElementsAre("device", "shutter: waits 50 ms at most", "result: waits 50 ms at most"));
    EXPECT_EQ(DifferentErrors(Made({"!a", "!b", "!a"}).log)[0].count, 2u);
}

}  // namespace
}  // namespace runlog
