// Every number of the wire format: special codes, words of the headers in a parcel, object records
// and the frame that carries a parcel over a socket. All integers are little endian.
#pragma once

#include <cstddef>
#include <cstdint>

namespace hostbinder {

constexpr uint32_t PackCode(char a, char b, char c, char d) {
    return static_cast<uint32_t>(static_cast<uint8_t>(a)) << 24 |
           static_cast<uint32_t>(static_cast<uint8_t>(b)) << 16 |
           static_cast<uint32_t>(static_cast<uint8_t>(c)) << 8 | static_cast<uint8_t>(d);
}

// Codes every object answers, outside of the range of its class.
constexpr uint32_t kPingCode = PackCode('_', 'P', 'N', 'G');
constexpr uint32_t kDescriptorCode = PackCode('_', 'N', 'T', 'F');

// Interface header of a request: strict-mode word, work source, tag, then the descriptor as String.
constexpr uint32_t kStrictModePresent = 1u << 31;
constexpr int32_t kWorkSourceUnset = -1;
constexpr uint32_t kHeaderTag = PackCode('S', 'Y', 'S', 'T');

// Exception value of a reply header that is followed by a block to skip and means "no exception".
constexpr int32_t kSkipBlockException = -128;

// Object record inside the bytes of a parcel. `handle` is an index into the message's table of
// references (kBinderHandle) or of descriptors (kDescriptor), where the kernel would have its own
// handle or descriptor number; kBinderNull has no entry. `cookie` is always 0.
struct ObjectRecord {
    uint32_t type;
    uint32_t flags;
    uint64_t handle;
    uint64_t cookie;
};
static_assert(sizeof(ObjectRecord) == 24);
constexpr uint32_t kBinderNull = PackCode('s', 'b', '*', '\x85');
constexpr uint32_t kBinderNullFlags = 0x13;  // the kernel's scheduling hint, which has no use here
constexpr uint32_t kBinderHandle = PackCode('s', 'h', '*', '\x85');
constexpr uint32_t kDescriptor = PackCode('f', 'd', '*', '\x85');

// Stability levels, written as int32 after each binder.
constexpr int16_t kStabilityUndeclared = 0;
constexpr int16_t kStabilityVendor = 0b000011;
constexpr int16_t kStabilitySystem = 0b001100;
constexpr int16_t kStabilityVintf = 0b111111;

// A frame: FrameHeader, dataSize bytes of parcel, objectCount uint32 offsets of object records in
// ascending order, referenceCount ReferenceRecords. Descriptors come with the frame's first byte.
enum class FrameKind : uint32_t {
    kHello = 1,       // first frame of a connection; data: the caller's socket name
    kHelloReply = 2,  // status: STATUS_OK, or STATUS_WOULD_BLOCK if the other direction connects
    kCall = 3,        // id, target, chain, code, flags, parcel
    kReply = 4,       // id, status, parcel; answers kCall and kAcquire
    kAcquire = 5,     // id, target: the sender wants a reference of its own to the target
    kRelease = 6,     // target, id: the sender gives back that many references
    kReferencesTaken = 7,  // id: acknowledges a frame's referencesId
};
constexpr uint32_t kFrameMagic = PackCode('1', 'R', 'D', 'B');

struct FrameHeader {
    uint32_t magic;
    FrameKind kind;
    uint64_t id;
    uint64_t target;        // number of an object of the receiver
    uint64_t chain;         // synchronous call chain this call belongs to; 0: none
    uint64_t referencesId;  // not 0: hold until kReferencesTaken comes with this id
    uint32_t code;
    uint32_t flags;
    int32_t status;
    uint32_t dataSize;
    uint32_t objectCount;
    uint32_t referenceCount;
    uint32_t descriptorCount;
    uint32_t reserved;
};
static_assert(sizeof(FrameHeader) == 72);

// One reference to an object: its owner and its number there.
enum class ReferenceOwner : uint32_t {
    kSender = 1,
    kReceiver = 2,
    kOther = 3,  // the process with socket `name`
};
constexpr size_t kMaxSocketName = 47;
struct ReferenceRecord {
    ReferenceOwner owner;
    uint32_t reserved;
    uint64_t number;
    char name[kMaxSocketName + 1];  // NUL-padded; empty unless kOther
};
static_assert(sizeof(ReferenceRecord) == 64);

// The size of the kernel's buffer for a process: what a device refuses is refused here.
constexpr uint32_t kMaxParcelBytes = 1024 * 1024 - 2 * 4096;
// The kernel's limit on descriptors of one socket message.
constexpr uint32_t kMaxDescriptors = 253;

// The service manager: a fixed socket name, and a fixed number for the object in it.
constexpr const char* kServiceManagerSocket = "servicemanager";
constexpr uint64_t kContextObject = 0;

}  // namespace hostbinder
