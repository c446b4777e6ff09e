// The trace of transactions.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/test_bus.h"

namespace {

TEST(Trace, HasOneLinePerTransactionWithNamesAndSizes) {
    const int trace = memfd_create("trace", 0);
    {
        Peer peer = startPeer({}, {{"STANDIN_BINDER_TRACE_FD", std::to_string(trace)}});
        ASSERT_EQ(add(peer.binder, 1), 2);
        callPeer(peer.binder, kFail, writes(int32_t{STATUS_BAD_INDEX}));
    }
    std::string text(10000, '\0');
    text.resize(static_cast<size_t>(pread(trace, &text[0], text.size(), 0)));
    close(trace);
    const std::string time = "[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6} [0-9]+ ";
    EXPECT_THAT(text,
                testing::ContainsRegex(time + "-> [0-9]+/servicemanager host.os.IServiceManager"
                                              ".addService [0-9]+ bytes 0 fds [0-9]+ us OK\n"));
    const std::string from = "<- " + std::to_string(getpid()) + "/[^ ]+ test.IPeer.";
    // Interface header: 12 bytes of words, 4 + 2 * 11 of String, padded; then the argument.
    EXPECT_THAT(text, testing::ContainsRegex(time + from + "add 44 bytes 0 fds [0-9]+ us OK\n"));
    EXPECT_THAT(text, testing::ContainsRegex(time + from + std::to_string(kFail) +
                                             " 44 bytes 0 fds [0-9]+ us BAD_INDEX\n"));
}

}  // namespace
