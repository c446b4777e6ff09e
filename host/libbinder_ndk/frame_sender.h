// The sending side of a connection's socket: one frame at a time, from any thread.
#pragma once

#include <android/binder_status.h>

#include <atomic>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "frame_io.h"

namespace hostbinder {

class FrameSender : public std::enable_shared_from_this<FrameSender> {
  public:
    // Takes ownership of the socket, which one thread reads until it calls close().
    FrameSender(int fd, std::string peerLabel);
    ~FrameSender();
    FrameSender(const FrameSender&) = delete;
    FrameSender& operator=(const FrameSender&) = delete;

    // Waits, bounded, for a peer that does not read; then the connection ends.
    // STATUS_FAILED_TRANSACTION: nothing was sent. STATUS_DEAD_OBJECT: the connection has ended.
    binder_status_t send(OutgoingFrame* frame);
    // Sends a header alone. A reader's thread never waits: what the socket has no room for is kept
    // and sent by another thread; a peer that lets too much pile up loses the connection.
    void sendControl(const FrameHeader& header);

    bool isOpen() const { return mOpen; }
    // Ends the connection for both sides. The reader, which sees it, closes.
    void shutDown();
    void close();

  private:
    SendResult sendLocked(OutgoingFrame* frame, SendWait wait);
    void keep(const FrameHeader& header);
    bool hasKept();
    void sendKept();
    SendResult sendFirstKeptLocked(SendWait wait);
    void startThread();
    void waitAndSendKept();

    const int mFd;
    const std::string mPeerLabel;
    std::atomic<bool> mOpen{true};
    std::mutex mMutex;  // one frame at a time

    std::mutex mKeptMutex;          // guards what follows; taken last
    bool mClosed = false;           // mFd is closed; changes under both
    std::deque<FrameHeader> mKept;  // the first leaves under both
    bool mThreadSends = false;      // a thread waits for room for them
};

}  // namespace hostbinder
