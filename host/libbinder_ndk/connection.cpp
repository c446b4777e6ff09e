// A connection's outgoing side: calls, replies and control messages.
#include "connection.h"

#include <android/binder_ibinder_platform.h>

#include <cstdio>
#include <utility>

#include "call_context.h"
#include "log.h"
#include "secret_numbers.h"
#include "silent_processes.h"
#include "status_values.h"
#include "trace.h"

namespace hostbinder {

namespace {

constexpr int kAcquireMilliseconds = 5000;
constexpr int kPlatformMilliseconds = 10000;
constexpr size_t kMaxHeld = 1024;

std::string programName(pid_t pid) {
    char text[64] = "?";
    snprintf(text, sizeof(text), "/proc/%d/comm", pid);
    std::string name = "?";
    if (FILE* file = fopen(text, "re")) {
        if (fgets(text, sizeof(text), file) != nullptr) {
            name = text;
            name.erase(name.find_last_not_of('\n') + 1);
        }
        fclose(file);
    }
    return name;
}

void releaseAll(const std::vector<AIBinder*>& references) {
    for (AIBinder* binder : references) binder->decStrong();
}

}  // namespace

Connection::Connection(int fd, std::string peerName, PeerCredentials peer)
    : mFd(fd),
      mPeerName(std::move(peerName)),
      mPeer(peer),
      mPeerLabel(std::to_string(peer.pid) + "/" + programName(peer.pid)),
      mSender(std::make_shared<FrameSender>(fd, mPeerLabel)) {}

uint64_t Connection::hold(const std::vector<AIBinder*>& references) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mEnded || mHeld.size() >= kMaxHeld) return 0;
    const uint64_t id = ++mLastId;
    mHeld[id] = references;
    return id;
}

std::vector<AIBinder*> Connection::takeHeld(uint64_t id) {
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = mHeld.find(id);
    if (found == mHeld.end()) return {};
    std::vector<AIBinder*> references = std::move(found->second);
    mHeld.erase(found);
    return references;
}

binder_status_t Connection::sendMessage(OutgoingFrame* frame, AParcel* parcel) {
    std::vector<AIBinder*> heldForPeer;
    binder_status_t status = encodeMessage(parcel, this, frame, &heldForPeer);
    if (status != STATUS_OK) {
        releaseAll(heldForPeer);
        return status;
    }
    if (!heldForPeer.empty()) {
        frame->header.referencesId = hold(heldForPeer);
        if (frame->header.referencesId == 0) {
            releaseAll(heldForPeer);
            undoExports(this, *frame);
            if (!isOpen()) return STATUS_DEAD_OBJECT;
            BINDER_LOGE("message to %s not sent: it has not taken the references in %zu before",
                        mPeerLabel.c_str(), kMaxHeld);
            return STATUS_FAILED_TRANSACTION;
        }
    }
    status = mSender->send(frame);
    if (status != STATUS_OK) {
        undoExports(this, *frame);
        releaseAll(takeHeld(frame->header.referencesId));
    }
    return status;
}

binder_status_t Connection::expectReply(uint64_t id, const std::shared_ptr<Waiter>& waiter) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mEnded) return STATUS_DEAD_OBJECT;
    mWaiters[id] = waiter;
    return STATUS_OK;
}

std::shared_ptr<Waiter> Connection::takeWaiter(uint64_t id) {
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = mWaiters.find(id);
    if (found == mWaiters.end()) return nullptr;
    std::shared_ptr<Waiter> waiter = std::move(found->second);
    mWaiters.erase(found);
    return waiter;
}

binder_status_t Connection::transact(uint64_t number, const AIBinder_Class* clazz,
                                     transaction_code_t code, AParcel* in, AParcel** out,
                                     binder_flags_t flags) {
    OutgoingFrame frame;
    frame.header.kind = FrameKind::kCall;
    frame.header.id = ++mLastId;
    frame.header.target = number;
    frame.header.code = code;
    frame.header.flags = flags;
    TracedCall trace(TracedCall::Direction::kOut, mPeerLabel, clazz, code, flags, *in);

    IncomingMessage reply;
    reply.parcel = std::make_unique<AParcel>();
    if ((flags & FLAG_ONEWAY) != 0) {
        reply.status = sendMessage(&frame, in);
    } else {
        const uint64_t outer = callContext().chain;
        frame.header.chain = outer != 0 ? outer : newSecretNumber();
        auto waiter = std::make_shared<Waiter>();
        ScopedChainWaiter inChain(frame.header.chain, waiter);
        reply.status = expectReply(frame.header.id, waiter);
        if (reply.status == STATUS_OK) reply.status = sendMessage(&frame, in);
        if (reply.status == STATUS_OK) {
            awaitReply(waiter.get(), code, &reply);
        } else {
            takeWaiter(frame.header.id);
        }
        resolveReferences(&reply, this);
    }
    trace.end(reply.status);
    if (reply.status != STATUS_OK) return pruneStatus(reply.status);
    *out = reply.parcel.release();
    return STATUS_OK;
}

void Connection::awaitReply(Waiter* waiter, transaction_code_t code, IncomingMessage* reply) {
    // A thread that serves one peer does not wait for ever for what another's library answers
    // itself.
    const bool ownAnswer = code == kPingCode || code == kDescriptorCode || code == kExtensionCode;
    const bool bounded = ownAnswer && callContext().handling;
    if (!bounded) {
        waiter->wait(std::nullopt, reply);
        return;
    }
    if (awaitInTime(waiter, kPlatformMilliseconds, "what its object is", reply)) return;
    waiter->wait(std::nullopt, reply);  // the end of the connection answers
}

bool Connection::awaitInTime(Waiter* waiter, int milliseconds, const char* question,
                             IncomingMessage* reply) {
    const bool silentBefore = SilentProcesses::instance().mustNotWaitFor(mPeer.pid);
    if (waiter->wait(silentBefore ? 0 : milliseconds, reply)) return true;
    if (silentBefore) {
        BINDER_LOGE("connection to %s ended: it did not say at once, after a silence before, %s",
                    mPeerLabel.c_str(), question);
    } else {
        BINDER_LOGE("connection to %s ended: it did not say within %d ms %s", mPeerLabel.c_str(),
                    milliseconds, question);
        SilentProcesses::instance().add(mPeer.pid);
    }
    shutDown();
    return false;
}

bool Connection::acquire(uint64_t number) {
    FrameHeader header{};
    header.kind = FrameKind::kAcquire;
    header.id = ++mLastId;
    header.target = number;
    auto waiter = std::make_shared<Waiter>();
    if (expectReply(header.id, waiter) != STATUS_OK) return false;
    mSender->sendControl(header);  // if that fails the connection ends, which answers the waiter
    IncomingMessage reply;
    return awaitInTime(waiter.get(), kAcquireMilliseconds, "whether it has an object", &reply) &&
           reply.status == STATUS_OK;
}

void Connection::giveBack(uint64_t number, uint64_t count) {
    FrameHeader header{};
    header.kind = FrameKind::kRelease;
    header.id = count;
    header.target = number;
    mSender->sendControl(header);
}

void Connection::sendReply(uint64_t id, binder_status_t status, AParcel* out) {
    OutgoingFrame frame;
    frame.header.kind = FrameKind::kReply;
    frame.header.id = id;
    frame.header.status = status;
    if (status == STATUS_OK) {
        status = sendMessage(&frame, out);
        if (status == STATUS_OK || status == STATUS_DEAD_OBJECT) return;
    }
    FrameHeader failure{};
    failure.kind = FrameKind::kReply;
    failure.id = id;
    failure.status = pruneStatus(status);
    mSender->sendControl(failure);
}

void Connection::sendReferencesTaken(uint64_t id) {
    FrameHeader header{};
    header.kind = FrameKind::kReferencesTaken;
    header.id = id;
    mSender->sendControl(header);
}

}  // namespace hostbinder
