// Peers with a bug that speak the wire format well: other peers are served on, and nothing stays
// behind.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/libbinder_ndk/parcel.h"
#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/raw_connection.h"
#include "tests/host/libbinder_ndk/test_bus.h"
#include "tests/support/process_counts.h"

namespace {

using hostbinder::FrameHeader;
using hostbinder::FrameKind;

// The beginning of a request to the peer's object.
std::string RequestStart() {
    AParcel parcel;
    hostbinder::WriteInterfaceHeader(&parcel, "test.IPeer");
    return {reinterpret_cast<const char*>(parcel.data()), parcel.size()};
}

class MisbehavingPeer : public testing::Test {
  protected:
    explicit MisbehavingPeer(const std::vector<std::string>& options = {})
        : mPeer(startPeer(options)) {}
    ~MisbehavingPeer() override {
        EXPECT_EQ(add(mPeer.binder, 1), 2);
        EXPECT_TRUE(eventually([&]() {
            const ProcessCounts now = countsOf(mPeer.process.pid());
            return now.descriptors <= mBefore.descriptors && now.threads <= mBefore.threads + 16;
        })) << "pool threads stay, and nothing else";
    }
    std::string Call(uint64_t id, uint32_t code, const std::string& body) {
        FrameHeader call = frameHeader(FrameKind::kCall, static_cast<uint32_t>(body.size()));
        call.id = id;
        call.target = mObject;
        call.code = code;
        return bytesOf(call, body);
    }
    // A call of kCall with an object of the sender's.
    std::string CallWithObject(uint64_t number) {
        std::string body = RequestStart();
        FrameHeader call = frameHeader(FrameKind::kCall, static_cast<uint32_t>(body.size()) + 32);
        const uint32_t offset = call.dataSize - 32;
        appendBytes(&body, hostbinder::ObjectRecord{hostbinder::kBinderHandle, 0, 0, 0});
        for (int32_t word : {int32_t{hostbinder::kStabilitySystem}, 1}) appendBytes(&body, word);
        appendBytes(&body, offset);
        appendBytes(&body, hostbinder::ReferenceRecord{
                                   hostbinder::ReferenceOwner::kSender, 0, number, {}});
        call.target = mObject;
        call.code = kCall;
        call.chain = 7;
        call.objectCount = call.referenceCount = 1;
        return bytesOf(call, body);
    }

    Peer mPeer;
    const std::string mSocket = peerSocket(mPeer.process.pid());
    const uint64_t mObject = numberOf(mPeer.binder);
    const ProcessCounts mBefore = countsOf(mPeer.process.pid());
};

struct FloodingPeer : MisbehavingPeer {
    FloodingPeer() : MisbehavingPeer({"--late-pool"}) {}
};

TEST_F(FloodingPeer, IsRefusedWhatNoLongerFits) {
    constexpr size_t kSize = 512 * 1024;
    constexpr uint64_t kFit = 7;  // in 4 MiB, with what each call takes besides
    constexpr uint64_t kCalls = 12;
    RawConnection flood(mSocket, mObject);
    for (uint64_t id = 1; id <= kCalls; ++id) {
        flood.send(Call(id, kAdd, std::string(kSize, '\0')));
        if (id <= kFit) continue;
        const FrameHeader refusal = flood.receive();
        EXPECT_EQ(refusal.id, id);
        EXPECT_EQ(refusal.status, STATUS_FAILED_TRANSACTION);
    }
    mPeer.process.nudge();
    for (uint64_t i = 0; i < kFit; ++i) EXPECT_EQ(flood.receive().status, STATUS_BAD_TYPE);
    flood.send(Call(99, hostbinder::kPingCode, ""));
    EXPECT_EQ(flood.receive().status, STATUS_OK) << "there is room again";
}

TEST_F(MisbehavingPeer, WhoseCallsBackNestWithoutEndIsRefused) {
    RawConnection nesting(mSocket, mObject);
    // Each call has a new object, whose class the peer asks for; the answer is the next call.
    int depth = 0;
    FrameHeader answer{};
    do {
        nesting.send(CallWithObject(1000 + static_cast<uint64_t>(++depth)));
        do {
            answer = nesting.receive();
        } while (answer.kind == FrameKind::kRelease);
    } while (answer.kind == FrameKind::kCall && depth < 1000);
    EXPECT_EQ(answer.kind, FrameKind::kReply);
    EXPECT_EQ(answer.status, STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(depth, 65);
}

TEST_F(MisbehavingPeer, ThatDoesNotReadOrAnswerLosesItsConnection) {
    const std::string large = RequestStart() + std::string("\0\0\1\0", 4) +  // 64 KiB of bytes
                              std::string(64 * 1024, '\0');
    RawConnection unread(mSocket, mObject);
    for (uint64_t id = 1; id <= 20; ++id) unread.send(Call(id, kEchoBytes, large));
    RawConnection greeting(mSocket);
    greeting.send(bytesOf(frameHeader(FrameKind::kHello, 8)));
    RawConnection half(mSocket, mObject);
    half.send(Call(1, kAdd, "12345678").substr(0, sizeof(FrameHeader) + 4));
    RawConnection silent(mSocket, mObject);
    silent.send(CallWithObject(1000));
    EXPECT_EQ(silent.receive().code, hostbinder::kDescriptorCode) << "never answered";
    for (RawConnection* connection : {&greeting, &half, &silent}) {
        EXPECT_TRUE(connection->isClosed());
    }
}

// As a service that forks without exec.
TEST_F(MisbehavingPeer, IsMissedWhenItDiesThoughItsChildHasItsSocket) {
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t peer = fork();
    ASSERT_GE(peer, 0);
    if (peer == 0) {
        alarm(30);
        RawConnection connection(mSocket, mObject);
        const pid_t child = fork();
        if (child == 0) {
            for (;;) pause();
        }
        if (write(ready[1], &child, sizeof(child)) != sizeof(child)) _exit(1);
        for (;;) pause();
    }
    pid_t child = -1;
    EXPECT_EQ(read(ready[0], &child, sizeof(child)), ssize_t{sizeof(child)});
    kill(peer, SIGKILL);
    waitpid(peer, nullptr, 0);
    EXPECT_TRUE(eventually(
            [&]() { return countsOf(mPeer.process.pid()).descriptors <= mBefore.descriptors; }));
    kill(child, SIGKILL);
    for (int end : ready) close(end);
}

}  // namespace
