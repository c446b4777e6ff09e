// Which threads serve calls, and in which order.
#include <android/binder_process.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <future>
#include <numeric>

#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/test_bus.h"

namespace {

// Calls that stay in the peer until they are let go.
class BlockedCalls {
  public:
    explicit BlockedCalls(const ndk::SpAIBinder& peer) : mPeer(peer) {
        EXPECT_EQ(pipe2(mEntered, O_CLOEXEC), 0);
        EXPECT_EQ(pipe2(mGo, O_CLOEXEC), 0);
    }
    ~BlockedCalls() {
        for (int* ends : {mEntered, mGo}) {
            close(ends[0]);
            close(ends[1]);
        }
    }
    binder_status_t call(binder_flags_t flags) {
        return callPeer(
                mPeer, kBlock,
                [this](AParcel* in) {
                    AParcel_writeParcelFileDescriptor(in, mEntered[1]);
                    return AParcel_writeParcelFileDescriptor(in, mGo[0]);
                },
                nullptr, flags);
    }
    void start() {
        mCalls.push_back(std::async(std::launch::async, [this]() { return call(0); }));
    }
    void awaitEntered(int count) {
        char byte;
        for (int i = 0; i < count; ++i) ASSERT_EQ(read(mEntered[0], &byte, 1), 1);
    }
    // Gives calls that should not run a chance to show.
    void expectNoMoreEntered() {
        pollfd entered{mEntered[0], POLLIN, 0};
        EXPECT_EQ(poll(&entered, 1, 100), 0);
    }
    void letGo() { ASSERT_EQ(write(mGo[1], "x", 1), 1); }
    void expectAllDone() {
        for (auto& call : mCalls) EXPECT_EQ(call.get(), STATUS_OK);
    }

  private:
    const ndk::SpAIBinder mPeer;
    int mEntered[2] = {-1, -1};
    int mGo[2] = {-1, -1};
    std::vector<std::future<binder_status_t>> mCalls;
};

TEST(ThreadPool, RunsCallsOfOneProxyInParallel) {
    Peer peer = startPeer();
    BlockedCalls calls(peer.binder);
    for (int i = 0; i < 4; ++i) calls.start();
    calls.awaitEntered(4);  // would never come if one waited for another
    EXPECT_EQ(add(peer.binder, 1), 2);
    for (int i = 0; i < 4; ++i) calls.letGo();
    calls.expectAllDone();
}

TEST(ThreadPool, HasAtMostTheConfiguredThreads) {
    // One thread at the start, one on demand, and the peer's main thread joins.
    Peer peer = startPeer({"--max", "1"});
    BlockedCalls calls(peer.binder);
    for (int i = 0; i < 6; ++i) calls.start();
    calls.awaitEntered(3);
    calls.expectNoMoreEntered();
    for (int i = 0; i < 6; ++i) calls.letGo();
    calls.expectAllDone();
    EXPECT_EQ(askPeer(peer.binder, kMostBlocked), 3);
}

TEST(ThreadPool, QueuesCallsUntilItIsStarted) {
    Peer peer = startPeer({"--late-pool"});
    // The peer says whether the pool ran when it served the call; its class is asked for first.
    auto started =
            std::async(std::launch::async, [&]() { return askPeer(peer.binder, kPoolStarted); });
    EXPECT_EQ(started.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    peer.process.nudge();
    EXPECT_EQ(started.get(), 1);
}

TEST(Polling, ServesCallsOnTheThreadThatAsks) {
    if (ABinderProcess_isThreadPoolStarted()) GTEST_SKIP() << "an earlier test started the pool";
    Peer peer = startPeer();
    int calls = -1;
    ASSERT_EQ(ABinderProcess_setupPolling(&calls), STATUS_OK);
    ndk::SpAIBinder own = newPeerObject();
    // A oneway call begins no chain: the call back waits for a thread of this process.
    ASSERT_EQ(callPeer(
                      peer.binder, kCall,
                      [&](AParcel* in) {
                          AParcel_writeStrongBinder(in, own.get());
                          return ndk::AParcel_writeData(in, 5);
                      },
                      nullptr, FLAG_ONEWAY),
              STATUS_OK);
    pollfd waiting{calls, POLLIN, 0};
    for (const char* call : {"for the descriptor", "of the method"}) {
        ASSERT_EQ(poll(&waiting, 1, 20000), 1) << call;
        EXPECT_EQ(ABinderProcess_handlePolledCommands(), STATUS_OK);
    }
    EXPECT_EQ(lastAddThread(), std::this_thread::get_id());
    EXPECT_EQ(poll(&waiting, 1, 0), 0) << "nothing waits any more";
}

TEST(Oneway, CallsToOneObjectRunInOrder) {
    Peer peer = startPeer();
    std::vector<int32_t> expected(200);
    std::iota(expected.begin(), expected.end(), 0);
    for (int32_t value : expected) {
        ASSERT_EQ(callPeer(
                          peer.binder, kRecord,
                          [=](AParcel* in) { return ndk::AParcel_writeData(in, value); }, nullptr,
                          FLAG_ONEWAY),
                  STATUS_OK);
    }
    std::vector<int32_t> records;
    EXPECT_TRUE(eventually([&]() {
        callPeer(peer.binder, kRecords, nullptr,
                 [&](const AParcel* out) { return ndk::AParcel_readVector(out, &records); });
        return records.size() == expected.size();
    }));
    EXPECT_EQ(records, expected);
}

TEST(Oneway, DoesNotWaitForTheCallee) {
    Peer peer = startPeer();
    BlockedCalls calls(peer.binder);
    EXPECT_EQ(calls.call(FLAG_ONEWAY), STATUS_OK);
    calls.awaitEntered(1);
    calls.letGo();
}

TEST(Callers, OnManyThreadsGetTheirOwnAnswers) {
    Peer peer = startPeer();
    std::vector<std::future<bool>> callers;
    for (int32_t caller = 0; caller < 8; ++caller) {
        callers.push_back(std::async(std::launch::async, [&peer, caller]() {
            for (int32_t i = 0; i < 300; ++i) {
                const int32_t value = caller * 1000 + i;
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
