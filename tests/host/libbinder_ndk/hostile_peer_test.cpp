// Peers that speak the wire format well and mean harm: each is refused, others are served on, and
// nothing stays behind.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/libbinder_ndk/waiter.h"
#include "tests/host/libbinder_ndk/blocked_calls.h"
#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/raw_connection.h"
#include "tests/host/libbinder_ndk/test_bus.h"
#include "tests/support/process_counts.h"

namespace {

using hostbinder::FrameHeader;
using hostbinder::FrameKind;
using hostbinder::ObjectRecord;
using hostbinder::ReferenceOwner;
using hostbinder::ReferenceRecord;

uint64_t gObject = 0;  // number of the attacked peer's object

// The beginning of a request to an object of that interface.
std::string interfaceHeader(const std::string& descriptor) {
    ndk::ScopedAParcel parcel(AParcel_create());
    for (int32_t word : {int32_t{INT32_MIN}, int32_t{-1}, int32_t{0x53595354}}) {
        AParcel_writeInt32(parcel.get(), word);
    }
    ndk::AParcel_writeString(parcel.get(), descriptor);
    std::string bytes(static_cast<size_t>(AParcel_getDataSize(parcel.get())), '\0');
    AParcel_marshal(parcel.get(), reinterpret_cast<uint8_t*>(&bytes[0]), 0, bytes.size());
    return bytes;
}

FrameHeader callHeader(uint64_t id, uint32_t code, size_t dataSize) {
    FrameHeader call = frameHeader(FrameKind::kCall, static_cast<uint32_t>(dataSize));
    call.id = id;
    call.target = gObject;
    call.code = code;
    return call;
}

// A call of kCall with an object of the sender's.
std::string callWithObject(uint64_t id, uint64_t number, uint64_t chain) {
    std::string body = interfaceHeader("test.IPeer");
    const auto offset = static_cast<uint32_t>(body.size());
    appendBytes(&body, ObjectRecord{hostbinder::kBinderHandle, 0, 0, 0});
    for (int32_t word : {int32_t{hostbinder::kStabilitySystem}, 1}) appendBytes(&body, word);
    FrameHeader call = callHeader(id, kCall, body.size());
    call.chain = chain;
    call.objectCount = call.referenceCount = 1;
    appendBytes(&body, offset);
    appendBytes(&body, ReferenceRecord{ReferenceOwner::kSender, 0, number, {}});
    return bytesOf(call, body);
}

class HostilePeer : public testing::Test {
  protected:
    void start(const std::vector<std::string>& options = {}) {
        mPeer = std::make_unique<Peer>(startPeer(options));
        mSocket = peerSocket(mPeer->process.pid());
        gObject = numberOf(mPeer->binder);
        mBefore = countsOf(mPeer->process.pid());
    }
    // Served, and back to the descriptors and threads of before. Pool threads stay.
    void expectUnharmed(size_t poolThreads = 16) {
        // The attacks come from this process, too, so its share may still be taken.
        EXPECT_TRUE(eventually([&]() { return add(mPeer->binder, 1) == 2; }));
        EXPECT_TRUE(eventually([&]() {
            const ProcessCounts now = countsOf(mPeer->process.pid());
            return now.descriptors <= mBefore.descriptors &&
                   now.threads <= mBefore.threads + poolThreads;
        }));
    }

    std::unique_ptr<Peer> mPeer;
    std::string mSocket;
    ProcessCounts mBefore;
};

TEST_F(HostilePeer, ThatFloodsWithCallsIsRefusedBeyondItsShare) {
    start({"--late-pool"});
    constexpr size_t kSize = 256 * 1024;
    constexpr int kAccepted = 7;  // in 2 MiB, with what each call takes besides
    constexpr int kCalls = 20;
    RawConnection flood(mSocket, gObject);
    RawConnection further(mSocket, gObject);
    for (uint64_t id = 1; id <= kCalls; ++id) {
        flood.send(bytesOf(callHeader(id, kAdd, kSize), std::string(kSize, '\0')));
    }
    for (uint64_t id = kAccepted + 1; id <= kCalls; ++id) {
        const FrameHeader refusal = flood.receive();
        EXPECT_EQ(refusal.id, id);
        EXPECT_EQ(refusal.status, STATUS_FAILED_TRANSACTION);
    }
    further.send(bytesOf(callHeader(1, kAdd, kSize), std::string(kSize, '\0')));
    EXPECT_EQ(further.receive().status, STATUS_FAILED_TRANSACTION) << "the share is its process's";
    const Peer other = startPeer();
    auto answer = std::async(std::launch::async,
                             [&]() { return callThrough(other.binder, mPeer->binder, 1); });
    EXPECT_EQ(answer.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    mPeer->process.nudge();
    EXPECT_EQ(answer.get(), 2) << "another process has its own";
    for (int i = 0; i < kAccepted; ++i) EXPECT_EQ(flood.receive().status, STATUS_BAD_TYPE);
    flood.send(bytesOf(callHeader(99, hostbinder::kPingCode, kSize), std::string(kSize, '\0')));
    EXPECT_EQ(flood.receive().status, STATUS_OK) << "its share is free again";
}

TEST_F(HostilePeer, OnewayCallsTakeHalfOfTheShare) {
    start();
    BlockedCalls blocked(mPeer->binder);
    EXPECT_EQ(blocked.call(FLAG_ONEWAY), STATUS_OK);
    const std::vector<uint8_t> filler(256 * 1024);
    for (int32_t i = 0; i < 20; ++i) {
        const auto write = [&](AParcel* in) {
            AParcel_writeInt32(in, i);
            return ndk::AParcel_writeVector(in, filler);
        };
        EXPECT_EQ(callPeer(mPeer->binder, kRecord, write, nullptr, FLAG_ONEWAY), STATUS_OK);
    }
    EXPECT_EQ(add(mPeer->binder, 1), 2) << "calls that somebody waits for still find room";
    blocked.letGo();
    const std::vector<int32_t> first = {0, 1, 2};
    EXPECT_TRUE(eventually([&]() { return recordsOf(mPeer->binder).size() == first.size(); }));
    EXPECT_EQ(recordsOf(mPeer->binder), first);
}

TEST_F(HostilePeer, WhoseCallsBackNestWithoutEndIsRefused) {
    start();
    {
        RawConnection nesting(mSocket, gObject);
        // Each call has a new object, whose class the peer asks for; the answer is the next call.
        int depth = 0;
        FrameHeader answer{};
        do {
            ++depth;
            nesting.send(callWithObject(100, 1000 + static_cast<uint64_t>(depth), 7));
            do {
                answer = nesting.receive();
            } while (answer.kind == FrameKind::kRelease);
        } while (answer.kind == FrameKind::kCall && depth < 1000);
        EXPECT_EQ(answer.kind, FrameKind::kReply);
        EXPECT_EQ(answer.status, STATUS_FAILED_TRANSACTION);
        EXPECT_EQ(depth, 65);
    }
    expectUnharmed();
}

TEST_F(HostilePeer, ThatOwesTheRestOrAnAnswerLosesItsConnection) {
    start();
    RawConnection silent(mSocket);
    RawConnection greeting(mSocket);
    RawConnection calling(mSocket);
    greeting.send(bytesOf(frameHeader(FrameKind::kHello, 8)));
    ASSERT_TRUE(calling.greet());
    calling.send(bytesOf(callHeader(1, kAdd, 8)), {STDERR_FILENO});
    RawConnection asked(mSocket, gObject);
    asked.send(callWithObject(1, 1000, 7));
    EXPECT_EQ(asked.receive().code, hostbinder::kDescriptorCode) << "never answered";
    for (RawConnection* connection : {&silent, &greeting, &calling, &asked}) {
        EXPECT_TRUE(connection->isClosed());
    }
    expectUnharmed();
}

TEST_F(HostilePeer, ThatLeavesItsOwnSocketInACallIsMissedWhenItDies) {
    start();
    int entered[2];
    ASSERT_EQ(pipe2(entered, O_CLOEXEC), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        alarm(30);
        RawConnection connection(mSocket, gObject);
        // The call ends when its second descriptor does, which is the child's end of the
        // connection.
        std::string body = interfaceHeader("test.IPeer");
        std::vector<uint32_t> offsets;
        for (uint64_t i = 0; i < 2; ++i) {
            for (int32_t word : {1, 0}) appendBytes(&body, word);
            offsets.push_back(static_cast<uint32_t>(body.size()));
            appendBytes(&body, ObjectRecord{hostbinder::kDescriptor, 0, i, 0});
        }
        FrameHeader call = callHeader(1, kBlock, body.size());
        call.objectCount = call.descriptorCount = 2;
        for (const uint32_t offset : offsets) appendBytes(&body, offset);
        connection.send(bytesOf(call, body), {entered[1], connection.descriptor()});
        for (;;) pause();
    }
    char byte;
    EXPECT_EQ(read(entered[0], &byte, 1), 1);
    for (int end : entered) close(end);
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    expectUnharmed();
}

TEST_F(HostilePeer, ThatDiedBeforeItWasServedIsMissedThoughItsSocketLives) {
    start();
    const pid_t peer = mPeer->process.pid();
    kill(peer, SIGSTOP);
    ASSERT_EQ(waitpid(peer, nullptr, WUNTRACED), peer);
    RawConnection kept;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        kept.connectTo(mSocket);
        kept.sendHello("raw" + std::to_string(getpid()));
        _exit(0);
    }
    waitpid(child, nullptr, 0);
    kill(peer, SIGCONT);
    expectUnharmed();
}

TEST_F(HostilePeer, ThatCallsBackWithoutEndIsNotWaitedForAnyLonger) {
    struct Endless final : public hostbinder::Work {
        explicit Endless(hostbinder::Waiter* to) : waiter(to) {}
        void run() override {
            std::unique_ptr<Work> next = std::make_unique<Endless>(waiter);
            EXPECT_TRUE(waiter->offer(&next));
        }
        hostbinder::Waiter* const waiter;
    };
    hostbinder::Waiter waiter;
    Endless(&waiter).run();
    hostbinder::IncomingMessage reply;
    EXPECT_FALSE(waiter.wait(10, &reply));
}

TEST_F(HostilePeer, CannotTakeTheNameOfAnother) {
    start();
    ASSERT_EQ(hold(mPeer->binder, newPeerObject()), STATUS_OK);  // gives this process a socket
    const std::string path = peerSocket(getpid());
    ASSERT_NE(path, "");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        alarm(30);  // a lock that another thread held at the fork is never free here
        RawConnection thief(mSocket);
        thief.sendHello(path.substr(path.rfind('/') + 1));
        _exit(thief.isClosed() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "the thief is refused";
    RawConnection manager(mSocket);
    manager.sendHello("servicemanager");
    EXPECT_TRUE(manager.isClosed()) << "whoever has the name listens under it";
    EXPECT_EQ(add(mPeer->binder, 1), 2) << "the connection of the name's owner stays";
}

TEST_F(HostilePeer, ThatKeepsEveryObjectGetsNoMore) {
    start();
    {
        RawConnection hoarder(mSocket, gObject);
        const std::string header = interfaceHeader("test.IPeer");
        int32_t status = STATUS_OK;
        int objects = 1;
        while (status == STATUS_OK && objects < 20000) {
            hoarder.send(bytesOf(callHeader(1, kNewObject, header.size()), header));
            status = hoarder.receive().status;
            if (status == STATUS_OK) ++objects;
        }
        EXPECT_EQ(status, STATUS_FAILED_TRANSACTION);
        EXPECT_EQ(objects, 8192);
    }
    EXPECT_TRUE(eventually([&]() { return askPeer(mPeer->binder, kLiveObjects) == 1; }));
}

TEST_F(HostilePeer, ThatTakesNoReferenceGetsNoMore) {
    start();
    ASSERT_EQ(hold(mPeer->binder, newPeerObject()), STATUS_OK);  // one of a third process
    RawConnection untaking(mSocket, gObject);
    const std::string header = interfaceHeader("test.IPeer");
    FrameHeader answer{};
    int answers = 0;
    do {
        untaking.send(bytesOf(callHeader(1, kGetHeld, header.size()), header));
        answer = untaking.receive();
    } while (answer.referencesId != 0 && ++answers < 5000);
    EXPECT_EQ(answers, 1024);
    EXPECT_EQ(answer.status, STATUS_FAILED_TRANSACTION);
}

TEST_F(HostilePeer, ThatReadsNoAnswersLosesItsConnection) {
    start();
    const size_t many = 1000 * 1000;
    RawConnection asking(mSocket);
    ASSERT_TRUE(asking.greet());
    EXPECT_TRUE(asking.sendUntilClosed(bytesOf(frameHeader(FrameKind::kAcquire)), many));
    RawConnection calling(mSocket, gObject);
    EXPECT_TRUE(calling.sendUntilClosed(bytesOf(callHeader(1, hostbinder::kPingCode, 0)), many));
    expectUnharmed();
}

TEST_F(HostilePeer, ThatReadsNoLargeAnswersLosesItsConnection) {
    start();
    constexpr uint32_t kSize = 64 * 1024;
    std::string request = interfaceHeader("test.IPeer");
    appendBytes(&request, kSize);
    request.resize(request.size() + kSize);
    RawConnection calling(mSocket, gObject);
    for (uint64_t id = 1; id <= 20; ++id) {
        calling.send(bytesOf(callHeader(id, kEchoBytes, request.size()), request));
    }
    expectUnharmed();
}

TEST_F(HostilePeer, GetsOnlySoManyConnections) {
    start();
    {
        std::vector<std::unique_ptr<RawConnection>> connections;
        for (int i = 0; i < 31; ++i) {
            connections.push_back(std::make_unique<RawConnection>(mSocket));
            ASSERT_TRUE(connections.back()->greet());
        }
        // One more has a place, or is the one that this process has besides.
        RawConnection last(mSocket);
        EXPECT_TRUE(RawConnection(mSocket).isClosed());
        EXPECT_EQ(add(mPeer->binder, 1), 2);
    }
    expectUnharmed();
}

TEST_F(HostilePeer, ThatComesInManyProcessesLeavesAPlaceForAnother) {
    start();
    Peer other = startPeer();
    int ready[2];
    ASSERT_EQ(pipe2(ready, O_CLOEXEC), 0);
    std::vector<pid_t> crowd(9);  // of 32 connections each, where 256 have a place
    for (pid_t& child : crowd) {
        child = fork();
        ASSERT_GE(child, 0);
        if (child != 0) continue;
        alarm(60);
        std::vector<std::unique_ptr<RawConnection>> connections;
        for (int i = 0; i < 32; ++i) {
            connections.push_back(std::make_unique<RawConnection>(mSocket));
            if (i % 2 == 0)
                connections.back()->sendHello("p" + std::to_string(getpid()) + "-" +
                                              std::to_string(i));
        }
        if (write(ready[1], "x", 1) != 1) _exit(1);
        for (;;) pause();
    }
    close(ready[1]);
    char byte;
    for (size_t i = 0; i < crowd.size(); ++i) ASSERT_EQ(read(ready[0], &byte, 1), 1);
    close(ready[0]);
    EXPECT_EQ(callThrough(other.binder, mPeer->binder, 1), 2) << "it has to connect for this";
    for (const pid_t child : crowd) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
    }
    other.process.signal(SIGKILL);
    expectUnharmed();
}

TEST_F(HostilePeer, CannotGuessObjects) {
    start();
    RawConnection guessing(mSocket);
    ASSERT_TRUE(guessing.greet());
    for (uint64_t number = 1; number < 100; ++number) {
        EXPECT_FALSE(guessing.acquire(number));
        EXPECT_FALSE(guessing.acquire(gObject + number));
    }
}

}  // namespace
