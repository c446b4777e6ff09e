// A connection that speaks the wire format by hand, so that it can say anything.
#pragma once

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "host/libbinder_ndk/frame.h"
#include "host/libbinder_ndk/sockets.h"
#include "tests/host/libbinder_ndk/send_bytes.h"

inline hostbinder::FrameHeader HeaderOf(hostbinder::FrameKind kind, size_t dataSize = 0) {
    hostbinder::FrameHeader header{};
    header.magic = hostbinder::kFrameMagic;
    header.kind = kind;
    header.dataSize = static_cast<uint32_t>(dataSize);
    return header;
}

template <typename T>
std::string BytesOf(const T& value) {
    return {reinterpret_cast<const char*>(&value), sizeof(value)};
}

class RawConnection {
  public:
    // Connects to the process's socket, and says nothing.
    explicit RawConnection(const std::string& socketName)
        : m_fd(hostbinder::ConnectSocket(socketName)) {}
    // The same, greets with a new name and gets the process's object with this number.
    RawConnection(const std::string& socketName, uint64_t object) : RawConnection(socketName) {
        static int count = 0;
        const std::string own = "raw" + std::to_string(getpid()) + "-" + std::to_string(++count);
        Send(BytesOf(HeaderOf(hostbinder::FrameKind::kHello, own.size())) + own);
        EXPECT_EQ(Receive().status, 0);
        hostbinder::FrameHeader request = HeaderOf(hostbinder::FrameKind::kAcquire);
        request.target = object;
        Send(BytesOf(request));
        EXPECT_EQ(Receive().status, 0);
    }
    ~RawConnection() { close(m_fd); }
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    void Send(const std::string& bytes, const std::vector<int>& fds = {}) {
        EXPECT_TRUE(SendBytes(m_fd, bytes, fds));
    }
    void EndSending() { shutdown(m_fd, SHUT_WR); }
    // The next frame's header.
    hostbinder::FrameHeader Receive() {
        hostbinder::IncomingFrame frame;
        const base::Result<bool> received = hostbinder::ReceiveFrame(m_fd, &frame);
        EXPECT_TRUE(received.Ok() && received.Value());
        return frame.header;
    }
    // Whether the peer closes the connection without sending anything more. It waits 10 s for the
    // rest of a message: the usual limit tells that it refused the message without waiting.
    bool IsClosed(time_t seconds = 8) {
        const timeval limit{seconds, 0};
        setsockopt(m_fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
        char byte;
        const ssize_t got = recv(m_fd, &byte, 1, 0);
        return got == 0 || (got < 0 && errno == ECONNRESET);
    }

  private:
    const int m_fd;
};
