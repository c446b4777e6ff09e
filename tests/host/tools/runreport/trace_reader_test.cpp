// Binder traces, whole and damaged.

#include "host/tools/runreport/trace_reader.h"

#include <gmock/gmock.h>

#include "tests/host/tools/offlineframes/test_support.h"

namespace runreport {
namespace {

using ::testing::HasSubstr;
using ::testing::SizeIs;

TEST(TraceReader, OrdersCallsByTheirStartAndLeavesOutDamagedLines) {
    const std::string text =
            "00:00:02.000000 24 <- 7/offlinecamerase a.b.ICallback.notify oneway 184 bytes 1 fds "
            "44 us DEAD_OBJECT\n"
            "00:00:01.000000 24 -> 2/servicemanager ?.(descriptor) 0 bytes 0 fds 58 us OK\n"
            "00:00:03.000000 24 -> 2/servicemanager a.b.C.d 10 bytes 0 fds 5\n"
            "\n"
            "00:00:03.000000 24 -> 2/servic";
    const offlineframes::TestFolder folder;
    const TraceFile trace =
            readTrace(folder.file("trace", {text.begin(), text.end()}), RunClock(0));
    ASSERT_THAT(trace.calls, SizeIs(2));
    EXPECT_THAT(trace.problem, HasSubstr("3 lines are no transactions"));
    EXPECT_EQ(trace.calls[0].method, "(descriptor)");
    EXPECT_FALSE(trace.calls[0].incoming);
    EXPECT_EQ(trace.calls[0].status, "OK");
    const Call& second = trace.calls[1];
    EXPECT_EQ(second.startUs - trace.calls[0].startUs, 1'000'000);
    EXPECT_TRUE(second.incoming && second.oneway);
    EXPECT_EQ(second.pid, 24);
    EXPECT_EQ(second.peer, "7/offlinecamerase");
    EXPECT_EQ(second.interface, "a.b.ICallback");
    EXPECT_EQ(second.method, "notify");
    EXPECT_EQ(second.bytes, 184u);
    EXPECT_EQ(second.descriptors, 1u);
    EXPECT_EQ(second.durationUs, 44);
    EXPECT_EQ(second.status, "DEAD_OBJECT");
}

}  // namespace
}  // namespace runreport
