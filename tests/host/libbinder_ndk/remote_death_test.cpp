// What happens when another process ends.
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <atomic>

#include "tests/host/libbinder_ndk/blocked_calls.h"
#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/test_bus.h"

namespace {

struct DeathCounter {
    std::atomic<int> died{0};
    std::atomic<int> unlinked{0};
    ndk::ScopedAIBinder_DeathRecipient recipient{AIBinder_DeathRecipient_new(
            [](void* cookie) { ++static_cast<DeathCounter*>(cookie)->died; })};

    DeathCounter() {
        AIBinder_DeathRecipient_setOnUnlinked(recipient.get(), [](void* cookie) {
            ++static_cast<DeathCounter*>(cookie)->unlinked;
        });
    }
    binder_status_t link(const ndk::SpAIBinder& binder) {
        return AIBinder_linkToDeath(binder.get(), recipient.get(), this);
    }
    binder_status_t unlink(const ndk::SpAIBinder& binder) {
        return AIBinder_unlinkToDeath(binder.get(), recipient.get(), this);
    }
};

TEST(Death, EndsAPendingCall) {
    Peer peer = startPeer();
    BlockedCalls calls(peer.binder);
    calls.start();
    calls.awaitEntered(1);
    peer.process.signal(SIGKILL);
    calls.expectAllDone(STATUS_DEAD_OBJECT);
    EXPECT_FALSE(AIBinder_isAlive(peer.binder.get()));
}

TEST(Death, FailsLaterCallsAtOnce) {
    Peer peer = startPeer();
    peer.process.signal(SIGKILL);
    peer.process.wait();
    EXPECT_TRUE(eventually([&]() { return !AIBinder_isAlive(peer.binder.get()); }));
    EXPECT_EQ(AIBinder_ping(peer.binder.get()), STATUS_DEAD_OBJECT);
    EXPECT_EQ(callPeer(peer.binder, kAdd), STATUS_DEAD_OBJECT);
    DeathCounter counter;
    EXPECT_EQ(counter.link(peer.binder), STATUS_DEAD_OBJECT);
}

TEST(Death, IsToldOnceOnThePool) {
    ABinderProcess_startThreadPool();
    Peer peer = startPeer();
    DeathCounter counter;
    ASSERT_EQ(counter.link(peer.binder), STATUS_OK);
    peer.process.signal(SIGKILL);
    EXPECT_TRUE(eventually([&]() { return counter.unlinked == 1; }));
    EXPECT_EQ(counter.died, 1);
    EXPECT_EQ(counter.unlink(peer.binder), STATUS_DEAD_OBJECT);
    counter.recipient.set(nullptr);
    EXPECT_EQ(counter.unlinked, 1) << "the link has ended before";
}

TEST(Death, OfTheProcessEndsObjectsPassedOnByOthers) {
    ABinderProcess_startThreadPool();
    Peer owner = startPeer();
    Peer holder = startPeer();
    ASSERT_EQ(hold(holder.binder, getBinder(owner.binder, kNewObject)), STATUS_OK);
    ndk::SpAIBinder object = getBinder(holder.binder, kGetHeld);
    DeathCounter counter;
    ASSERT_EQ(counter.link(object), STATUS_OK);
    owner.process.signal(SIGKILL);
    EXPECT_TRUE(eventually([&]() { return counter.died == 1; }));
    EXPECT_EQ(AIBinder_ping(object.get()), STATUS_DEAD_OBJECT);
    EXPECT_EQ(add(holder.binder, 1), 2);
}

TEST(DeathLink, CanBeTakenBack) {
    Peer peer = startPeer();
    DeathCounter counter;
    EXPECT_EQ(counter.unlink(peer.binder), STATUS_NAME_NOT_FOUND);
    ASSERT_EQ(counter.link(peer.binder), STATUS_OK);
    EXPECT_EQ(counter.unlink(peer.binder), STATUS_OK);
    EXPECT_EQ(counter.unlinked, 1);
    EXPECT_EQ(counter.unlink(peer.binder), STATUS_NAME_NOT_FOUND);
    EXPECT_EQ(counter.died, 0);
}

TEST(DeathLink, EndsWithTheRecipientAndWithTheObject) {
    Peer peer = startPeer();
    DeathCounter deleted;
    ASSERT_EQ(deleted.link(peer.binder), STATUS_OK);
    deleted.recipient.set(nullptr);
    EXPECT_EQ(deleted.unlinked, 1);
    DeathCounter released;
    ASSERT_EQ(released.link(getBinder(peer.binder, kNewObject)), STATUS_OK);
    EXPECT_EQ(released.unlinked, 1);
    EXPECT_EQ(released.died + deleted.died, 0);
}

TEST(StoppedPeer, DoesNotHoldUpItsCallersForEver) {
    Peer peer = startPeer();
    ASSERT_EQ(add(peer.binder, 1), 2);
    peer.process.signal(SIGSTOP);
    const std::vector<uint8_t> bytes(256 * 1024);
    binder_status_t status = STATUS_OK;
    for (int i = 0; status == STATUS_OK && i < 100; ++i) {
        status = callPeer(peer.binder, kEchoBytes, writes(bytes), nullptr, FLAG_ONEWAY);
    }
    EXPECT_EQ(status, STATUS_DEAD_OBJECT);
}

}  // namespace
