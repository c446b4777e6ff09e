// Peers with a bug. A malformed message ends its own connection, a peer that speaks the wire format
// well but floods, nests or does not read is refused; others are served on, and nothing stays
// behind.
#include <gtest/gtest.h>
#include <unistd.h>

#include "host/libbinder_ndk/parcel.h"
#include "host/libbinder_ndk/peer.h"
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

// The beginning of a request to the peer's object.
std::string RequestStart() {
    AParcel parcel;
    hostbinder::WriteInterfaceHeader(&parcel, "test.IPeer");
    return {reinterpret_cast<const char*>(parcel.Data()), parcel.Size()};
}

// The arguments of kCall with a new object of the sender's, whose class the peer asks for.
std::string ArgumentsOfCall() {
    return BytesOf(ObjectRecord{hostbinder::kBinderHandle, 0, 0, 0}) +
           BytesOf(int32_t{hostbinder::kStabilitySystem}) + BytesOf(int32_t{1});
}

class MisbehavingPeer : public testing::Test {
  protected:
    explicit MisbehavingPeer(const end_to_end::Subprocess::Environment& environment = {})
        : m_peer(StartPeer(environment)) {}
    ~MisbehavingPeer() override {
        EXPECT_EQ(Add(m_peer.binder, 1), 2);
        EXPECT_TRUE(Eventually([&]() {
            const ProcessCounts now = CountsOf(m_peer.process->Pid());
            return now.descriptors <= m_before.descriptors && now.threads <= m_before.threads + 16;
        })) << "pool threads stay, and nothing else";
    }
    FrameHeader CallHeader(uint32_t code, size_t dataSize) {
        FrameHeader header = HeaderOf(FrameKind::kCall, dataSize);
        header.target = m_object;
        header.code = code;
        return header;
    }
    std::string Call(uint64_t id, uint32_t code, const std::string& body) {
        FrameHeader header = CallHeader(code, body.size());
        header.id = id;
        return BytesOf(header) + body;
    }
    // A call of kCall with these arguments. Objects are at these places in them, each with this
    // reference.
    std::string CallWithObjects(const std::string& arguments, const std::vector<size_t>& places,
                                const ReferenceRecord& reference) {
        std::string body = RequestStart() + arguments;
        FrameHeader header = CallHeader(kCall, body.size());
        header.chain = 7;
        header.objectCount = header.referenceCount = static_cast<uint32_t>(places.size());
        for (size_t place : places) {
            body += BytesOf(static_cast<uint32_t>(RequestStart().size() + place));
        }
        for (size_t i = 0; i < places.size(); ++i) body += BytesOf(reference);
        return BytesOf(header) + body;
    }
    // Expects the message to end its connection without an answer, and the peer to live on.
    void ExpectRefused(const char* what, const std::string& message,
                       const std::vector<int>& fds = {}) {
        RawConnection connection(m_socket, m_object);
        connection.Send(message, fds);
        EXPECT_TRUE(connection.IsClosed()) << what;
        EXPECT_EQ(Add(m_peer.binder, 1), 2) << what;
    }

    Peer m_peer;
    const std::string m_socket = m_peer.binder.get()->AsProxy()->Owner()->PeerName();
    const uint64_t m_object = m_peer.binder.get()->AsProxy()->Number();
    const ProcessCounts m_before = CountsOf(m_peer.process->Pid());
};

constexpr ReferenceRecord kMine{ReferenceOwner::kSender, 0, 5, {}};

TEST_F(MisbehavingPeer, LosesItsConnectionByABadHeader) {
    FrameHeader bad = HeaderOf(FrameKind::kAcquire);  // with the magic number it is answered
    bad.target = m_object;
    bad.magic ^= 1;
    ExpectRefused("magic", BytesOf(bad));
    ExpectRefused("kind", BytesOf(HeaderOf(static_cast<FrameKind>(99))));
    ExpectRefused("greeting", BytesOf(HeaderOf(FrameKind::kHello)));
    ExpectRefused("size", BytesOf(HeaderOf(FrameKind::kCall, hostbinder::kMaxParcelBytes + 1)));
    ExpectRefused("content without a parcel", BytesOf(HeaderOf(FrameKind::kAcquire, 8)));
    bad = HeaderOf(FrameKind::kCall, 24);
    bad.objectCount = bad.referenceCount = 2;
    ExpectRefused("more objects than fit", BytesOf(bad));
    bad.objectCount = 1;
    bad.referenceCount = bad.descriptorCount = 1;
    ExpectRefused("counts that do not add up", BytesOf(bad));
    bad = HeaderOf(FrameKind::kReply);
    ExpectRefused("reply to no call", BytesOf(bad));
    bad.kind = FrameKind::kRelease;
    bad.target = m_object;
    bad.id = 2;  // one more than the connection has
    ExpectRefused("release of too many", BytesOf(bad));
    bad = CallHeader(kAdd, 0);
    ndk::SpAIBinder other = GetBinder(m_peer.binder, kNewObject);
    bad.target = other.get()->AsProxy()->Number();
    ExpectRefused("object of another connection", BytesOf(bad));
    other = nullptr;
    EXPECT_TRUE(Eventually([&]() { return AskPeer(m_peer.binder, kLiveObjects) == 1; }));
    bad.kind = FrameKind::kAcquire;
    RawConnection asks(m_socket, m_object);
    asks.Send(BytesOf(bad));
    EXPECT_EQ(asks.Receive().status, STATUS_NAME_NOT_FOUND) << "it has ended";
    RawConnection callsFirst(m_socket);
    callsFirst.Send(BytesOf(HeaderOf(FrameKind::kCall)));
    EXPECT_TRUE(callsFirst.IsClosed()) << "no greeting";
}

TEST_F(MisbehavingPeer, LosesItsConnectionByABadBody) {
    const std::string whole = Call(1, kAdd, std::string(8, '\0'));
    for (size_t size : {size_t{1}, sizeof(FrameHeader) - 1, sizeof(FrameHeader) + 3}) {
        RawConnection connection(m_socket, m_object);
        connection.Send(whole.substr(0, size), {STDERR_FILENO});
        connection.EndSending();
        EXPECT_TRUE(connection.IsClosed()) << "ends early";
    }
    ExpectRefused("unannounced descriptor", Call(1, kAdd, "1234"), {STDERR_FILENO});
    FrameHeader missing = CallHeader(kAdd, sizeof(ObjectRecord));
    missing.objectCount = missing.descriptorCount = 1;
    ExpectRefused("missing descriptor",
                  BytesOf(missing) + BytesOf(ObjectRecord{hostbinder::kDescriptor, 0, 0, 0}) +
                          BytesOf(uint32_t{0}));
}

TEST_F(MisbehavingPeer, LosesItsConnectionByABadObject) {
    const ObjectRecord good{hostbinder::kBinderHandle, 0, 0, 0};
    struct Case {
        const char* what;
        ObjectRecord record;
        size_t place;
        ReferenceRecord reference;
    };
    for (const Case& c : std::vector<Case>{
                 {"behind the end", good, 12, kMine},
                 {"at the largest offset", good, UINT32_MAX - 3 - RequestStart().size(), kMine},
                 {"unaligned", good, 2, kMine},
                 {"unknown type", {1, 0, 0, 0}, 0, kMine},
                 {"index out of range", {hostbinder::kBinderHandle, 0, 1, 0}, 0, kMine},
                 {"descriptor without one", {hostbinder::kDescriptor, 0, 0, 0}, 0, kMine},
                 {"owner", good, 0, {static_cast<ReferenceOwner>(9), 0, 5, {}}},
                 {"unknown object", good, 0, {ReferenceOwner::kReceiver, 0, 99, {}}},
         }) {
        ExpectRefused(c.what, CallWithObjects(BytesOf(c.record) + std::string(8, '\0'), {c.place},
                                              c.reference));
    }
    // The first record's cookie is the second one's type.
    const ObjectRecord first{hostbinder::kBinderHandle, 0, 0, hostbinder::kBinderHandle};
    ExpectRefused("overlap", CallWithObjects(BytesOf(first) + std::string(24, '\0'), {0, 16},
                                             {ReferenceOwner::kReceiver, 0, m_object, {}}));
}

struct FloodingPeer : MisbehavingPeer {
    FloodingPeer() : MisbehavingPeer({{"PEER_LATE_POOL", "1"}}) {}
};

TEST_F(FloodingPeer, IsRefusedWhatNoLongerFits) {
    constexpr size_t kSize = 512 * 1024;
    constexpr uint64_t kFit = 7;  // in 4 MiB, with what each call takes besides
    constexpr uint64_t kCalls = 12;
    RawConnection flood(m_socket, m_object);
    for (uint64_t id = 1; id <= kCalls; ++id) {
        flood.Send(Call(id, kAdd, std::string(kSize, '\0')));
        if (id <= kFit) continue;
        const FrameHeader refusal = flood.Receive();
        EXPECT_EQ(refusal.id, id);
        EXPECT_EQ(refusal.status, STATUS_FAILED_TRANSACTION);
    }
    m_peer.process->Type("x");  // starts the pool
    for (uint64_t i = 0; i < kFit; ++i) EXPECT_EQ(flood.Receive().status, STATUS_BAD_TYPE);
    flood.Send(Call(99, hostbinder::kPingCode, ""));
    EXPECT_EQ(flood.Receive().status, STATUS_OK) << "there is room again";
}

TEST_F(MisbehavingPeer, WhoseCallsBackNestWithoutEndIsRefused) {
    RawConnection nesting(m_socket, m_object);
    FrameHeader answer{};
    int depth = 0;
    do {
        nesting.Send(CallWithObjects(ArgumentsOfCall(), {0}, kMine));
        answer = nesting.Receive();
        ++depth;
    } while (answer.kind == FrameKind::kCall && depth < 1000);
    EXPECT_EQ(answer.status, STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(depth, 65);
}

TEST_F(MisbehavingPeer, ThatDoesNotReadOrAnswerLosesItsConnection) {
    const std::string large = RequestStart() + BytesOf(uint32_t{64 * 1024}) +
                              std::string(64 * 1024, '\0') + BytesOf(uint32_t{0});
    RawConnection unread(m_socket, m_object);
    for (uint64_t id = 1; id <= 20; ++id) unread.Send(Call(id, kEcho, large));
    RawConnection greeting(m_socket);
    greeting.Send(BytesOf(HeaderOf(FrameKind::kHello, 8)));
    RawConnection half(m_socket, m_object);
    half.Send(Call(1, kAdd, "12345678").substr(0, sizeof(FrameHeader) + 4));
    RawConnection silent(m_socket, m_object);
    silent.Send(CallWithObjects(ArgumentsOfCall(), {0}, kMine));
    EXPECT_EQ(silent.Receive().code, hostbinder::kDescriptorCode) << "never answered";
    for (RawConnection* connection : {&greeting, &half, &silent}) {
        EXPECT_TRUE(connection->IsClosed(20));
    }
}

}  // namespace
