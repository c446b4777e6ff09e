// Two processes that connect to each other at the same time end up with one connection.
#include <gtest/gtest.h>
#include <unistd.h>

#include <future>

#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/raw_connection.h"
#include "tests/host/libbinder_ndk/test_bus.h"

namespace {

using hostbinder::FrameHeader;
using hostbinder::FrameKind;

// A process played by the test. Makes the peer connect to it, by handing it a reference to an
// object of that process, and stops where the peer has sent its greeting.
class OtherProcess {
  public:
    OtherProcess(const std::string& name, const Peer& peer)
        : mName(name),
          mPeerSocket(peerSocket(peer.process.pid())),
          mListener(listenAt(busFolder() + "/" + name)),
          mSender(mPeerSocket, numberOf(peer.binder)) {
        FrameHeader call = frameHeader(FrameKind::kCall, sizeof(hostbinder::ObjectRecord));
        call.target = numberOf(peer.binder);
        call.objectCount = call.referenceCount = 1;
        std::string body;
        appendBytes(&body, hostbinder::ObjectRecord{hostbinder::kBinderHandle, 0, 0, 0});
        appendBytes(&body, uint32_t{0});
        hostbinder::ReferenceRecord reference{hostbinder::ReferenceOwner::kOther, 0, 77, {}};
        name.copy(reference.name, hostbinder::kMaxSocketName);
        appendBytes(&body, reference);
        mSender.send(bytesOf(call, body));
        mFromPeer = std::make_unique<RawConnection>(mListener);
        EXPECT_EQ(mFromPeer->receive().kind, FrameKind::kHello);
    }
    ~OtherProcess() {
        close(mListener);
        unlink((busFolder() + "/" + mName).c_str());
    }
    RawConnection& fromPeer() { return *mFromPeer; }
    // Connects the other way; the peer's answer to the greeting.
    std::unique_ptr<RawConnection> connect(binder_status_t* answer) {
        auto connection = std::make_unique<RawConnection>(mPeerSocket);
        connection->sendHello(mName);
        *answer = connection->receive().status;
        return connection;
    }
    void answer(binder_status_t status) {
        FrameHeader reply = frameHeader(FrameKind::kHelloReply);
        reply.status = status;
        mFromPeer->send(bytesOf(reply));
    }
    static void expectUsed(RawConnection& connection) {
        const FrameHeader request = connection.receive();
        EXPECT_EQ(request.kind, FrameKind::kAcquire);
        EXPECT_EQ(request.target, 77u);
    }

  private:
    const std::string mName;
    const std::string mPeerSocket;
    const int mListener;
    RawConnection mSender;
    std::unique_ptr<RawConnection> mFromPeer;
};

// Names of processes begin with p.
TEST(Connecting, AtTheSameTimeKeepsTheConnectionOfTheSmallerName) {
    Peer peer = startPeer();
    OtherProcess smaller("a" + std::to_string(getpid()), peer);
    binder_status_t answer = -1;
    auto mine = smaller.connect(&answer);
    EXPECT_EQ(answer, STATUS_OK);
    smaller.answer(STATUS_WOULD_BLOCK);
    EXPECT_TRUE(smaller.fromPeer().isClosed());
    OtherProcess::expectUsed(*mine);
}

TEST(Connecting, AtTheSameTimeTellsTheGreaterNameToWait) {
    Peer peer = startPeer();
    OtherProcess greater("z" + std::to_string(getpid()), peer);
    binder_status_t answer = -1;
    auto mine = greater.connect(&answer);
    EXPECT_EQ(answer, STATUS_WOULD_BLOCK);
    EXPECT_TRUE(mine->isClosed());
    greater.answer(STATUS_OK);
    OtherProcess::expectUsed(greater.fromPeer());
    mine = greater.connect(&answer);
    EXPECT_EQ(answer, STATUS_WOULD_BLOCK) << "also once the connection is there";
}

TEST(Connecting, AgainAfterALossReplacesTheLostConnection) {
    Peer peer = startPeer();
    OtherProcess smaller("a" + std::to_string(getpid()), peer);
    smaller.answer(STATUS_OK);
    OtherProcess::expectUsed(smaller.fromPeer());
    binder_status_t answer = -1;
    auto again = smaller.connect(&answer);
    EXPECT_EQ(answer, STATUS_OK);
    EXPECT_TRUE(smaller.fromPeer().isClosed());
}

TEST(Connecting, OfRealProcessesToEachOtherGivesWorkingCalls) {
    for (int round = 0; round < 8; ++round) {
        Peer first = startPeer();
        Peer second = startPeer();
        // Neither knows the other yet: each call makes its callee connect.
        auto forth = std::async(std::launch::async,
                                [&]() { return callThrough(first.binder, second.binder, 1); });
        EXPECT_EQ(callThrough(second.binder, first.binder, 2), 3);
        EXPECT_EQ(forth.get(), 2);
    }
}

}  // namespace
