// Calls between processes: values, descriptors, failures, callbacks, threads, order, the trace.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <future>
#include <numeric>

#include "host/libbinder_ndk/wire_format.h"
#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/plain_class.h"
#include "tests/host/libbinder_ndk/test_bus.h"

namespace {

// What a call with these bytes and this many descriptors, each of its own file, returns.
binder_status_t Echo(const Peer& peer, const std::vector<uint8_t>& bytes, size_t count) {
    std::vector<ndk::ScopedFileDescriptor> fds;
    for (size_t i = 0; i < count; ++i) {
        fds.emplace_back(memfd_create("test", MFD_CLOEXEC));
        EXPECT_EQ(pwrite(fds.back().get(), &i, sizeof(i), 0), ssize_t{sizeof(i)});
    }
    std::vector<uint8_t> bytesBack;
    std::vector<ndk::ScopedFileDescriptor> fdsBack;
    const auto status =
            CallPeer(peer.binder, kEcho, Writes(bytes, fds), Reads(&bytesBack, &fdsBack));
    if (status != STATUS_OK) return status;
    EXPECT_TRUE(bytesBack == bytes);
    EXPECT_EQ(fdsBack.size(), count);
    for (size_t i = 0; i < fdsBack.size(); ++i) {
        size_t number = count;
        EXPECT_EQ(pread(fdsBack[i].get(), &number, sizeof(number), 0), ssize_t{sizeof(number)});
        EXPECT_EQ(number, i);
        EXPECT_NE(fcntl(fdsBack[i].get(), F_GETFD) & FD_CLOEXEC, 0);
    }
    return STATUS_OK;
}

TEST(RemoteCall, PassesBytesAndDescriptorsBothWaysUpToALimit) {
    Peer peer = StartPeer();
    std::vector<uint8_t> bytes(hostbinder::kMaxParcelBytes - 256);
    std::iota(bytes.begin(), bytes.end(), uint8_t{0});
    EXPECT_EQ(Echo(peer, bytes, 2), STATUS_OK);
    EXPECT_EQ(Echo(peer, {}, hostbinder::kMaxDescriptors), STATUS_OK);
    EXPECT_EQ(Echo(peer, {}, hostbinder::kMaxDescriptors + 1), STATUS_FAILED_TRANSACTION);
    bytes.resize(hostbinder::kMaxParcelBytes);
    EXPECT_EQ(Echo(peer, bytes, 0), STATUS_FAILED_TRANSACTION);
    const int before = LivePeerObjects();
    EXPECT_EQ(CallPeer(peer.binder, kHold, Writes(NewPeerObject(), bytes)),
              STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(LivePeerObjects(), before) << "an object of a refused message is not kept";
    EXPECT_EQ(Add(peer.binder, 1), 2) << "the connection survives what is refused";
}

// A peer that kept a request until after its reply would often still have the descriptor.
TEST(RemoteCall, LeavesNothingOfItsRequestInTheCalleeWhenItReturns) {
    Peer peer = StartPeer();
    for (int i = 0; i < 300; ++i) {
        Pipe pipe;
        const auto write = [&](AParcel* in) {  // the descriptor is not read
            return Writes(1, std::exchange(pipe.writing, {}))(in);
        };
        ASSERT_EQ(AskPeer(peer.binder, kAdd, write), 2);
        pollfd end{pipe.reading.get(), POLLIN, 0};
        ASSERT_EQ(poll(&end, 1, 0), 1);
        ASSERT_EQ(end.revents, POLLHUP) << "call " << i;
    }
}

TEST(RemoteCall, NeedsTheRightClassAndReturnsTheTransportStatusOfTheMethod) {
    Peer peer = StartPeer();
    EXPECT_FALSE(AIBinder_associateClass(peer.binder.get(), NewPlainClass("test.IOther")));
    EXPECT_EQ(AIBinder_getClass(peer.binder.get()), nullptr);
    EXPECT_EQ(CallPeer(peer.binder, kFail, Writes(int32_t{STATUS_BAD_INDEX})), STATUS_BAD_INDEX);
    EXPECT_EQ(CallPeer(peer.binder, kFail, Writes(12345)), STATUS_UNKNOWN_ERROR);
    EXPECT_EQ(CallPeer(peer.binder, kPeerRequestEnd), STATUS_UNKNOWN_TRANSACTION);
}

TEST(Callback, RunsOnTheWaitingThread) {
    Peer peer = StartPeer({{"PEER_THREADS", "0"}});
    EXPECT_EQ(AskPeer(peer.binder, kCall, Writes(NewPeerObject(), 7)), 8);
    EXPECT_EQ(AddsOnThisThread(), 1);
    EXPECT_FALSE(AIBinder_isHandlingTransaction()) << "any more";
}

TEST(ThreadPool, RunsCallsInParallelOnAtMostTheConfiguredThreads) {
    // One thread at the start, one on demand, and the peer's main thread joins.
    Peer peer = StartPeer({{"PEER_THREADS", "1"}});
    Pipe entered, go;
    std::vector<std::future<binder_status_t>> calls;
    for (int i = 0; i < 5; ++i) {
        calls.push_back(std::async(std::launch::async, [&]() {
            return CallPeer(peer.binder, kBlock, Writes(entered.writing, go.reading));
        }));
    }
    char bytes[5] = {};
    for (int i = 0; i < 3; ++i) ASSERT_EQ(read(entered.reading.get(), bytes, 1), 1);
    pollfd further{entered.reading.get(), POLLIN, 0};
    EXPECT_EQ(poll(&further, 1, 100), 0) << "a chance for calls that should not run yet to show";
    ASSERT_EQ(write(go.writing.get(), bytes, 5), 5);
    for (auto& call : calls) EXPECT_EQ(call.get(), STATUS_OK);
}

TEST(Oneway, CallsToOneObjectRunOneAfterTheOther) {
    Peer peer = StartPeer();
    Pipe entered, go;
    const auto send = [&](transaction_code_t code, auto write) {
        EXPECT_EQ(CallPeer(peer.binder, code, write, nullptr, FLAG_ONEWAY), STATUS_OK);
    };
    send(kBlock, Writes(entered.writing, go.reading));
    for (int value : {1, 2}) send(kCount, Writes(value));
    for (int i = 0; i < 20; ++i) EXPECT_EQ(AskPeer(peer.binder, kCount, Writes(0)), 0);
    EXPECT_EQ(write(go.writing.get(), "1", 1), 1);
    EXPECT_TRUE(Eventually([&]() { return AskPeer(peer.binder, kCount, Writes(0)) == 2; }));
}

TEST(Trace, TellsWhenACallBeginsAndHowItEnds) {
    const int trace = memfd_create("trace", 0);
    {
        Peer peer = StartPeer({{"STANDIN_BINDER_TRACE_FD", std::to_string(trace)}});
        EXPECT_EQ(AskPeer(peer.binder, kCall, Writes(NewPeerObject(), 7)), 8)
                << "a reply is read as if there were no trace";
        ASSERT_EQ(Add(peer.binder, -4), -3) << "no status, though it looks like one";
        CallPeer(peer.binder, kFail, Writes(int32_t{STATUS_BAD_INDEX}));
        const std::string full(300 - sizeof("two lines"), 'x');
        CallPeer(peer.binder, kRefuse, Writes("two\nlines" + full + "\xc3\xa9"));
    }
    std::string text(10000, '\0');
    text.resize(static_cast<size_t>(pread(trace, &text[0], text.size(), 0)));
    close(trace);
    const std::string time = "[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6} [0-9]+ [0-9]+ ";
    // Interface header: 12 bytes of words, 4 + 2 * 11 of String, padded; then the argument.
    const std::string in = time + "<- " + std::to_string(getpid()) + "/[^ ]+ test.IPeer.";
    for (const std::string& line :
         {time + "-> [0-9]+/servicemanager host.os.IServiceManager.addService [0-9]+ bytes 0 fds ",
          time + "-> [0-9]+/[^ ]+ test.IPeer.add 44 bytes 0 fds ", in + "add 44 bytes 0 fds "}) {
        EXPECT_THAT(text, testing::ContainsRegex(line + "begins\n"));
        EXPECT_THAT(text, testing::ContainsRegex(line + "[0-9]+ us OK\n"));
    }
    EXPECT_THAT(text, testing::ContainsRegex(in + std::to_string(kFail) +
                                             " 44 bytes 0 fds [0-9]+ us BAD_INDEX\n"));
    const std::string answered =
            "us OK, answered EX_SERVICE_SPECIFIC " + std::to_string(getpid()) + ": two linesx+\n";
    EXPECT_THAT(text, testing::ContainsRegex(answered)) << "cut before a character";
}

}  // namespace
