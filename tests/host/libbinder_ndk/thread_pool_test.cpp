// Which threads serve calls, and in which order.
#include <android/binder_process.h>
#include <gtest/gtest.h>

#include <future>
#include <numeric>

#include "tests/host/libbinder_ndk/blocked_calls.h"
#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/test_bus.h"
#include "tests/support/no_threads.h"

namespace {

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

TEST(ThreadPool, QueuesCallsUntilItIsStarted) {
    Peer peer = startPeer({"--late-pool"});
    // The peer says whether the pool ran when it served the call; its class is asked for first.
    auto started =
            std::async(std::launch::async, [&]() { return askPeer(peer.binder, kPoolStarted); });
    EXPECT_EQ(started.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    peer.process.nudge();
    EXPECT_EQ(started.get(), 1);
}

TEST(ThreadPool, StartsLaterWhatTheSystemRefusesAtFirst) {
    if (ABinderProcess_isThreadPoolStarted()) GTEST_SKIP() << "an earlier test started the pool";
    Peer peer = startPeer();
    const ndk::SpAIBinder own = newPeerObject();
    {
        const NoThreads none;
        ABinderProcess_startThreadPool();
    }
    // A oneway call begins no chain: the call back waits for a thread of this process's pool.
    const auto write = [&](AParcel* in) {
        AParcel_writeStrongBinder(in, own.get());
        return ndk::AParcel_writeData(in, 5);
    };
    ASSERT_EQ(callPeer(peer.binder, kCall, write, nullptr, FLAG_ONEWAY), STATUS_OK);
    EXPECT_TRUE(eventually([]() { return lastAddThread() != std::thread::id(); }));
}

}  // namespace
