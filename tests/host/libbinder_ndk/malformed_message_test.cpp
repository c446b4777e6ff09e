// Messages that no honest peer sends: each ends its own connection, and nothing else.
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/raw_connection.h"
#include "tests/host/libbinder_ndk/test_bus.h"

namespace {

using hostbinder::FrameHeader;
using hostbinder::FrameKind;
using hostbinder::ObjectRecord;
using hostbinder::ReferenceOwner;
using hostbinder::ReferenceRecord;

class MalformedMessage : public testing::Test {
  protected:
    // Sends the bytes after a proper greeting and expects the connection to end, the peer to
    // live on, and no descriptor to stay behind.
    void expectRefused(const char* what, const std::string& bytes) {
        RawConnection connection(mSocket);
        ASSERT_TRUE(connection.greet()) << what;
        expectRefused(what, &connection, bytes);
    }
    // The same for a message to the peer's first object, which the connection gets before.
    void expectCallRefused(const char* what, const FrameHeader& header, const std::string& body,
                           const std::vector<int>& fds = {}) {
        RawConnection connection(mSocket, mObject);
        expectRefused(what, &connection, bytesOf(header, body), fds);
    }
    void expectRefused(const char* what, RawConnection* connection, const std::string& bytes,
                       const std::vector<int>& fds = {}) {
        connection->send(bytes, fds);
        EXPECT_TRUE(connection->isClosed()) << what;
        EXPECT_EQ(add(mPeer.binder, 1), 2) << what;
    }
    FrameHeader callHeader(uint32_t dataSize) const {
        FrameHeader header = frameHeader(FrameKind::kCall, dataSize);
        header.target = mObject;
        header.code = kAdd;
        return header;
    }
    void SetUp() override {
        add(mPeer.binder, 1);
        mDescriptors = askPeer(mPeer.binder, kCountFds);
    }
    void TearDown() override {
        EXPECT_TRUE(eventually([&]() { return askPeer(mPeer.binder, kCountFds) == mDescriptors; }));
    }

    Peer mPeer = startPeer();
    const std::string mSocket = peerSocket(mPeer.process.pid());
    const uint64_t mObject = numberOf(mPeer.binder);
    int32_t mDescriptors = 0;
};

TEST_F(MalformedMessage, WithABadHeader) {
    FrameHeader bad = frameHeader(FrameKind::kCall);
    bad.magic ^= 1;
    expectRefused("magic", bytesOf(bad));
    expectRefused("kind", bytesOf(frameHeader(static_cast<FrameKind>(99))));
    expectRefused("greeting", bytesOf(frameHeader(FrameKind::kHello)));
    expectRefused("size", bytesOf(frameHeader(FrameKind::kCall, hostbinder::kMaxParcelBytes + 1)));
    expectRefused("largest size", bytesOf(frameHeader(FrameKind::kCall, UINT32_MAX)));
    expectRefused("content without a parcel", bytesOf(frameHeader(FrameKind::kAcquire, 8)));
    FrameHeader objects = frameHeader(FrameKind::kCall, 24);
    objects.objectCount = 2;
    objects.referenceCount = 2;
    expectRefused("more objects than fit", bytesOf(objects));
    FrameHeader counts = frameHeader(FrameKind::kCall, 48);
    counts.objectCount = 1;
    counts.referenceCount = UINT32_MAX;
    counts.descriptorCount = 2;
    expectRefused("sum of counts wraps around", bytesOf(counts));
}

TEST_F(MalformedMessage, ThatEndsEarly) {
    for (size_t size : {size_t{1}, sizeof(FrameHeader) - 1, sizeof(FrameHeader) + 3}) {
        RawConnection connection(mSocket);
        ASSERT_TRUE(connection.greet());
        const std::string whole = bytesOf(frameHeader(FrameKind::kCall, 8), std::string(8, '\0'));
        connection.send(whole.substr(0, size), {STDERR_FILENO});
        connection.endSending();
        EXPECT_TRUE(connection.isClosed());
    }
    EXPECT_EQ(add(mPeer.binder, 1), 2);
}

TEST_F(MalformedMessage, WithOtherDescriptorsThanAnnounced) {
    expectCallRefused("unannounced", callHeader(4), "1234", {STDERR_FILENO});
    FrameHeader missing = callHeader(sizeof(ObjectRecord));
    missing.objectCount = missing.descriptorCount = 1;
    std::string body;
    appendBytes(&body, ObjectRecord{hostbinder::kDescriptor, 0, 0, 0});
    appendBytes(&body, uint32_t{0});
    expectCallRefused("missing", missing, body);
    missing.descriptorCount = 0;
    missing.referenceCount = 1;
    appendBytes(&body, ReferenceRecord{ReferenceOwner::kSender, 0, 5, {}});
    expectCallRefused("a reference in its place", missing, body, {STDERR_FILENO});
}

TEST_F(MalformedMessage, ForWhatThePeerDoesNotKnow) {
    FrameHeader unknown = frameHeader(FrameKind::kCall);
    unknown.target = mObject;  // exists, but was never handed to this connection
    expectRefused("object of another peer", bytesOf(unknown));
    unknown.target = hostbinder::kContextObject;
    expectRefused("context object", bytesOf(unknown));
    FrameHeader reply = frameHeader(FrameKind::kReply);
    reply.id = 77;
    expectRefused("reply", bytesOf(reply));
    FrameHeader release = frameHeader(FrameKind::kRelease);
    release.target = mObject;
    release.id = 1;
    expectRefused("release", bytesOf(release));
    release.id = 2;  // one more than the connection gets
    expectCallRefused("release of too many", release, "");
}

TEST_F(MalformedMessage, WithBadObjects) {
    auto expectRecordRefused = [&](const char* what, const ObjectRecord& record, uint32_t offset,
                                   const ReferenceRecord& reference) {
        FrameHeader call = callHeader(32);
        call.objectCount = call.referenceCount = 1;
        std::string body;
        appendBytes(&body, record);
        appendBytes(&body, uint64_t{0});
        appendBytes(&body, offset);
        appendBytes(&body, reference);
        expectCallRefused(what, call, body);
    };
    const ObjectRecord good{hostbinder::kBinderHandle, 0, 0, 0};
    const ReferenceRecord mine{ReferenceOwner::kSender, 0, 5, {}};
    expectRecordRefused("behind the end", good, 12, mine);
    expectRecordRefused("at the largest offset", good, UINT32_MAX - 3, mine);
    expectRecordRefused("unaligned", good, 2, mine);
    expectRecordRefused("unknown type", {1, 0, 0, 0}, 0, mine);
    expectRecordRefused("index out of range", {hostbinder::kBinderHandle, 0, 1, 0}, 0, mine);
    expectRecordRefused("descriptor without one", {hostbinder::kDescriptor, 0, 0, 0}, 0, mine);
    expectRecordRefused("owner", good, 0, {static_cast<ReferenceOwner>(9), 0, 5, {}});
    expectRecordRefused("unknown object", good, 0, {ReferenceOwner::kReceiver, 0, 99, {}});
}

TEST_F(MalformedMessage, WithObjectsThatOverlap) {
    FrameHeader call = callHeader(48);
    call.objectCount = call.referenceCount = 2;
    std::string body;
    // The first record's cookie is the second one's type.
    appendBytes(&body, ObjectRecord{hostbinder::kBinderHandle, 0, 0, hostbinder::kBinderHandle});
    for (uint64_t word : {1u, 0u, 0u}) appendBytes(&body, word);
    for (uint32_t offset : {0u, 16u}) appendBytes(&body, offset);
    // References to the peer's own object: others it would give back before it hangs up.
    for (int i = 0; i < 2; ++i) {
        appendBytes(&body, ReferenceRecord{ReferenceOwner::kReceiver, 0, mObject, {}});
    }
    expectCallRefused("overlap", call, body);
}

TEST_F(MalformedMessage, WithABadGreeting) {
    for (const std::string& name :
         {std::string("../x"), std::string(), std::string(48, 'n'), std::string("a\0b", 3)}) {
        RawConnection connection(mSocket);
        connection.sendHello(name);
        EXPECT_TRUE(connection.isClosed());
    }
    RawConnection callsFirst(mSocket);
    callsFirst.send(bytesOf(frameHeader(FrameKind::kCall)));
    EXPECT_TRUE(callsFirst.isClosed());
    EXPECT_EQ(add(mPeer.binder, 1), 2);
}

}  // namespace
