// Frames on a socket: one header, parcel bytes and tables, and descriptors with the first byte.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "wire_format.h"

namespace hostbinder {

// What is sent. Data and descriptors are borrowed.
struct OutgoingFrame {
    FrameHeader header{};  // sizes and counts are filled in when the frame is sent
    const uint8_t* data = nullptr;
    size_t dataSize = 0;
    std::vector<uint32_t> offsets;
    std::vector<ReferenceRecord> references;
    std::vector<int> descriptors;
};

enum class SendResult {
    kSent,
    kWouldBlock,  // nothing was sent
    kRefused,     // nothing was sent; the connection is as before
    kUnread,      // the peer has not read in time; the connection cannot be used any more
    kBroken,      // the connection cannot be used any more
};

enum class SendWait { kNever, kBounded };

// Sends the whole frame. kBounded gives the peer 5 s to read. Logs errors.
SendResult sendFrame(int fd, OutgoingFrame* frame, SendWait wait);

struct FreeBlock {
    void operator()(uint8_t* block) const { free(block); }
};

// What was received. Owns the descriptors until they are taken.
struct IncomingFrame {
    IncomingFrame() = default;
    ~IncomingFrame();
    IncomingFrame(const IncomingFrame&) = delete;
    IncomingFrame& operator=(const IncomingFrame&) = delete;

    FrameHeader header{};
    std::unique_ptr<uint8_t, FreeBlock> body;  // data, then offsets, then references
    std::vector<int> descriptors;
    bool descriptorsLost = false;  // this process had no room for them

    uint32_t offsetAt(size_t index) const;
    ReferenceRecord referenceAt(size_t index) const;
};

enum class ReceiveResult {
    kFrame,
    kEnd,     // the peer closed the connection between two frames, or its process has ended
    kLate,    // it takes too long; *reason says so
    kBroken,  // *reason says why
};

enum class ReceiveWait {
    kAny,      // as long as it takes for a frame to begin
    kBounded,  // up to 10 s
};

// For a peer's process that had ended before a descriptor of it could be had.
constexpr int kEndedProcess = -2;

// Waits for one frame and checks all sizes and counts in it before it reads or allocates. Once it
// has begun, its end must come within 10 s. `process`: a descriptor of the peer's process, -1 for
// none, or kEndedProcess. With its end the wait for a frame is over: somebody else may hold the
// peer's end of the socket open, as a process does that is sent it in a message.
ReceiveResult receiveFrame(int fd, IncomingFrame* frame, std::string* reason,
                           ReceiveWait wait = ReceiveWait::kAny, int process = -1);

}  // namespace hostbinder
