// Sending and receiving whole frames with their descriptors.
#include "frame.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>

namespace hostbinder {

namespace {

constexpr std::chrono::milliseconds kSendLimit{4900};
constexpr size_t kControlSize = CMSG_SPACE(kMaxDescriptors * sizeof(int));

void AttachDescriptors(const std::vector<int>& descriptors, char* control, msghdr* message) {
    if (descriptors.empty()) return;
    const size_t bytes = descriptors.size() * sizeof(int);
    message->msg_control = control;
    message->msg_controllen = CMSG_SPACE(bytes);
    memset(control, 0, message->msg_controllen);
    cmsghdr* entry = CMSG_FIRSTHDR(message);
    entry->cmsg_level = SOL_SOCKET;
    entry->cmsg_type = SCM_RIGHTS;
    entry->cmsg_len = CMSG_LEN(bytes);
    memcpy(CMSG_DATA(entry), descriptors.data(), bytes);
}

// Drops `sent` bytes from the front of what is left to send.
void Advance(msghdr* message, size_t sent) {
    while (message->msg_iovlen > 0 && sent >= message->msg_iov[0].iov_len) {
        sent -= message->msg_iov[0].iov_len;
        ++message->msg_iov;
        --message->msg_iovlen;
    }
    if (message->msg_iovlen > 0) {
        message->msg_iov[0].iov_base = static_cast<char*>(message->msg_iov[0].iov_base) + sent;
        message->msg_iov[0].iov_len -= sent;
    }
}

int SendAll(int fd, msghdr* message) {
    const auto limit = std::chrono::steady_clock::now() + kSendLimit;
    bool begun = false;
    while (message->msg_iovlen > 0) {
        // The socket's own limit is for one part.
        if (begun && std::chrono::steady_clock::now() > limit) return EAGAIN;
        const ssize_t sent = sendmsg(fd, message, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0) return errno;
        begun = true;
        message->msg_control = nullptr;  // went with the first byte
        message->msg_controllen = 0;
        Advance(message, static_cast<size_t>(sent));
    }
    return 0;
}

// Keeps the descriptors that came with a piece of data.
void CollectDescriptors(msghdr* message, IncomingFrame* frame) {
    for (cmsghdr* entry = CMSG_FIRSTHDR(message); entry != nullptr;
         entry = CMSG_NXTHDR(message, entry)) {
        if (entry->cmsg_level != SOL_SOCKET || entry->cmsg_type != SCM_RIGHTS) continue;
        const size_t count = (entry->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (size_t i = 0; i < count; ++i) {
            int fd;
            memcpy(&fd, CMSG_DATA(entry) + i * sizeof(int), sizeof(int));
            frame->descriptors.push_back(fd);
        }
    }
    if ((message->msg_flags & MSG_CTRUNC) != 0) frame->descriptorsLost = true;
}

ssize_t ReadSome(int fd, char* bytes, size_t size, IncomingFrame* frame) {
    alignas(cmsghdr) char control[kControlSize];
    iovec place{bytes, size};
    msghdr message{};
    message.msg_iov = &place;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    const ssize_t received = recvmsg(fd, &message, MSG_CMSG_CLOEXEC);
    if (received >= 0) CollectDescriptors(&message, frame);
    return received;
}

// Reads exactly `size` bytes of a frame. Else errno says why, 0 for the connection's end, and *got
// how many bytes came.
bool ReadAll(int fd, void* bytes, size_t size, IncomingFrame* frame, size_t* got) {
    *got = 0;
    while (*got < size) {
        const ssize_t received = ReadSome(fd, static_cast<char*>(bytes) + *got, size - *got, frame);
        if (received < 0 && errno == EINTR) continue;
        if (received == 0) errno = 0;
        if (received <= 0) return false;
        *got += static_cast<size_t>(received);
    }
    return true;
}

// Why a part of a message is missing; errno is as ReadAll left it.
base::Failure EndedWithin(const char* part) {
    std::string cause;
    if (errno == EAGAIN) {
        cause = ": the rest does not come";
    } else if (errno != 0) {
        cause = std::string(": ") + strerror(errno);
    }
    return {std::string("ended within a message's ") + part + cause};
}

bool CarriesParcel(FrameKind kind) {
    return kind == FrameKind::kCall || kind == FrameKind::kReply;
}

uint32_t MaxDataSize(FrameKind kind) {
    if (kind == FrameKind::kHello) return kMaxSocketName;
    return CarriesParcel(kind) ? kMaxParcelBytes : 0;
}

// Empty, or what is wrong with the header.
std::string ProblemOf(const FrameHeader& header) {
    const auto kind = static_cast<uint32_t>(header.kind);
    if (header.magic != kFrameMagic) return "message does not begin with the magic number";
    if (header.kind < FrameKind::kHello || header.kind > FrameKind::kReferencesTaken) {
        return "unknown kind of message " + std::to_string(kind);
    }
    if (header.dataSize > kMaxParcelBytes) {
        return "message of " + std::to_string(header.dataSize) + " bytes is too large";
    }
    if (header.objectCount > header.dataSize / sizeof(ObjectRecord) ||
        header.referenceCount > header.objectCount || header.descriptorCount > kMaxDescriptors ||
        header.referenceCount + header.descriptorCount != header.objectCount) {
        return "counts of objects and descriptors do not fit the message";
    }
    if (header.dataSize > MaxDataSize(header.kind) ||
        (header.objectCount > 0 && !CarriesParcel(header.kind))) {
        return "message of kind " + std::to_string(kind) + " has content that its kind does not";
    }
    return "";
}

}  // namespace

int SendFrame(int fd, OutgoingFrame* frame) {
    FrameHeader& header = frame->header;
    header.magic = kFrameMagic;
    header.dataSize = static_cast<uint32_t>(frame->dataSize);
    header.objectCount = static_cast<uint32_t>(frame->offsets.size());
    header.referenceCount = static_cast<uint32_t>(frame->references.size());
    header.descriptorCount = static_cast<uint32_t>(frame->descriptors.size());
    iovec parts[] = {
            {&header, sizeof(header)},
            {const_cast<uint8_t*>(frame->data), frame->dataSize},
            {frame->offsets.data(), frame->offsets.size() * sizeof(uint32_t)},
            {frame->references.data(), frame->references.size() * sizeof(ReferenceRecord)},
    };
    alignas(cmsghdr) char control[kControlSize];
    msghdr message{};
    message.msg_iov = parts;
    message.msg_iovlen = 4;
    AttachDescriptors(frame->descriptors, control, &message);
    return SendAll(fd, &message);
}

IncomingFrame::~IncomingFrame() {
    for (int fd : descriptors) {
        if (fd >= 0) close(fd);
    }
}

uint32_t IncomingFrame::OffsetAt(size_t index) const {
    uint32_t offset;
    memcpy(&offset, body.get() + header.dataSize + index * sizeof(offset), sizeof(offset));
    return offset;
}

ReferenceRecord IncomingFrame::ReferenceAt(size_t index) const {
    const uint8_t* const first =
            body.get() + header.dataSize + header.objectCount * sizeof(uint32_t);
    ReferenceRecord record;
    memcpy(&record, first + index * sizeof(record), sizeof(record));
    record.name[kMaxSocketName] = '\0';
    return record;
}

bool WaitForFrame(int fd, int process) {
    pollfd sources[] = {{fd, POLLIN, 0}, {process, POLLIN, 0}};
    while (poll(sources, 2, -1) < 0 && errno == EINTR) {
    }
    return sources[0].revents != 0 || sources[1].revents == 0;
}

base::Result<bool> ReceiveFrame(int fd, IncomingFrame* frame) {
    size_t got = 0;
    if (!ReadAll(fd, &frame->header, sizeof(FrameHeader), frame, &got)) {
        if (got == 0 && (errno == 0 || errno == ECONNRESET)) return false;
        return EndedWithin("header");
    }
    const FrameHeader& header = frame->header;
    const std::string problem = ProblemOf(header);
    if (!problem.empty()) return base::Failure{problem};
    // No overflow: each count is bounded by kMaxParcelBytes.
    const size_t size = header.dataSize + header.objectCount * sizeof(uint32_t) +
                        header.referenceCount * sizeof(ReferenceRecord);
    if (size > 0) {
        frame->body.reset(static_cast<uint8_t*>(malloc(size)));
        if (frame->body == nullptr) {
            return base::Failure{"no memory for a message of " + std::to_string(size) + " bytes"};
        }
        if (!ReadAll(fd, frame->body.get(), size, frame, &got)) return EndedWithin("body");
    }
    if (!frame->descriptorsLost && frame->descriptors.size() != header.descriptorCount) {
        return base::Failure{"message announces " + std::to_string(header.descriptorCount) +
                             " descriptors and brings " +
                             std::to_string(frame->descriptors.size())};
    }
    return true;
}

}  // namespace hostbinder
