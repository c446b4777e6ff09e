// A connection that speaks the wire format by hand, so that it can say anything.
#pragma once

#include <android/binder_auto_utils.h>

#include <string>
#include <vector>

#include "host/libbinder_ndk/wire_format.h"

hostbinder::FrameHeader frameHeader(hostbinder::FrameKind kind, uint32_t dataSize = 0);

template <typename T>
void appendBytes(std::string* bytes, const T& value) {
    bytes->append(reinterpret_cast<const char*>(&value), sizeof(value));
}

std::string bytesOf(const hostbinder::FrameHeader& header, const std::string& body = "");

// The number that an object of another process has there.
uint64_t numberOf(const ndk::SpAIBinder& binder);

class RawConnection {
  public:
    // Connects to the socket with this path.
    explicit RawConnection(const std::string& path);
    // The same, greets and gets the peer's object with the number.
    RawConnection(const std::string& path, uint64_t object);
    ~RawConnection();
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    void sendHello(const std::string& name);
    // Sends a new name; true if the peer accepts the connection.
    bool greet();
    // Asks for the peer's object with the number, which the peer is to grant.
    void acquire(uint64_t number);
    // The descriptors go with the first byte.
    void send(const std::string& bytes, const std::vector<int>& fds = {});
    // The next frame; its body is dropped.
    hostbinder::FrameHeader receive();
    void endSending();
    // Whether the peer closes the connection without sending anything more.
    bool isClosed();

  private:
    const int mFd;
};
