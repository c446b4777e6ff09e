// Calls between processes: values, descriptors, failures, callbacks, threads and order.
#include <android/binder_manager.h>
#include <fcntl.h>
#include <gtest/gtest.h>
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

struct Pipe {
    Pipe() {
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        reading.set(ends[0]);
        writing.set(ends[1]);
    }
    ndk::ScopedFileDescriptor reading;
    ndk::ScopedFileDescriptor writing;
};

TEST(RemoteCall, TellsTheCalleeWhoCalls) {
    Peer peer = startPeer();
    EXPECT_EQ(AIBinder_ping(peer.binder.get()), STATUS_OK);
    int32_t pid = 0;
    int32_t uid = 0;
    ASSERT_EQ(callPeer(peer.binder, kCaller, nullptr, reads(&pid, &uid)), STATUS_OK);
    EXPECT_EQ(pid, getpid());
    EXPECT_EQ(uid, static_cast<int32_t>(getuid()));
}

TEST(RemoteCall, PassesDescriptorsBothWays) {
    Peer peer = startPeer();
    std::vector<ndk::ScopedFileDescriptor> fds;
    for (const char* text : {"one", "two"}) {
        fds.emplace_back(memfd_create("test", MFD_CLOEXEC));
        EXPECT_EQ(write(fds.back().get(), text, 3), 3);
    }
    std::vector<ndk::ScopedFileDescriptor> back;
    ASSERT_EQ(callPeer(peer.binder, kEchoFds, writes(fds), reads(&back)), STATUS_OK);
    ASSERT_EQ(back.size(), 2u);
    char text[4] = {};
    EXPECT_EQ(pread(back[1].get(), text, 3, 0), 3);
    EXPECT_STREQ(text, "two");
    EXPECT_TRUE((fcntl(back[0].get(), F_GETFD) & FD_CLOEXEC) != 0);
}

// A peer that kept a request until after its reply would often still have the descriptor.
TEST(RemoteCall, LeavesNothingOfItsRequestInTheCalleeWhenItReturns) {
    Peer peer = startPeer();
    for (int i = 0; i < 300; ++i) {
        Pipe pipe;
        const auto write = [&](AParcel* in) {  // the descriptor is not read
            return writes(1, std::exchange(pipe.writing, {}))(in);
        };
        ASSERT_EQ(askPeer(peer.binder, kAdd, write), 2);
        pollfd end{pipe.reading.get(), POLLIN, 0};
        ASSERT_EQ(poll(&end, 1, 0), 1);
        ASSERT_EQ(end.revents, POLLHUP) << "call " << i;
    }
}

TEST(RemoteCall, LimitsDescriptorsAndSize) {
    Peer peer = startPeer();
    ndk::ScopedFileDescriptor file(memfd_create("test", MFD_CLOEXEC));
    std::vector<ndk::ScopedFileDescriptor> fds;
    for (uint32_t i = 0; i < hostbinder::kMaxDescriptors; ++i) fds.push_back(file.dup());
    std::vector<ndk::ScopedFileDescriptor> back;
    EXPECT_EQ(callPeer(peer.binder, kEchoFds, writes(fds), reads(&back)), STATUS_OK);
    EXPECT_EQ(back.size(), fds.size());
    fds.push_back(file.dup());
    EXPECT_EQ(callPeer(peer.binder, kEchoFds, writes(fds)), STATUS_FAILED_TRANSACTION);
    const int before = livePeerObjects();
    EXPECT_EQ(callPeer(peer.binder, kHold, writes(newPeerObject(), fds)),
              STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(livePeerObjects(), before) << "an object of a refused message is not kept";

    std::vector<uint8_t> bytes(hostbinder::kMaxParcelBytes - 256);
    std::iota(bytes.begin(), bytes.end(), uint8_t{0});
    std::vector<uint8_t> echoed;
    EXPECT_EQ(callPeer(peer.binder, kEchoBytes, writes(bytes), reads(&echoed)), STATUS_OK);
    EXPECT_TRUE(echoed == bytes);
    bytes.resize(hostbinder::kMaxParcelBytes);
    EXPECT_EQ(callPeer(peer.binder, kEchoBytes, writes(bytes)), STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(add(peer.binder, 1), 2) << "the connection survives what is refused";
}

TEST(RemoteCall, ReturnsTheTransportStatusOfTheMethod) {
    Peer peer = startPeer();
    EXPECT_EQ(callPeer(peer.binder, kFail, writes(int32_t{STATUS_BAD_INDEX})), STATUS_BAD_INDEX);
    EXPECT_EQ(callPeer(peer.binder, kFail, writes(12345)), STATUS_UNKNOWN_ERROR);
    EXPECT_EQ(callPeer(peer.binder, kPeerRequestEnd), STATUS_UNKNOWN_TRANSACTION);
}

TEST(RemoteCall, RefusesAClassWithAnotherDescriptor) {
    Peer peer = startPeer();
    EXPECT_FALSE(AIBinder_associateClass(peer.binder.get(), newPlainClass("test.IOther")));
    EXPECT_EQ(AIBinder_getClass(peer.binder.get()), nullptr);
    EXPECT_TRUE(AIBinder_associateClass(peer.binder.get(), peerClass()));
    EXPECT_EQ(AIBinder_getClass(peer.binder.get()), peerClass());
}

TEST(Callback, RunsOnTheWaitingThread) {
    Peer peer = startPeer({"--max", "0"});
    EXPECT_EQ(callThrough(peer.binder, newPeerObject(), 7), 8);
    EXPECT_EQ(lastAddThread(), std::this_thread::get_id());
}

TEST(ExitHandler, CanStillCall) {
    Peer peer = startPeer();
    const std::string name = newServiceName();
    ASSERT_EQ(AServiceManager_addService(peer.binder.get(), name.c_str()), EX_NONE);
    Child caller(peerCommand(newServiceName(), {"--call-at-exit", name}));
    EXPECT_EQ(caller.wait(), 0);
    EXPECT_EQ(recordsOf(peer.binder), std::vector<int32_t>{42});
}

TEST(ThreadPool, RunsCallsInParallelOnAtMostTheConfiguredThreads) {
    // One thread at the start, one on demand, and the peer's main thread joins.
    Peer peer = startPeer({"--max", "1"});
    Pipe entered;
    Pipe go;
    std::vector<std::future<binder_status_t>> calls;
    for (int i = 0; i < 5; ++i) {
        calls.push_back(std::async(std::launch::async, [&]() {
            return callPeer(peer.binder, kBlock, writes(entered.writing, go.reading));
        }));
    }
    char bytes[5] = {};
    for (int i = 0; i < 3; ++i) ASSERT_EQ(read(entered.reading.get(), bytes, 1), 1);
    pollfd further{entered.reading.get(), POLLIN, 0};
    EXPECT_EQ(poll(&further, 1, 100), 0) << "a chance for calls that should not run yet to show";
    ASSERT_EQ(write(go.writing.get(), bytes, 5), 5);
    for (auto& call : calls) EXPECT_EQ(call.get(), STATUS_OK);
}

TEST(ThreadPool, QueuesCallsUntilItIsStarted) {
    Peer peer = startPeer({"--late-pool"});
    auto answer = std::async(std::launch::async, [&]() { return add(peer.binder, 1); });
    EXPECT_EQ(answer.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    peer.process.nudge();
    EXPECT_EQ(answer.get(), 2);
}

TEST(Oneway, CallsToOneObjectRunInOrder) {
    Peer peer = startPeer();
    std::vector<int32_t> expected(200);
    std::iota(expected.begin(), expected.end(), 0);
    for (int32_t value : expected) {
        ASSERT_EQ(callPeer(peer.binder, kRecord, writes(value), nullptr, FLAG_ONEWAY), STATUS_OK);
    }
    EXPECT_TRUE(eventually([&]() { return recordsOf(peer.binder).size() == expected.size(); }));
    EXPECT_EQ(recordsOf(peer.binder), expected);
}

TEST(Callers, OnManyThreadsGetTheirOwnAnswers) {
    Peer peer = startPeer();
    std::vector<std::future<bool>> callers;
    for (int32_t caller = 0; caller < 8; ++caller) {
        callers.push_back(std::async(std::launch::async, [&peer, caller]() {
            for (int32_t value = caller * 1000; value < caller * 1000 + 300; ++value) {
                if (add(peer.binder, value) != value + 1) return false;
                if (getBinder(peer.binder, kNewObject).get() == nullptr) return false;
            }
            return true;
        }));
    }
    for (auto& caller : callers) EXPECT_TRUE(caller.get());
    EXPECT_TRUE(eventually([&]() { return askPeer(peer.binder, kLiveObjects) == 1; }));
}

}  // namespace
