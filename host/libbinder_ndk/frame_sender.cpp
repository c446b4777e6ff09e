// Sending frames on a connection's socket.
#include "frame_sender.h"

#include <sys/socket.h>
#include <unistd.h>

#include <utility>

#include "log.h"
#include "reader_thread.h"
#include "threads.h"

namespace hostbinder {

namespace {
constexpr size_t kMaxKept = 4096;
}  // namespace

FrameSender::FrameSender(int fd, std::string peerLabel)
    : mFd(fd), mPeerLabel(std::move(peerLabel)) {}

FrameSender::~FrameSender() {
    close();
}

void FrameSender::shutDown() {
    mOpen = false;
    // Not under mMutex, which a thread may hold that waits for room: this ends its wait.
    std::lock_guard<std::mutex> lock(mKeptMutex);
    if (!mClosed) ::shutdown(mFd, SHUT_RDWR);
}

void FrameSender::close() {
    mOpen = false;
    std::lock_guard<std::mutex> lock(mMutex);
    std::lock_guard<std::mutex> keptLock(mKeptMutex);
    if (!mClosed) ::close(mFd);
    mClosed = true;
    mKept.clear();
}

SendResult FrameSender::sendLocked(OutgoingFrame* frame, SendWait wait) {
    if (!mOpen) return SendResult::kBroken;
    const SendResult result = sendFrame(mFd, frame, wait);
    if (result == SendResult::kUnread) {
        BINDER_LOGE("connection to %s ended: it does not read what is sent", mPeerLabel.c_str());
    }
    if (result == SendResult::kUnread || result == SendResult::kBroken) shutDown();
    return result;
}

binder_status_t FrameSender::send(OutgoingFrame* frame) {
    SendResult result;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        result = sendLocked(frame, SendWait::kBounded);
    }
    sendKept();
    if (result == SendResult::kSent) return STATUS_OK;
    return result == SendResult::kRefused ? STATUS_FAILED_TRANSACTION : STATUS_DEAD_OBJECT;
}

void FrameSender::sendControl(const FrameHeader& header) {
    if (isReaderThread()) {
        keep(header);
        sendKept();
        return;
    }
    OutgoingFrame frame;
    frame.header = header;
    send(&frame);
}

void FrameSender::keep(const FrameHeader& header) {
    bool tooMany = false;
    {
        std::lock_guard<std::mutex> lock(mKeptMutex);
        if (!mOpen) return;
        tooMany = mKept.size() >= kMaxKept;
        if (!tooMany) mKept.push_back(header);
    }
    if (!tooMany) return;
    BINDER_LOGE("connection to %s ended: it leaves %zu answers unread", mPeerLabel.c_str(),
                kMaxKept);
    shutDown();
}

bool FrameSender::hasKept() {
    std::lock_guard<std::mutex> lock(mKeptMutex);
    return !mKept.empty();
}

// Sends what is kept, as far as there is room.
void FrameSender::sendKept() {
    while (hasKept()) {
        std::unique_lock<std::mutex> lock(mMutex, std::try_to_lock);
        if (!lock.owns_lock()) return;  // whoever has it comes here afterwards
        if (sendFirstKeptLocked(SendWait::kNever) != SendResult::kWouldBlock) continue;
        lock.unlock();
        startThread();
        return;
    }
}

SendResult FrameSender::sendFirstKeptLocked(SendWait wait) {
    OutgoingFrame frame;
    {
        std::lock_guard<std::mutex> lock(mKeptMutex);
        if (mKept.empty()) return SendResult::kSent;
        frame.header = mKept.front();
    }
    const SendResult result = sendLocked(&frame, wait);
    if (result == SendResult::kWouldBlock) return result;
    if (result == SendResult::kRefused) shutDown();  // the peer would miss it
    std::lock_guard<std::mutex> lock(mKeptMutex);
    if (!mKept.empty()) mKept.pop_front();
    return result;
}

void FrameSender::startThread() {
    {
        std::lock_guard<std::mutex> lock(mKeptMutex);
        if (mThreadSends) return;
        mThreadSends = true;
    }
    const auto body = [self = shared_from_this()]() { self->waitAndSendKept(); };
    if (!hostbinder::startThread("binder-frames", body)) shutDown();
}

void FrameSender::waitAndSendKept() {
    while (true) {
        {
            std::lock_guard<std::mutex> lock(mKeptMutex);
            mThreadSends = !mKept.empty();
            if (!mThreadSends) return;
        }
        std::lock_guard<std::mutex> lock(mMutex);
        sendFirstKeptLocked(SendWait::kBounded);
    }
}

}  // namespace hostbinder
