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
    EXPECT_TRUE(Eventually([]() { return LivePeerObjects() == 0; }));
}

// The peer is as a service that forks without exec: a child has its socket when it dies.
TEST(RemoteObject, ComesBackAsTheLocalObjectAndLivesAsLongAsThePeer) {
    AwaitNoOwnObjects();
    Peer peer = StartPeer();
    ndk::SpAIBinder own = NewPeerObject();
    ASSERT_EQ(Hold(peer.binder, own), STATUS_OK);
    EXPECT_EQ(GetBinder(peer.binder, kGetHeld), own);
    own = nullptr;
    EXPECT_EQ(Add(GetBinder(peer.binder, kGetHeld), 1), 2);
    ASSERT_EQ(CallPeer(peer.binder, kFork), STATUS_OK);
    peer.Signal(SIGKILL);
    AwaitNoOwnObjects();
}

TEST(ThirdProcess, GetsAnObjectThatOutlivesTheSendersReferenceAndEndsWithTheLast) {
    Peer owner = StartPeer();
    Peer holder = StartPeer();
    ndk::SpAIBinder object = GetBinder(owner.binder, kNewObject);
    ASSERT_EQ(Hold(owner.binder, object), STATUS_OK);
    // Received several times, released once.
    for (int i = 0; i < 3; ++i) EXPECT_EQ(GetBinder(owner.binder, kGetHeld), object);
    ASSERT_EQ(Hold(owner.binder, nullptr), STATUS_OK);
    EXPECT_EQ(AskPeer(owner.binder, kLiveObjects), 2);
    ASSERT_EQ(Hold(holder.binder, object), STATUS_OK);
    EXPECT_EQ(GetBinder(holder.binder, kGetHeld), object) << "one binder, whichever process sends";
    object = nullptr;
    EXPECT_EQ(Add(GetBinder(holder.binder, kGetHeld), 5), 6);
    ASSERT_EQ(Hold(holder.binder, nullptr), STATUS_OK);
    EXPECT_TRUE(Eventually([&]() { return AskPeer(owner.binder, kLiveObjects) == 1; }));
    for (int i = 0; i < 20; ++i) {  // by a oneway call, forgotten at once
        ASSERT_EQ(Hold(holder.binder, GetBinder(owner.binder, kNewObject), FLAG_ONEWAY), STATUS_OK);
        ASSERT_TRUE(
                Eventually([&]() { return GetBinder(holder.binder, kGetHeld).get() != nullptr; }));
        ASSERT_EQ(Add(GetBinder(holder.binder, kGetHeld), i), i + 1);
        ASSERT_EQ(Hold(holder.binder, nullptr), STATUS_OK);
    }
    object = GetBinder(owner.binder, kNewObject);
    owner.Signal(SIGKILL);
    owner.process->Finish();
    EXPECT_EQ(CallPeer(holder.binder, kCall, Writes(object, 1)), STATUS_DEAD_OBJECT);
}

TEST(ManyCallsAndProcesses, LeaveNoDescriptorsAndObjectsBehind) {
    AwaitNoOwnObjects();
    Peer peer = StartPeer();
    ndk::ScopedFileDescriptor file(memfd_create("test", MFD_CLOEXEC));
    const auto caller = [&](int32_t first) {
        for (int32_t value = first; value < first + 250; ++value) {
            std::vector<ndk::ScopedFileDescriptor> fds;
            fds.push_back(file.dup());
            ASSERT_EQ(CallPeer(peer.binder, kEcho, Writes(std::vector<uint8_t>(), fds)), STATUS_OK);
            ASSERT_EQ(Hold(peer.binder, NewPeerObject()), STATUS_OK);
            ASSERT_EQ(Add(GetBinder(peer.binder, kNewObject), value), value + 1);
        }
    };
    caller(0);  // what is made once exists then
    const size_t remoteBefore = CountsOf(peer.process->Pid()).descriptors;
    const size_t ownBefore = CountsOf(getpid()).descriptors;
    std::vector<std::future<void>> callers;
    for (int i = 1; i <= 4; ++i)
        callers.push_back(std::async(std::launch::async, caller, i * 1000));
    for (auto& running : callers) running.get();
    for (int i = 0; i < 10; ++i) {
        Peer goes = StartPeer();
        // Makes the two peers connect, too.
        ASSERT_EQ(Hold(peer.binder, GetBinder(goes.binder, kNewObject)), STATUS_OK);
    }
    ASSERT_EQ(Hold(peer.binder, nullptr), STATUS_OK);
    EXPECT_TRUE(Eventually([&]() { return CountsOf(getpid()).descriptors <= ownBefore; }));
    // The peer closes its own side of what it sent right after sending.
    EXPECT_TRUE(Eventually(
            [&]() { return CountsOf(peer.process->Pid()).descriptors <= remoteBefore; }));
    EXPECT_TRUE(Eventually([&]() { return AskPeer(peer.binder, kLiveObjects) == 1; }));
    AwaitNoOwnObjects();
}

TEST(Connecting, OfRealProcessesToEachOtherGivesWorkingCalls) {
    for (int round = 0; round < 20; ++round) {
        Peer first = StartPeer();
        Peer second = StartPeer();
        // Neither knows the other yet: each call makes its callee connect.
        auto forth = std::async(std::launch::async, [&]() {
            return AskPeer(first.binder, kCall, Writes(second.binder, 1));
        });
        EXPECT_EQ(AskPeer(second.binder, kCall, Writes(first.binder, 2)), 3);
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
    Peer peer = StartPeer();
    Pipe entered, go;
    auto pending = std::async(std::launch::async, [&]() {
        return CallPeer(peer.binder, kBlock, Writes(entered.writing, go.reading));
    });
    char byte;
    ASSERT_EQ(read(entered.reading.get(), &byte, 1), 1);
    peer.Signal(SIGKILL);
    EXPECT_EQ(pending.get(), STATUS_DEAD_OBJECT);
    EXPECT_FALSE(AIBinder_isAlive(peer.binder.get()));
    EXPECT_EQ(AIBinder_ping(peer.binder.get()), STATUS_DEAD_OBJECT);
    EXPECT_EQ(DeathCounter().Link(peer.binder), STATUS_DEAD_OBJECT);
}

TEST(DeathLink, EndsOnceByDeathUnlinkingOrWithTheRecipientOrTheObject) {
    ABinderProcess_startThreadPool();
    Peer owner = StartPeer();
    Peer holder = StartPeer();
    ASSERT_EQ(Hold(holder.binder, GetBinder(owner.binder, kNewObject)), STATUS_OK);
    ndk::SpAIBinder object = GetBinder(holder.binder, kGetHeld);
    DeathCounter told, unlinked, deleted, released;
    ASSERT_EQ(told.Link(object), STATUS_OK);
    owner.Signal(SIGKILL);
    EXPECT_TRUE(Eventually([&]() { return told.unlinked == 1; })) << "though it was passed on";
    EXPECT_EQ(told.died, 1);
    EXPECT_EQ(told.Unlink(object), STATUS_DEAD_OBJECT);

    ASSERT_EQ(unlinked.Link(holder.binder), STATUS_OK);
    EXPECT_EQ(unlinked.Unlink(holder.binder), STATUS_OK);
    EXPECT_EQ(unlinked.Unlink(holder.binder), STATUS_NAME_NOT_FOUND);
    ASSERT_EQ(deleted.Link(holder.binder), STATUS_OK);
    ASSERT_EQ(released.Link(GetBinder(holder.binder, kNewObject)), STATUS_OK);
    for (DeathCounter* counter : {&told, &unlinked, &deleted, &released}) {
        counter->recipient.set(nullptr);
        EXPECT_EQ(counter->unlinked, 1);
        EXPECT_EQ(counter->died, counter == &told ? 1 : 0);
    }
}

}  // namespace
