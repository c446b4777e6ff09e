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
    ASSERT_THAT(log.lines, SizeIs(2 * kKeptAtEachEnd + 2));
    EXPECT_EQ(log.omitted, 70'000 - log.lines.size());
    EXPECT_EQ(log.lines[kKeptAtEachEnd - 1].message, "4999");
    EXPECT_EQ(log.lines[kKeptAtEachEnd].message, "30001");
    EXPECT_EQ(log.lines[kKeptAtEachEnd + 2].message, "65000");
}

std::string TextOf(const Call& call) {
    return std::to_string(call.pid) + " " + std::to_string(call.tid) +
           (call.incoming ? " from " : " to ") + call.peer + (call.oneway ? " oneway " : " ") +
           call.interface + " " + call.method + " " + std::to_string(call.bytes) + " " +
           std::to_string(call.descriptors) + " " + std::to_string(call.durationUs) + " <" +
           call.status + "> <" + call.answer + ">";
}

TEST_F(RunLog, JoinsBothLinesOfACallAndOrdersCallsByTheirStart) {
    const std::string in =
            "00:00:02.000000 24 25 <- 7/peer a.b.ICallback.notify oneway 184 bytes "
            "1 fds ";
    const std::string out = "00:00:01.000000 24 24 -> 2/manager ?.(descriptor) 0 bytes 0 fds ";
    const std::string hung = "00:00:03.000000 24 24 -> 7/peer a.b.C.d 10 bytes 0 fds begins\n";
    const Trace trace =
            ReadTrace(File(in + "begins\n" + out + "begins\n" + hung + in + "44 us DEAD\n" + out +
                           "58 us OK, answered EX_ILLEGAL_STATE: no\n" + in +
                           "5\n\n00:00:03.000000 24"))
                    .Value();
    EXPECT_EQ(trace.unreadable, 3u);
    Words calls;
    for (const Call& call : trace.calls) calls.push_back(TextOf(call));
    EXPECT_THAT(calls, ElementsAre("24 24 to 2/manager ? (descriptor) 0 0 58 <OK> "
                                   "<EX_ILLEGAL_STATE: no>",
                                   "24 25 from 7/peer oneway a.b.ICallback notify 184 1 44 <DEAD> "
                                   "<>",
                                   "24 24 to 7/peer a.b.C d 10 0 0 <> <>"));
    EXPECT_EQ(trace.calls[1].startUs - trace.calls[0].startUs, 1'000'000);
}

// A run in which everything takes 10 us. A text that begins with '>' is a call of the main thread,
// which takes as long as 3 other things where it ends in "...", and one that ends in "?" no end;
// with '*' it is a line of another thread, with '!' an error.
struct Made {
    explicit Made(const Words& texts) {
        for (const std::string& text : texts) {
            now += 10;
            const std::string rest = text.substr(1);
            if (text[0] == '>') {
                const size_t end = rest.find_first_of(".?");
                Call& call = calls.emplace_back();
                call.startUs = now;
                call.durationUs = rest.find('.') == std::string::npos ? 1 : 35;
                call.tid = 24;
                call.method = rest.substr(0, end);
                call.status = rest.find('?') == std::string::npos ? "OK" : "";
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

const Words kRun = {"main: offline camera client connect to service ",
                    "main: offline camera client opMode 0",
                    ">openOfflineSession...",  // while it serves a call, which lends a buffer
                    ">allocate",
                    "buffer allocationsize: 1",
                    "streamId 1",
                    "OpenOfflineSession",
                    "stream size:2, sizeof(Stream):120",
                    ">allocate",
                    ">allocate",
                    "output streamId 1, bufferStride 64",
                    "WaitForShutter frame 1 time 5000",
                    "*notify: callback notify",
                    "WaitForShutter frame 1 received 0",
                    "WaitForResult result timeout_ms 5000",
                    "*buffer allocationsize: 1",
                    "WaitForResult received is 1",
                    "WaitCaptureResultCompleted status is 0",
                    "CloseOfflineSession"};

TEST_F(RunLog, TellsTheStepsOfARun) {
    const Made run(kRun);
    EXPECT_THAT(run.Texts(), ElementsAre("device", "start-up", "open",
                                         "configure: stream size:2, sizeof(Stream):120", "allocate",
                                         "allocate: output streamId 1, bufferStride 64",
                                         "?shutter: WaitForShutter frame 1 time 5000",
                                         "result: WaitForResult result timeout_ms 5000", "close"));
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

    EXPECT_THAT(Made({"main: offline camera client opMode 0", "stream size:2", "!FAILED"}).Texts(),
                ElementsAre("device", "!open", "!configure: stream size:2"));
    // What is told during a call that never ends is told of it.
    EXPECT_THAT(Made({"ProcessOfflineRequest", ">processOfflineRequest?", ">allocate"}).Texts(true),
                ElementsAre("device", "fill", "#submit"));
    // A shutter that came before the wait has no line of its own.
    EXPECT_THAT(Made({"WaitForShutter frame", "WaitForShutter frame 1 time 50",
                      "WaitForResult result timeout_ms 50"})
                        .Texts(),
                ElementsAre("device", "shutter: WaitForShutter frame",
                            "result: WaitForResult result timeout_ms 50"));
    EXPECT_EQ(DifferentErrors(Made({"!a", "!b", "!a"}).log)[0].count, 2u);
}

TEST_F(RunLog, FindsWhatARunSaysOfItself) {
    const Facts facts =
            Made({"input streamId 0, bufferStride 0, bufferScanline 0 buffer (nil) width 8",
                  "LoadOffineSourceRawFrame: open input file /a",
                  "LoadOffineSourceRawFrame: f_wxf_h 0x0, stridexscanline 0x0, f_off 0,",
                  "input streamId 0, bufferStride 64, bufferScanline 0 buffer 0x1 width 8",
                  "LoadOffineSourceYUVFrame: open input file /b",
                  "LoadOffineSourceYUVFrame: f_wxf_h 64x0, stridexscanline 64x0, f_uv_off 0,",
                  "WaitCaptureResultCompleted result frameNum is 7",
                  "WaitForResult result timeout_ms 5000",
                  "ContainsTheSameBuffers result streamId  1 bufferId  9",
                  "ContainsTheSameBuffers request streamId  1 bufferId  2",
                  "*ProcessOfflineResult: outframeinfo numPartialMetadata 1 frame numbrer 8 buffer "
                  "size 1 ",
                  "WaitForResult wait_for condtion trigger",
                  "ContainsTheSameBuffers result streamId  1 bufferId  2",
                  "ContainsTheSameBuffers request streamId  1 bufferId  2",
                  "ContainsTheSameBuffers request streamId  3 bufferId  4",
                  "WaitForResult received is 1",
                  "blob structure info Id 255, JPEGBlobSize -5, bufSize 24, imageSize 48, kMin 9",
                  "imageSize 48 bufferSize  24", "imageSize 0 bufferSize  32"})
                    .facts;
    ASSERT_THAT(facts.sources, SizeIs(2));
    EXPECT_FALSE(facts.sources[0].leftUnread);  // there was no buffer to fill
    EXPECT_TRUE(facts.sources[1].leftUnread);
    ASSERT_THAT(facts.waits, SizeIs(1));
    EXPECT_EQ(facts.waits[0].frame, 7);
    ASSERT_THAT(facts.results, SizeIs(1));
    EXPECT_EQ(facts.results[0].frame, 8);
    EXPECT_THAT(facts.resultBuffers, ElementsAre("2 of stream 1"));
    EXPECT_THAT(facts.requestBuffers, ElementsAre("2 of stream 1", "4 of stream 3"));
    ASSERT_THAT(facts.dumps, SizeIs(2));
    EXPECT_EQ(facts.dumps[0].bytes, 48u);
    EXPECT_EQ(facts.dumps[0].trailerBytes, -5);
    EXPECT_EQ(facts.dumps[1].bytes, 32u);
    EXPECT_FALSE(facts.dumps[1].trailerBytes);
}

}  // namespace
}  // namespace runlog
