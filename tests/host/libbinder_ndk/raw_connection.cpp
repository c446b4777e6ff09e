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

namespace {

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    EXPECT_LT(path.size(), sizeof(address.sun_path));
    memcpy(address.sun_path, path.data(), std::min(path.size(), sizeof(address.sun_path) - 1));
    return address;
}

int newSocket() {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const timeval limit{20, 0};  // bounds accept as well
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    return fd;
}

}  // namespace

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

int listenAt(const std::string& path) {
    const sockaddr_un address = addressOf(path);
    const int fd = newSocket();
    EXPECT_EQ(bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0) << path;
    EXPECT_EQ(listen(fd, 8), 0);
    return fd;
}

uint64_t numberOf(const ndk::SpAIBinder& binder) {
    return binder.get()->AsProxy()->Number();
}

RawConnection::RawConnection(const std::string& path) : mFd(newSocket()) {
    const sockaddr_un address = addressOf(path);
    EXPECT_EQ(connect(mFd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0)
            << path;
}

RawConnection::RawConnection(const std::string& path, uint64_t object) : RawConnection(path) {
    EXPECT_TRUE(greet());
    acquire(object);
}

RawConnection::RawConnection(int listener)
    : mFd(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC)) {
    EXPECT_GE(mFd, 0) << "nobody connects";
    const timeval limit{20, 0};
    setsockopt(mFd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
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

FrameHeader RawConnection::receive(std::string* body) {
    FrameHeader header{};
    EXPECT_EQ(recv(mFd, &header, sizeof(header), MSG_WAITALL),
              static_cast<ssize_t>(sizeof(header)));
    std::string data(header.dataSize + header.objectCount * sizeof(uint32_t) +
                             header.referenceCount * sizeof(hostbinder::ReferenceRecord),
                     '\0');
    if (!data.empty()) {
        EXPECT_EQ(recv(mFd, &data[0], data.size(), MSG_WAITALL), static_cast<ssize_t>(data.size()));
    }
    if (body != nullptr) *body = data;
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
