// Objects known across processes: identity, lifetime, passing on, and nothing left behind.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>

#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/test_bus.h"

namespace {

// Objects of this process, once those that peers of earlier tests held are gone.
int settledObjects() {
    EXPECT_TRUE(eventually([]() { return livePeerObjects() == 0; }));
    return livePeerObjects();
}

TEST(RemoteObject, ComesBackAsTheLocalObject) {
    Peer peer = startPeer();
    ndk::SpAIBinder own = newPeerObject();
    ASSERT_EQ(hold(peer.binder, own), STATUS_OK);
    EXPECT_EQ(getBinder(peer.binder, kGetHeld), own);
    ASSERT_EQ(hold(peer.binder, nullptr), STATUS_OK);
    EXPECT_EQ(getBinder(peer.binder, kGetHeld).get(), nullptr);
}

TEST(RemoteObject, LivesAsLongAsThePeerThatHoldsIt) {
    Peer peer = startPeer();
    const int before = settledObjects();
    ASSERT_EQ(hold(peer.binder, newPeerObject()), STATUS_OK);
    EXPECT_EQ(add(getBinder(peer.binder, kGetHeld), 1), 2);
    EXPECT_EQ(livePeerObjects(), before + 1);
    peer.process.signal(SIGKILL);
    EXPECT_TRUE(eventually([&]() { return livePeerObjects() == before; }));
}

TEST(RemoteObject, LastReleaseIsToldToTheOwner) {
    Peer peer = startPeer();
    const int before = askPeer(peer.binder, kLiveObjects);
    {
        ndk::SpAIBinder object = getBinder(peer.binder, kNewObject);
        EXPECT_EQ(askPeer(peer.binder, kLiveObjects), before + 1);
        // Received several times, released once.
        ASSERT_EQ(hold(peer.binder, object), STATUS_OK);
        for (int i = 0; i < 3; ++i) EXPECT_EQ(getBinder(peer.binder, kGetHeld), object);
        ASSERT_EQ(callPeer(peer.binder, kDrop), STATUS_OK);
        EXPECT_EQ(askPeer(peer.binder, kLiveObjects), before + 1);
    }
    EXPECT_TRUE(eventually([&]() { return askPeer(peer.binder, kLiveObjects) == before; }));
}

TEST(RemoteObject, OfAMessageThatIsNotSentIsNotKept) {
    Peer peer = startPeer();
    ndk::ScopedFileDescriptor file(memfd_create("test", MFD_CLOEXEC));
    const int before = settledObjects();
    std::vector<ndk::ScopedFileDescriptor> tooMany;
    for (int i = 0; i < 254; ++i) tooMany.push_back(file.dup());
    EXPECT_EQ(callPeer(peer.binder, kHold, writes(newPeerObject(), tooMany)),
              STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(livePeerObjects(), before);
}

TEST(ThirdProcess, GetsAnObjectThatOutlivesTheSendersReference) {
    Peer owner = startPeer();
    Peer holder = startPeer();
    const int before = askPeer(owner.binder, kLiveObjects);
    {
        ndk::SpAIBinder object = getBinder(owner.binder, kNewObject);
        ASSERT_EQ(hold(holder.binder, object), STATUS_OK);
        EXPECT_EQ(getBinder(holder.binder, kGetHeld), object) << "one binder, whoever sends it";
    }
    ndk::SpAIBinder again = getBinder(holder.binder, kGetHeld);
    EXPECT_EQ(add(again, 5), 6);
    EXPECT_EQ(askPeer(owner.binder, kLiveObjects), before + 1);
    again = nullptr;
    ASSERT_EQ(callPeer(holder.binder, kDrop), STATUS_OK);
    EXPECT_TRUE(eventually([&]() { return askPeer(owner.binder, kLiveObjects) == before; }));
}

TEST(ThirdProcess, GetsAnObjectByAOnewayCallThoughTheSenderForgetsItAtOnce) {
    Peer owner = startPeer();
    Peer holder = startPeer();
    for (int i = 0; i < 20; ++i) {
        ndk::SpAIBinder object = getBinder(owner.binder, kNewObject);
        ASSERT_EQ(hold(holder.binder, object, FLAG_ONEWAY), STATUS_OK);
        object = nullptr;
        ASSERT_TRUE(
                eventually([&]() { return getBinder(holder.binder, kGetHeld).get() != nullptr; }));
        ASSERT_EQ(add(getBinder(holder.binder, kGetHeld), i), i + 1);
        ASSERT_EQ(callPeer(holder.binder, kDrop), STATUS_OK);
    }
}

TEST(ThirdProcess, GetsADeadObjectOfAProcessThatIsGone) {
    Peer holder = startPeer();
    Peer owner = startPeer();
    ndk::SpAIBinder object = getBinder(owner.binder, kNewObject);
    owner.process.signal(SIGKILL);
    owner.process.wait();
    ASSERT_EQ(hold(holder.binder, object), STATUS_OK);
    binder_status_t status = STATUS_OK;
    callThrough(holder.binder, object, 1, &status);
    EXPECT_EQ(status, STATUS_DEAD_OBJECT);
}

TEST(ManyCalls, LeaveNoDescriptorsAndObjectsBehind) {
    Peer peer = startPeer();
    ndk::ScopedFileDescriptor file(memfd_create("test", MFD_CLOEXEC));
    add(peer.binder, 1);  // what is made once exists now
    ASSERT_EQ(hold(peer.binder, newPeerObject()), STATUS_OK);
    ASSERT_EQ(callPeer(peer.binder, kDrop), STATUS_OK);
    const int32_t remoteBefore = askPeer(peer.binder, kCountFds);
    const int32_t ownBefore = countOpenDescriptors();
    const int ownObjects = settledObjects();
    for (int i = 0; i < 1000; ++i) {
        std::vector<ndk::ScopedFileDescriptor> fds;
        fds.push_back(file.dup());
        std::vector<ndk::ScopedFileDescriptor> back;
        ASSERT_EQ(callPeer(peer.binder, kEchoFds, writes(fds), reads(&back)), STATUS_OK);
        ASSERT_EQ(hold(peer.binder, newPeerObject()), STATUS_OK);
        ASSERT_NE(getBinder(peer.binder, kNewObject).get(), nullptr);
    }
    ASSERT_EQ(callPeer(peer.binder, kDrop), STATUS_OK);
    EXPECT_LE(countOpenDescriptors(), ownBefore);
    // The peer closes its own side of what it sent right after sending.
    EXPECT_TRUE(eventually([&]() { return askPeer(peer.binder, kCountFds) == remoteBefore; }));
    EXPECT_TRUE(eventually([&]() { return livePeerObjects() == ownObjects; }));
    EXPECT_TRUE(eventually([&]() { return askPeer(peer.binder, kLiveObjects) == 1; }));
}

TEST(ManyProcesses, LeaveNoDescriptorsBehind) {
    Peer stays = startPeer();
    add(stays.binder, 1);
    const int32_t remoteBefore = askPeer(stays.binder, kCountFds);
    const int32_t ownBefore = countOpenDescriptors();
    for (int i = 0; i < 10; ++i) {
        Peer goes = startPeer();
        // Makes the two peers connect, too.
        ASSERT_EQ(hold(stays.binder, getBinder(goes.binder, kNewObject)), STATUS_OK);
    }
    EXPECT_TRUE(eventually([&]() { return countOpenDescriptors() <= ownBefore; }));
    EXPECT_TRUE(eventually([&]() { return askPeer(stays.binder, kCountFds) == remoteBefore; }));
}

}  // namespace
