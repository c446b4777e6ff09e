// Sockets that speak the wire format by hand.
#include "tests/host/libbinder_ndk/raw_connection.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>

#include "host/libbinder_ndk/objects.h"
#include "tests/host/libbinder_ndk/send_bytes.h"

using hostbinder::FrameHeader;
using hostbinder::FrameKind;

FrameHeader frameHeader(FrameKind kind, uint32_t dataSize) {
    FrameHeader header{};
    header.magic = hostbinder::kFrameMagic;
    header.kind = kind;
    header.dataSize = dataSize;
    return header;
}

std::string bytesOf(const FrameHeader& header, const std::string& body) {
    std::string bytes;
    appendBytes(&bytes, header);
    return bytes + body;
}

uint64_t numberOf(const ndk::SpAIBinder& binder) {
    return binder.get()->AsProxy()->Number();
}

RawConnection::RawConnection(const std::string& path)
    : mFd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const timeval limit{20, 0};
    setsockopt(mFd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    EXPECT_EQ(connect(mFd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0)
            << path;
}

RawConnection::RawConnection(const std::string& path, uint64_t object) : RawConnection(path) {
    EXPECT_TRUE(greet());
    acquire(object);
}

RawConnection::~RawConnection() {
    close(mFd);
}

void RawConnection::sendHello(const std::string& name) {
    send(bytesOf(frameHeader(FrameKind::kHello, static_cast<uint32_t>(name.size())), name));
}

bool RawConnection::greet() {
    static int count = 0;
    sendHello("raw" + std::to_string(getpid()) + "-" + std::to_string(++count));
    const FrameHeader answer = receive();
    return answer.kind == FrameKind::kHelloReply && answer.status == STATUS_OK;
}

void RawConnection::acquire(uint64_t number) {
    FrameHeader request = frameHeader(FrameKind::kAcquire);
    request.target = number;
    send(bytesOf(request));
    EXPECT_EQ(receive().status, STATUS_OK);
}

void RawConnection::send(const std::string& bytes, const std::vector<int>& fds) {
    EXPECT_TRUE(sendBytes(mFd, bytes, fds));
}

FrameHeader RawConnection::receive() {
    FrameHeader header{};
    EXPECT_EQ(recv(mFd, &header, sizeof(header), MSG_WAITALL),
              static_cast<ssize_t>(sizeof(header)));
    std::string data(header.dataSize + header.objectCount * sizeof(uint32_t) +
                             header.referenceCount * sizeof(hostbinder::ReferenceRecord),
                     '\0');
    if (!data.empty()) {
        EXPECT_EQ(recv(mFd, &data[0], data.size(), MSG_WAITALL), static_cast<ssize_t>(data.size()));
    }
    return header;
}

void RawConnection::endSending() {
    shutdown(mFd, SHUT_WR);
}

bool RawConnection::isClosed() {
    char byte;
    const ssize_t got = recv(mFd, &byte, 1, 0);
    return got == 0 || (got < 0 && errno == ECONNRESET);
}
