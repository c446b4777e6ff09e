// Logs as they are, cut short and damaged.

#include "host/tools/runreport/log_reader.h"

#include <gmock/gmock.h>
#include <time.h>

#include "tests/host/tools/offlineframes/test_support.h"

namespace runreport {
namespace {

using offlineframes::Bytes;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// 2026-11-21 23:59:59.5 local time.
int64_t lateStart() {
    tm local = {};
    strptime("2026-11-21 23:59:59", "%F %T", &local);
    local.tm_isdst = -1;
    return mktime(&local) * int64_t{1'000'000} + 500'000;
}

LogFile readText(const std::string& text) {
    const offlineframes::TestFolder folder;
    return readLog(folder.file("log", Bytes(text.begin(), text.end())), false,
                   RunClock(lateStart()));
}

TEST(LogReader, ReadsLinesAcrossMidnight) {
    const LogFile log = readText(
            "11-21 23:59:59.400000    24    25 W Tag one: two: words\n"
            "11-22 00:00:01.000250 12345 12346 F T: \n");
    ASSERT_THAT(log.lines, SizeIs(2));
    EXPECT_EQ(log.problem, "");
    const LogLine& first = log.lines[0];
    EXPECT_EQ(first.timeUs, -100'000);
    EXPECT_EQ(first.pid, 24);
    EXPECT_EQ(first.tid, 25);
    EXPECT_EQ(first.priority, 'W');
    EXPECT_EQ(first.tag, "Tag one");
    EXPECT_EQ(first.message, "two: words");
    EXPECT_EQ(log.lines[1].timeUs, 1'500'250);
    EXPECT_EQ(log.lines[1].message, "");
}

TEST(LogReader, KeepsWhatIsNoLogLine) {
    std::string text =
            "11-22 00:00:00.000000 1 1 I T: m\n"
            "terminating: no log line\n"
            "\n"
            "11-22 00:00:01.000000 1 1 Q T: no such priority\n"
            "11-22 00:00:01.000000 99999999999 1 I T: m\n"
            "11-22 00:00:02";
    text += std::string("\n\0\xff", 3);
    const LogFile log = readText(text);
    ASSERT_THAT(log.lines, SizeIs(7));
    for (size_t i = 1; i < log.lines.size(); ++i) {
        EXPECT_EQ(log.lines[i].priority, ' ') << i;
        EXPECT_EQ(log.lines[i].timeUs, 500'000) << i;
    }
    EXPECT_EQ(log.lines[5].message, "11-22 00:00:02");
}

TEST(LogReader, CutsALineThatIsTooLong) {
    const std::string start = "11-22 00:00:00.000000 1 1 I T: ";
    const LogFile log = readText(start + std::string(300'000, 'x') + "\nnext");
    ASSERT_THAT(log.lines, SizeIs(2));
    EXPECT_THAT(log.lines[0].message,
                EndsWith("x [" + std::to_string(start.size() + 300'000 - 4096) + " bytes more]"));
    EXPECT_EQ(log.lines[1].message, "next");
}

TEST(LogReader, MergesInOrderOfTime) {
    const auto line = [](int64_t time, const char* message) {
        LogLine made;
        made.timeUs = time;
        made.message = message;
        return made;
    };
    const auto merged = mergeLogs({line(1, "a"), line(5, "b")}, {line(1, "c"), line(2, "d")});
    std::vector<std::string> messages;
    for (const LogLine& one : merged) messages.push_back(one.message);
    EXPECT_THAT(messages, ElementsAre("a", "c", "d", "b"));
    EXPECT_THAT(mergeLogs({}, {}), IsEmpty());
}

}  // namespace
}  // namespace runreport
