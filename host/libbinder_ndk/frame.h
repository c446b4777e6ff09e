// Frames on a socket: one header, parcel bytes and tables, and descriptors with the first byte.
#pragma once

#include <base/result.h>

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

// Sends the whole frame. 0, or errno: EAGAIN if the peer does not read within the socket's limit.
// The connection cannot be used any more then.
int SendFrame(int fd, OutgoingFrame* frame);

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

    uint32_t OffsetAt(size_t index) const;
    ReferenceRecord ReferenceAt(size_t index) const;
};

// Waits, for as long as it takes, until a frame begins or the connection ends. `process` is a
// descriptor of the peer's process, or -1. False if that process has ended: a child that it forked
// may hold its end of the socket open.
bool WaitForFrame(int fd, int process);

// Receives a frame; waits for each part as long as the socket's limit allows. Checks all sizes and
// counts in it before it reads or allocates. False if the peer closed the connection instead.
base::Result<bool> ReceiveFrame(int fd, IncomingFrame* frame);

}  // namespace hostbinder
