// Messages that no honest peer sends: each ends its own connection, and nothing else.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "host/libbinder_ndk/wire_format.h"
#include "tests/host/libbinder_ndk/peer_service.h"
#include "tests/host/libbinder_ndk/test_bus.h"

namespace {

using hostbinder::FrameHeader;
using hostbinder::FrameKind;
using hostbinder::ObjectRecord;
using hostbinder::ReferenceOwner;
using hostbinder::ReferenceRecord;

FrameHeader header(FrameKind kind, uint32_t dataSize = 0) {
    FrameHeader header{};
    header.magic = hostbinder::kFrameMagic;
    header.kind = kind;
    header.dataSize = dataSize;
    return header;
}

template <typename T>
void append(std::string* bytes, const T& value) {
    bytes->append(reinterpret_cast<const char*>(&value), sizeof(value));
}

std::string bytesOf(const FrameHeader& header, const std::string& body = "") {
    std::string bytes;
    append(&bytes, header);
    return bytes + body;
}

// A connection to a peer that speaks for itself.
class RawConnection {
  public:
    explicit RawConnection(const std::string& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
        mFd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        const timeval limit{20, 0};
        setsockopt(mFd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
        EXPECT_EQ(connect(mFd, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0) << path;
    }
    ~RawConnection() { close(mFd); }

    bool greet() {
        static int count = 0;
        const std::string name = "raw" + std::to_string(getpid()) + "-" + std::to_string(++count);
        send(bytesOf(header(FrameKind::kHello, static_cast<uint32_t>(name.size())), name));
        FrameHeader answer{};
        receive(&answer);
        return answer.kind == FrameKind::kHelloReply && answer.status == STATUS_OK;
    }
    // The descriptors go with the first byte. What the peer no longer reads is lost.
    void send(const std::string& bytes, const std::vector<int>& fds = {}) {
        iovec part{const_cast<char*>(bytes.data()), bytes.size()};
        alignas(cmsghdr) char control[1100] = {};
        msghdr message{};
        message.msg_iov = &part;
        message.msg_iovlen = 1;
        if (!fds.empty()) {
            message.msg_control = control;
            message.msg_controllen = CMSG_SPACE(fds.size() * sizeof(int));
            cmsghdr* entry = CMSG_FIRSTHDR(&message);
            entry->cmsg_level = SOL_SOCKET;
            entry->cmsg_type = SCM_RIGHTS;
            entry->cmsg_len = CMSG_LEN(fds.size() * sizeof(int));
            memcpy(CMSG_DATA(entry), fds.data(), fds.size() * sizeof(int));
        }
        EXPECT_EQ(sendmsg(mFd, &message, MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
    }
    void receive(FrameHeader* frame) {
        EXPECT_EQ(recv(mFd, frame, sizeof(*frame), MSG_WAITALL),
                  static_cast<ssize_t>(sizeof(*frame)));
    }
    void endSending() { shutdown(mFd, SHUT_WR); }
    // Whether the peer closes the connection without sending anything more.
    bool isClosed() {
        char byte;
        const ssize_t got = recv(mFd, &byte, 1, 0);
        return got == 0 || (got < 0 && errno == ECONNRESET);
    }

  private:
    int mFd = -1;
};

class MalformedMessage : public testing::Test {
  protected:
    // Sends the bytes after a proper greeting and expects the connection to end, the peer to
    // live on, and no descriptor to stay behind.
    void expectRefused(const char* what, const std::string& bytes, bool withDescriptor = false) {
        SCOPED_TRACE(what);
        RawConnection connection(mSocket);
        ASSERT_TRUE(connection.greet());
        connection.send(bytes,
                        withDescriptor ? std::vector<int>{STDERR_FILENO} : std::vector<int>{});
        EXPECT_TRUE(connection.isClosed());
        EXPECT_EQ(add(mPeer.binder, 1), 2);
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
    int32_t mDescriptors = 0;
};

TEST_F(MalformedMessage, WithABadHeader) {
    FrameHeader bad = header(FrameKind::kCall);
    bad.magic ^= 1;
    expectRefused("magic", bytesOf(bad));
    expectRefused("kind", bytesOf(header(static_cast<FrameKind>(99))));
    expectRefused("greeting", bytesOf(header(FrameKind::kHello)));
    expectRefused("size", bytesOf(header(FrameKind::kCall, hostbinder::kMaxParcelBytes + 1)));
    expectRefused("largest size", bytesOf(header(FrameKind::kCall, UINT32_MAX)));
    FrameHeader objects = header(FrameKind::kCall, 24);
    objects.objectCount = 2;
    objects.referenceCount = 2;
    expectRefused("more objects than fit", bytesOf(objects));
    FrameHeader counts = header(FrameKind::kCall, 48);
    counts.objectCount = 1;
    counts.referenceCount = UINT32_MAX;
    counts.descriptorCount = 2;
    expectRefused("sum of counts wraps around", bytesOf(counts));
}

TEST_F(MalformedMessage, ThatEndsEarly) {
    for (size_t size : {size_t{1}, sizeof(FrameHeader) - 1, sizeof(FrameHeader) + 3}) {
        RawConnection connection(mSocket);
        ASSERT_TRUE(connection.greet());
        const std::string whole = bytesOf(header(FrameKind::kCall, 8), std::string(8, '\0'));
        connection.send(whole.substr(0, size), {STDERR_FILENO});
        connection.endSending();
        EXPECT_TRUE(connection.isClosed());
    }
    EXPECT_EQ(add(mPeer.binder, 1), 2);
}

TEST_F(MalformedMessage, WithOtherDescriptorsThanAnnounced) {
    expectRefused("unannounced", bytesOf(header(FrameKind::kCall, 4), "1234"), true);
    FrameHeader missing = header(FrameKind::kCall, sizeof(ObjectRecord));
    missing.objectCount = missing.descriptorCount = 1;
    std::string body;
    append(&body, ObjectRecord{hostbinder::kDescriptor, 0, 0, 0});
    append(&body, uint32_t{0});
    expectRefused("missing", bytesOf(missing, body));
}

TEST_F(MalformedMessage, ForWhatThePeerDoesNotKnow) {
    FrameHeader unknown = header(FrameKind::kCall);
    unknown.target = 1;  // exists, but was never handed to this connection
    expectRefused("object of another peer", bytesOf(unknown));
    unknown.target = hostbinder::kContextObject;
    expectRefused("context object", bytesOf(unknown));
    FrameHeader reply = header(FrameKind::kReply);
    reply.id = 77;
    expectRefused("reply", bytesOf(reply));
    FrameHeader release = header(FrameKind::kRelease);
    release.target = 1;
    release.id = 1;
    expectRefused("release", bytesOf(release));
}

TEST_F(MalformedMessage, WithBadObjects) {
    // A connection may get an object by its number: then calls with bad content can be made.
    auto expectCallRefused = [&](const char* what, const ObjectRecord& record, uint32_t offset,
                                 const ReferenceRecord& reference) {
        SCOPED_TRACE(what);
        RawConnection connection(mSocket);
        ASSERT_TRUE(connection.greet());
        FrameHeader acquire = header(FrameKind::kAcquire);
        acquire.target = 1;
        FrameHeader call = header(FrameKind::kCall, 32);
        call.target = 1;
        call.code = kAdd;
        call.objectCount = call.referenceCount = 1;
        std::string body;
        append(&body, record);
        append(&body, uint64_t{0});
        append(&body, offset);
        append(&body, reference);
        connection.send(bytesOf(acquire) + bytesOf(call, body));
        FrameHeader acquired{};
        connection.receive(&acquired);
        EXPECT_EQ(acquired.status, STATUS_OK);
        EXPECT_TRUE(connection.isClosed());
        EXPECT_EQ(add(mPeer.binder, 1), 2);
    };
    const ObjectRecord good{hostbinder::kBinderHandle, 0, 0, 0};
    const ReferenceRecord mine{ReferenceOwner::kSender, 0, 5, {}};
    expectCallRefused("behind the end", good, 12, mine);
    expectCallRefused("at the largest offset", good, UINT32_MAX - 3, mine);
    expectCallRefused("unaligned", good, 2, mine);
    expectCallRefused("unknown type", {1, 0, 0, 0}, 0, mine);
    expectCallRefused("index out of range", {hostbinder::kBinderHandle, 0, 1, 0}, 0, mine);
    expectCallRefused("descriptor without one", {hostbinder::kDescriptor, 0, 0, 0}, 0, mine);
    expectCallRefused("owner", good, 0, {static_cast<ReferenceOwner>(9), 0, 5, {}});
    expectCallRefused("unknown object", good, 0, {ReferenceOwner::kReceiver, 0, 99, {}});
}

TEST_F(MalformedMessage, WithABadGreeting) {
    for (const std::string& name :
         {std::string("../x"), std::string(), std::string(48, 'n'), std::string("a\0b", 3)}) {
        RawConnection connection(mSocket);
        connection.send(
                bytesOf(header(FrameKind::kHello, static_cast<uint32_t>(name.size())), name));
        EXPECT_TRUE(connection.isClosed());
    }
    RawConnection callsFirst(mSocket);
    callsFirst.send(bytesOf(header(FrameKind::kCall)));
    EXPECT_TRUE(callsFirst.isClosed());
    EXPECT_EQ(add(mPeer.binder, 1), 2);
}

TEST_F(MalformedMessage, ConnectionsThatComeAndGoLeaveNothingBehind) {
    for (int i = 0; i < 1000; ++i) {
        RawConnection connection(mSocket);
        ASSERT_TRUE(connection.greet());
    }
}

}  // namespace
