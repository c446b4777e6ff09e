// Sending and receiving whole frames with their descriptors.
#include "frame_io.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

#include "log.h"
#include "received_descriptor.h"

namespace hostbinder {

namespace {

constexpr std::chrono::milliseconds kSendLimit{5000};
constexpr std::chrono::milliseconds kReceiveLimit{10000};
constexpr size_t kControlSize = CMSG_SPACE(kMaxDescriptors * sizeof(int));

void attachDescriptors(const std::vector<int>& descriptors, char* control, msghdr* message) {
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
void advance(msghdr* message, size_t sent) {
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

// How long one frame may take as a whole: a peer that lets a little through from time to time must
// not hold a thread for ever. Time counts from the first wait on.
class FrameTimer {
  public:
    explicit FrameTimer(std::chrono::milliseconds limit) : mLimit(limit) {}

    // False, with errno ETIMEDOUT, if the time is over.
    bool waitUntil(int fd, short ready) {
        const auto now = std::chrono::steady_clock::now();
        if (mEnd == Time()) mEnd = now + mLimit;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(mEnd - now);
        pollfd waiting{fd, ready, 0};
        const int count = poll(&waiting, 1, static_cast<int>(std::max<int64_t>(left.count(), 0)));
        if (count == 0) errno = ETIMEDOUT;
        return count > 0 || (count < 0 && errno == EINTR);
    }

  private:
    using Time = std::chrono::steady_clock::time_point;

    const std::chrono::milliseconds mLimit;
    Time mEnd;
};

SendResult sendAll(int fd, msghdr* message, SendWait wait) {
    bool begun = false;
    FrameTimer timer(kSendLimit);
    while (message->msg_iovlen > 0) {
        const ssize_t sent = sendmsg(fd, message, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent >= 0) {
            begun = true;
            message->msg_control = nullptr;  // went with the first byte
            message->msg_controllen = 0;
            advance(message, static_cast<size_t>(sent));
        } else if (errno == EAGAIN) {
            if (!begun && wait == SendWait::kNever) return SendResult::kWouldBlock;
            if (!timer.waitUntil(fd, POLLOUT)) return SendResult::kUnread;
        } else if (!begun && (errno == ETOOMANYREFS || errno == EBADF || errno == ENOBUFS)) {
            BINDER_LOGE("message cannot be sent: %s", strerror(errno));
            return SendResult::kRefused;
        } else if (errno != EINTR) {
            if (errno != EPIPE && errno != ECONNRESET) {
                BINDER_LOGE("sending failed: %s", strerror(errno));
            }
            return SendResult::kBroken;
        }
    }
    return SendResult::kSent;
}

// Keeps the descriptors that came with a piece of data.
void collectDescriptors(msghdr* message, IncomingFrame* frame) {
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

// Reads one frame's parts.
class FrameReader {
  public:
    FrameReader(int fd, IncomingFrame* frame) : mFd(fd), mFrame(frame) {}

    // Waits, for as long as it takes, until there is something to read or an end to be noticed.
    // False if the process ends first.
    bool waitForBeginning(int process) const {
        pollfd sources[] = {{mFd, POLLIN, 0}, {process, POLLIN, 0}};
        const bool ended = process == kEndedProcess;
        while (poll(sources, 2, ended ? 0 : -1) < 0 && errno == EINTR) {
        }
        return sources[0].revents != 0 || (!ended && sources[1].revents == 0);
    }

    // Reads exactly `size` bytes. Sets *got to what came before the end or an error.
    bool read(void* bytes, size_t size, size_t* got) {
        *got = 0;
        while (*got < size) {
            const ssize_t received = readSome(static_cast<char*>(bytes) + *got, size - *got);
            if (received <= 0) {
                if (received == 0) errno = 0;
                return false;
            }
            *got += static_cast<size_t>(received);
        }
        return true;
    }

  private:
    ssize_t readSome(char* bytes, size_t size) {
        alignas(cmsghdr) char control[kControlSize];
        while (true) {
            iovec place{bytes, size};
            msghdr message{};
            message.msg_iov = &place;
            message.msg_iovlen = 1;
            message.msg_control = control;
            message.msg_controllen = sizeof(control);
            const ssize_t received = recvmsg(mFd, &message, MSG_CMSG_CLOEXEC | MSG_DONTWAIT);
            if (received >= 0) {
                collectDescriptors(&message, mFrame);
                return received;
            }
            if (errno == EAGAIN && !mTimer.waitUntil(mFd, POLLIN)) return -1;
            if (errno != EAGAIN && errno != EINTR) return -1;
        }
    }

    const int mFd;
    IncomingFrame* const mFrame;
    FrameTimer mTimer{kReceiveLimit};
};

// What errno, 0 for the connection's end, says about a message of which a part is missing.
ReceiveResult broken(const char* part, std::string* reason) {
    const int error = errno;
    *reason = std::string("ended within a message's ") + part;
    if (error != 0) *reason += std::string(": ") + strerror(error);
    return error == ETIMEDOUT ? ReceiveResult::kLate : ReceiveResult::kBroken;
}

bool carriesParcel(FrameKind kind) {
    return kind == FrameKind::kCall || kind == FrameKind::kReply;
}

uint32_t maxDataSize(FrameKind kind) {
    if (kind == FrameKind::kHello) return kMaxSocketName;
    return carriesParcel(kind) ? kMaxParcelBytes : 0;
}

bool checkHeader(const FrameHeader& header, std::string* reason) {
    if (header.magic != kFrameMagic) {
        *reason = "message does not begin with the magic number";
    } else if (header.kind < FrameKind::kHello || header.kind > FrameKind::kReferencesTaken) {
        *reason = "unknown kind of message " + std::to_string(static_cast<uint32_t>(header.kind));
    } else if (header.dataSize > kMaxParcelBytes) {
        *reason = "message of " + std::to_string(header.dataSize) + " bytes is too large";
    } else if (header.objectCount > header.dataSize / sizeof(ObjectRecord) ||
               header.referenceCount > header.objectCount ||
               header.descriptorCount > kMaxDescriptors ||
               header.referenceCount + header.descriptorCount != header.objectCount) {
        *reason = "counts of objects and descriptors do not fit the message";
    } else if (header.dataSize > maxDataSize(header.kind) ||
               (header.objectCount > 0 && !carriesParcel(header.kind))) {
        *reason = "message of kind " + std::to_string(static_cast<uint32_t>(header.kind)) +
                  " has content that its kind does not";
    } else {
        return true;
    }
    return false;
}

}  // namespace

SendResult sendFrame(int fd, OutgoingFrame* frame, SendWait wait) {
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
    attachDescriptors(frame->descriptors, control, &message);
    return sendAll(fd, &message, wait);
}

IncomingFrame::~IncomingFrame() {
    for (int fd : descriptors) {
        if (fd >= 0) closeReceived(fd);
    }
}

uint32_t IncomingFrame::offsetAt(size_t index) const {
    uint32_t offset;
    memcpy(&offset, body.get() + header.dataSize + index * sizeof(offset), sizeof(offset));
    return offset;
}

ReferenceRecord IncomingFrame::referenceAt(size_t index) const {
    ReferenceRecord record;
    memcpy(&record,
           body.get() + header.dataSize + header.objectCount * sizeof(uint32_t) +
                   index * sizeof(record),
           sizeof(record));
    record.name[kMaxSocketName] = '\0';
    return record;
}

ReceiveResult receiveFrame(int fd, IncomingFrame* frame, std::string* reason, ReceiveWait wait,
                           int process) {
    FrameReader reader(fd, frame);
    if (wait == ReceiveWait::kAny && !reader.waitForBeginning(process)) return ReceiveResult::kEnd;
    size_t got = 0;
    if (!reader.read(&frame->header, sizeof(FrameHeader), &got)) {
        if (got == 0 && (errno == 0 || errno == ECONNRESET)) return ReceiveResult::kEnd;
        return broken("header", reason);
    }
    const FrameHeader& header = frame->header;
    if (!checkHeader(header, reason)) return ReceiveResult::kBroken;
    // No overflow: each count is bounded by kMaxParcelBytes.
    const size_t size = header.dataSize + header.objectCount * sizeof(uint32_t) +
                        header.referenceCount * sizeof(ReferenceRecord);
    if (size > 0) {
        frame->body.reset(static_cast<uint8_t*>(malloc(size)));
        if (frame->body == nullptr) {
            *reason = "no memory for a message of " + std::to_string(size) + " bytes";
            return ReceiveResult::kBroken;
        }
        if (!reader.read(frame->body.get(), size, &got)) {
            return broken("body", reason);
        }
    }
    if (!frame->descriptorsLost && frame->descriptors.size() != header.descriptorCount) {
        *reason = "message announces " + std::to_string(header.descriptorCount) +
                  " descriptors and brings " + std::to_string(frame->descriptors.size());
        return ReceiveResult::kBroken;
    }
    return ReceiveResult::kFrame;
}

}  // namespace hostbinder
