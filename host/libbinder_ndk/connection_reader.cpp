// A connection's incoming side: what the reader thread does with each frame, and with the end.
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "connection.h"
#include "courier.h"
#include "endpoint.h"
#include "incoming_call.h"
#include "log.h"
#include "reader_thread.h"
#include "thread_pool.h"

namespace hostbinder {

namespace {
thread_local bool tIsReader = false;
}  // namespace

bool isReaderThread() {
    return tIsReader;
}
void markReaderThread(bool isReader) {
    tIsReader = isReader;
}

void Connection::runReader() {
    markReaderThread(true);
    std::string reason;
    auto process = static_cast<int>(syscall(SYS_pidfd_open, mPeer.pid, 0));
    if (process < 0 && errno == ESRCH) process = kEndedProcess;
    while (reason.empty()) {
        IncomingFrame frame;
        ReceiveResult result = receiveFrame(mFd, &frame, &reason, ReceiveWait::kAny, process);
        if (result == ReceiveResult::kEnd) break;
        if (result == ReceiveResult::kFrame) handleFrame(&frame, &reason);
    }
    if (process >= 0) close(process);
    if (!reason.empty()) {
        BINDER_LOGE("connection to %s ended: %s", mPeerLabel.c_str(), reason.c_str());
    }
    markReaderThread(false);  // from here on it may wait and run any code
    finish();
}

bool Connection::handleFrame(IncomingFrame* frame, std::string* reason) {
    const FrameHeader& header = frame->header;
    switch (header.kind) {
        case FrameKind::kCall:
            return handleCall(frame, reason);
        case FrameKind::kReply:
            return handleReply(frame, reason);
        case FrameKind::kAcquire:
            handleAcquire(header);
            return true;
        case FrameKind::kRelease:
            return handleRelease(header, reason);
        case FrameKind::kReferencesTaken:
            handleReferencesTaken(header.id);
            return true;
        case FrameKind::kHello:
        case FrameKind::kHelloReply:
            break;
    }
    *reason = "greeting after the beginning";
    return false;
}

bool Connection::handleCall(IncomingFrame* frame, std::string* reason) {
    LocalBinder* target = ObjectTable::instance().findHeld(&mObjects, frame->header.target);
    if (target == nullptr) {
        *reason = "call to unknown object " + std::to_string(frame->header.target);
        return false;
    }
    auto call = std::make_unique<IncomingCall>(shared_from_this(), target);
    if (!decodeMessage(frame, shared_from_this(), call->message(), reason)) return false;
    if (!call->charge()) {
        refuseCall(*call->message());
        return true;
    }
    const bool oneway = call->isOneway();
    const uint64_t chain = frame->header.chain;
    std::unique_ptr<Work> work = std::move(call);
    if (oneway) {
        if (target->beginOneway(work)) ThreadPool::instance().submit(std::move(work));
    } else if (chain == 0 || !offerToChain(chain, &work)) {
        ThreadPool::instance().submit(std::move(work));
    }
    return true;
}

void Connection::refuseCall(const IncomingMessage& message) {
    BINDER_LOGE("%s has too many calls waiting here: one more refused", mPeerLabel.c_str());
    if (message.header.referencesId != 0) sendReferencesTaken(message.header.referencesId);
    if ((message.header.flags & FLAG_ONEWAY) == 0) {
        sendReply(message.header.id, STATUS_FAILED_TRANSACTION, nullptr);
    }
}

bool Connection::handleReply(IncomingFrame* frame, std::string* reason) {
    std::shared_ptr<Waiter> waiter = takeWaiter(frame->header.id);
    if (waiter == nullptr) {
        *reason = "reply to no call";
        return false;
    }
    IncomingMessage reply;
    const bool valid = decodeMessage(frame, shared_from_this(), &reply, reason);
    if (!valid) {
        reply = IncomingMessage();
        reply.status = STATUS_DEAD_OBJECT;
    }
    waiter->deliver(std::move(reply));
    return valid;
}

void Connection::handleAcquire(const FrameHeader& header) {
    FrameHeader reply{};
    reply.kind = FrameKind::kReply;
    reply.id = header.id;
    reply.status = ObjectTable::instance().acquire(&mObjects, header.target)
                           ? STATUS_OK
                           : STATUS_NAME_NOT_FOUND;
    mSender->sendControl(reply);
}

bool Connection::handleRelease(const FrameHeader& header, std::string* reason) {
    LocalBinder* dropped = nullptr;
    if (!ObjectTable::instance().giveBack(&mObjects, header.target, header.id, &dropped)) {
        *reason = "release of references to object " + std::to_string(header.target) +
                  " that it does not hold";
        return false;
    }
    if (dropped != nullptr) Courier::releases().post([dropped]() { dropped->decStrong(); });
    return true;
}

void Connection::handleReferencesTaken(uint64_t id) {
    std::vector<AIBinder*> taken = takeHeld(id);
    if (taken.empty()) return;
    Courier::releases().post([taken]() {
        for (AIBinder* binder : taken) binder->decStrong();
    });
}

void Connection::finish() {
    mSender->shutDown();  // ends a send that waits
    Endpoint::instance().forget(this);
    mSender->close();
    std::vector<LocalBinder*> dropped;
    std::vector<ProxyBinder*> orphans;
    ObjectTable::instance().closePeer(&mObjects, &dropped, &orphans);
    for (ProxyBinder* proxy : orphans) proxy->markDead();

    std::unordered_map<uint64_t, std::shared_ptr<Waiter>> waiters;
    std::unordered_map<uint64_t, std::vector<AIBinder*>> held;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mEnded = true;
        waiters.swap(mWaiters);
        held.swap(mHeld);
    }
    for (auto& entry : waiters) {
        IncomingMessage failure;
        failure.status = STATUS_DEAD_OBJECT;
        entry.second->deliver(std::move(failure));
    }
    for (auto& entry : held) {
        for (AIBinder* binder : entry.second) binder->decStrong();
    }
    for (LocalBinder* binder : dropped) binder->decStrong();
    for (ProxyBinder* proxy : orphans) proxy->decStrong();
    Endpoint::instance().cleanUpAfter(mPeerName);
}

}  // namespace hostbinder
