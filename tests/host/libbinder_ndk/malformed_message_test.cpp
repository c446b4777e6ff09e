// Messages that no sound peer sends: each ends its own connection, and nothing else.
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
    // Sends the bytes over a connection that has the peer's first object. Expects it to end without
    // an answer, the peer to live on, and no descriptor to stay behind.
    void ExpectRefused(const char* what, const FrameHeader& header, const std::string& body = "",
                       const std::vector<int>& fds = {}) {
        RawConnection connection(mSocket, mObject);
        connection.send(bytesOf(header, body), fds);
        EXPECT_TRUE(connection.isClosed()) << what;
        EXPECT_EQ(add(mPeer.binder, 1), 2) << what;
    }
    FrameHeader CallHeader(uint32_t dataSize) const {
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
    FrameHeader bad = frameHeader(FrameKind::kAcquire);  // with the magic number it is answered
    bad.target = mObject;
    bad.magic ^= 1;
    ExpectRefused("magic", bad);
    ExpectRefused("kind", frameHeader(static_cast<FrameKind>(99)));
    ExpectRefused("greeting", frameHeader(FrameKind::kHello));
    ExpectRefused("size", frameHeader(FrameKind::kCall, hostbinder::kMaxParcelBytes + 1));
    ExpectRefused("content without a parcel", frameHeader(FrameKind::kAcquire, 8));
    bad = frameHeader(FrameKind::kCall, 24);
    bad.objectCount = bad.referenceCount = 2;
    ExpectRefused("more objects than fit", bad);
    bad.objectCount = 1;
    bad.referenceCount = UINT32_MAX;
    bad.descriptorCount = 2;
    ExpectRefused("sum of counts wraps around", bad);
}

TEST_F(MalformedMessage, ThatEndsEarly) {
    for (size_t size : {size_t{1}, sizeof(FrameHeader) - 1, sizeof(FrameHeader) + 3}) {
        RawConnection connection(mSocket, mObject);
        const std::string whole = bytesOf(CallHeader(8), std::string(8, '\0'));
        connection.send(whole.substr(0, size), {STDERR_FILENO});
        connection.endSending();
        EXPECT_TRUE(connection.isClosed());
    }
    EXPECT_EQ(add(mPeer.binder, 1), 2);
}

TEST_F(MalformedMessage, WithOtherDescriptorsThanAnnounced) {
    ExpectRefused("unannounced", CallHeader(4), "1234", {STDERR_FILENO});
    FrameHeader missing = CallHeader(sizeof(ObjectRecord));
    missing.objectCount = missing.descriptorCount = 1;
    std::string body;
    appendBytes(&body, ObjectRecord{hostbinder::kDescriptor, 0, 0, 0});
    appendBytes(&body, uint32_t{0});
    ExpectRefused("missing", missing, body);
    missing.descriptorCount = 0;
    missing.referenceCount = 1;
    appendBytes(&body, ReferenceRecord{ReferenceOwner::kSender, 0, 5, {}});
    ExpectRefused("a reference in its place", missing, body, {STDERR_FILENO});
}

TEST_F(MalformedMessage, ForWhatThePeerDoesNotKnow) {
    FrameHeader header = frameHeader(FrameKind::kCall);
    header.target = hostbinder::kContextObject;
    ExpectRefused("object", header);
    header.kind = FrameKind::kReply;
    ExpectRefused("reply", header);
    header.kind = FrameKind::kRelease;
    header.target = mObject;
    header.id = 2;  // one more than the connection gets
    ExpectRefused("release of too many", header);
    RawConnection without(mSocket);
    ASSERT_TRUE(without.greet());
    without.send(bytesOf(CallHeader(0)));
    EXPECT_TRUE(without.isClosed()) << "the object was never handed to this connection";
}

TEST_F(MalformedMessage, WithBadObjects) {
    const ObjectRecord good{hostbinder::kBinderHandle, 0, 0, 0};
    const ReferenceRecord mine{ReferenceOwner::kSender, 0, 5, {}};
    const ObjectRecord descriptor{hostbinder::kDescriptor, 0, 0, 0};
    struct Case {
        const char* what;
        ObjectRecord record;
        uint32_t offset;
        ReferenceRecord reference;
    };
    for (const Case& c : std::vector<Case>{
                 {"behind the end", good, 12, mine},
                 {"at the largest offset", good, UINT32_MAX - 3, mine},
                 {"unaligned", good, 2, mine},
                 {"unknown type", {1, 0, 0, 0}, 0, mine},
                 {"index out of range", {hostbinder::kBinderHandle, 0, 1, 0}, 0, mine},
                 {"descriptor without one", descriptor, 0, mine},
                 {"owner", good, 0, {static_cast<ReferenceOwner>(9), 0, 5, {}}},
                 {"unknown object", good, 0, {ReferenceOwner::kReceiver, 0, 99, {}}},
         }) {
        FrameHeader call = CallHeader(32);
        call.objectCount = call.referenceCount = 1;
        std::string body;
        appendBytes(&body, c.record);
        appendBytes(&body, uint64_t{0});
        appendBytes(&body, c.offset);
        appendBytes(&body, c.reference);
        ExpectRefused(c.what, call, body);
    }
    FrameHeader call = CallHeader(48);
    call.objectCount = call.referenceCount = 2;
    std::string body;
    // The first record's cookie is the second one's type.
    appendBytes(&body, ObjectRecord{hostbinder::kBinderHandle, 0, 0, hostbinder::kBinderHandle});
    for (uint64_t word : {1u, 0u, 0u}) appendBytes(&body, word);
    for (uint32_t offset : {0u, 16u}) appendBytes(&body, offset);
    for (int i = 0; i < 2; ++i) {
        appendBytes(&body, ReferenceRecord{ReferenceOwner::kReceiver, 0, mObject, {}});
    }
    ExpectRefused("overlap", call, body);
}

TEST_F(MalformedMessage, InPlaceOfAGreeting) {
    RawConnection callsFirst(mSocket);
    callsFirst.send(bytesOf(frameHeader(FrameKind::kCall)));
    EXPECT_TRUE(callsFirst.isClosed());
}

}  // namespace
