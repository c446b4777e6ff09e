// Objects known across processes: identity, lifetime, passing on, death, and nothing left behind.
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>

#include <atomic>
#include <future>

#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/test_bus.h"
#include "tests/support/process_counts.h"

namespace {

// Waits until objects of this process that peers of earlier tests held are gone.
void AwaitNoOwnObjects() {
    EXPECT_TRUE(eventually([]() { return livePeerObjects() == 0; }));
}

TEST(RemoteObject, ComesBackAsTheLocalObjectAndLivesAsLongAsThePeer) {
    AwaitNoOwnObjects();
    Peer peer = startPeer();
    ndk::SpAIBinder own = newPeerObject();
    ASSERT_EQ(hold(peer.binder, own), STATUS_OK);
    EXPECT_EQ(getBinder(peer.binder, kGetHeld), own);
    own = nullptr;
    EXPECT_EQ(add(getBinder(peer.binder, kGetHeld), 1), 2);
    peer.Signal(SIGKILL);
    AwaitNoOwnObjects();
}

TEST(ThirdProcess, GetsAnObjectThatOutlivesTheSendersReferenceAndEndsWithTheLast) {
    Peer owner = startPeer();
    Peer holder = startPeer();
    ndk::SpAIBinder object = getBinder(owner.binder, kNewObject);
    ASSERT_EQ(hold(owner.binder, object), STATUS_OK);
    // Received several times, released once.
    for (int i = 0; i < 3; ++i) EXPECT_EQ(getBinder(owner.binder, kGetHeld), object);
    ASSERT_EQ(hold(owner.binder, nullptr), STATUS_OK);
    EXPECT_EQ(askPeer(owner.binder, kLiveObjects), 2);
    ASSERT_EQ(hold(holder.binder, object), STATUS_OK);
    EXPECT_EQ(getBinder(holder.binder, kGetHeld), object) << "one binder, whichever process sends";
    object = nullptr;
    EXPECT_EQ(add(getBinder(holder.binder, kGetHeld), 5), 6);
    ASSERT_EQ(hold(holder.binder, nullptr), STATUS_OK);
    EXPECT_TRUE(eventually([&]() { return askPeer(owner.binder, kLiveObjects) == 1; }));
    for (int i = 0; i < 20; ++i) {  // by a oneway call, forgotten at once
        ASSERT_EQ(hold(holder.binder, getBinder(owner.binder, kNewObject), FLAG_ONEWAY), STATUS_OK);
        ASSERT_TRUE(
                eventually([&]() { return getBinder(holder.binder, kGetHeld).get() != nullptr; }));
        ASSERT_EQ(add(getBinder(holder.binder, kGetHeld), i), i + 1);
        ASSERT_EQ(hold(holder.binder, nullptr), STATUS_OK);
    }
    object = getBinder(owner.binder, kNewObject);
    owner.Signal(SIGKILL);
    owner.process->finish();
    EXPECT_EQ(callPeer(holder.binder, kCall, writes(object, 1)), STATUS_DEAD_OBJECT);
}

TEST(ManyCallsAndProcesses, LeaveNoDescriptorsAndObjectsBehind) {
    AwaitNoOwnObjects();
    Peer peer = startPeer();
    ndk::ScopedFileDescriptor file(memfd_create("test", MFD_CLOEXEC));
    ASSERT_EQ(hold(peer.binder, newPeerObject()), STATUS_OK);  // what is made once exists now
    const size_t remoteBefore = countsOf(peer.process->pid()).descriptors;
    const size_t ownBefore = countsOf(getpid()).descriptors;
    for (int i = 0; i < 1000; ++i) {
        std::vector<ndk::ScopedFileDescriptor> fds;
        fds.push_back(file.dup());
        ASSERT_EQ(callPeer(peer.binder, kEcho, writes(std::vector<uint8_t>(), fds)), STATUS_OK);
        ASSERT_EQ(hold(peer.binder, newPeerObject()), STATUS_OK);
        ASSERT_NE(getBinder(peer.binder, kNewObject).get(), nullptr);
    }
    for (int i = 0; i < 10; ++i) {
        Peer goes = startPeer();
        // Makes the two peers connect, too.
        ASSERT_EQ(hold(peer.binder, getBinder(goes.binder, kNewObject)), STATUS_OK);
    }
    ASSERT_EQ(hold(peer.binder, nullptr), STATUS_OK);
    EXPECT_TRUE(eventually([&]() { return countsOf(getpid()).descriptors <= ownBefore; }));
    // The peer closes its own side of what it sent right after sending.
    EXPECT_TRUE(eventually(
            [&]() { return countsOf(peer.process->pid()).descriptors <= remoteBefore; }));
    EXPECT_TRUE(eventually([&]() { return askPeer(peer.binder, kLiveObjects) == 1; }));
    AwaitNoOwnObjects();
}

TEST(Connecting, OfRealProcessesToEachOtherGivesWorkingCalls) {
    for (int round = 0; round < 20; ++round) {
        Peer first = startPeer();
        Peer second = startPeer();
        // Neither knows the other yet: each call makes its callee connect.
        auto forth = std::async(std::launch::async, [&]() {
            return askPeer(first.binder, kCall, writes(second.binder, 1));
        });
        EXPECT_EQ(askPeer(second.binder, kCall, writes(first.binder, 2)), 3);
        EXPECT_EQ(forth.get(), 2);
    }
}

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
    binder_status_t Link(const ndk::SpAIBinder& binder) {
        return AIBinder_linkToDeath(binder.get(), recipient.get(), this);
    }
    binder_status_t Unlink(const ndk::SpAIBinder& binder) {
        return AIBinder_unlinkToDeath(binder.get(), recipient.get(), this);
    }
};

TEST(Death, EndsAPendingCallAndFailsLaterOnes) {
    Peer peer = startPeer();
    ASSERT_EQ(add(peer.binder, 1), 2);
    peer.Signal(SIGSTOP);
    auto pending = std::async(std::launch::async, [&]() { return callPeer(peer.binder, kAdd); });
    peer.Signal(SIGKILL);
    EXPECT_EQ(pending.get(), STATUS_DEAD_OBJECT);
    EXPECT_FALSE(AIBinder_isAlive(peer.binder.get()));
    EXPECT_EQ(AIBinder_ping(peer.binder.get()), STATUS_DEAD_OBJECT);
    EXPECT_EQ(DeathCounter().Link(peer.binder), STATUS_DEAD_OBJECT);
}

TEST(Death, IsToldOnceOnThePoolAlsoOfObjectsPassedOnByOthers) {
    ABinderProcess_startThreadPool();
    Peer owner = startPeer();
    Peer holder = startPeer();
    ASSERT_EQ(hold(holder.binder, getBinder(owner.binder, kNewObject)), STATUS_OK);
    ndk::SpAIBinder object = getBinder(holder.binder, kGetHeld);
    DeathCounter counter;
    ASSERT_EQ(counter.Link(object), STATUS_OK);
    owner.Signal(SIGKILL);
    EXPECT_TRUE(eventually([&]() { return counter.unlinked == 1; }));
    EXPECT_EQ(counter.died, 1);
    EXPECT_EQ(counter.Unlink(object), STATUS_DEAD_OBJECT);
    counter.recipient.set(nullptr);
    EXPECT_EQ(counter.unlinked, 1) << "the link has ended before";
    EXPECT_EQ(add(holder.binder, 1), 2);
}

TEST(DeathLink, EndsOnceByUnlinkingOrWithTheRecipientOrTheObject) {
    Peer peer = startPeer();
    DeathCounter unlinked;
    ASSERT_EQ(unlinked.Link(peer.binder), STATUS_OK);
    EXPECT_EQ(unlinked.Unlink(peer.binder), STATUS_OK);
    EXPECT_EQ(unlinked.Unlink(peer.binder), STATUS_NAME_NOT_FOUND);
    DeathCounter deleted;
    ASSERT_EQ(deleted.Link(peer.binder), STATUS_OK);
    deleted.recipient.set(nullptr);
    DeathCounter released;
    ASSERT_EQ(released.Link(getBinder(peer.binder, kNewObject)), STATUS_OK);
    for (const DeathCounter* counter : {&unlinked, &deleted, &released}) {
        EXPECT_EQ(counter->unlinked, 1);
        EXPECT_EQ(counter->died, 0);
    }
}

}  // namespace
