// Serving a call from another process.
#include "incoming_call.h"

#include "call_context.h"
#include "connection.h"
#include "log.h"
#include "thread_pool.h"
#include "trace.h"

namespace hostbinder {

namespace {
// Of calls on one thread, each made by a peer while this thread waits for it in the one before.
constexpr int kMaxNesting = 64;
}  // namespace

IncomingCall::~IncomingCall() {
    discharge();
    mTarget->decStrong();
}

bool IncomingCall::charge() {
    const CallShare cost = CallBudget::costOf(mMessage.header);
    if (!CallBudget::instance().take(mConnection->peer().pid, cost)) return false;
    mCharge = cost;
    return true;
}

void IncomingCall::discharge() {
    if (mCharge.bytes == 0) return;
    CallBudget::instance().giveBack(mConnection->peer().pid, mCharge);
    mCharge = {};
}

binder_status_t IncomingCall::serve(AParcel* out) {
    CallContext context;
    context.handling = true;
    context.uid = mConnection->peer().uid;
    context.pid = mConnection->peer().pid;
    context.chain = isOneway() ? 0 : mMessage.header.chain;
    context.nesting = callContext().nesting + 1;
    ScopedCallContext scope(context);
    resolveReferences(&mMessage, mConnection.get());
    if (mMessage.status != STATUS_OK) return mMessage.status;
    if (context.nesting > kMaxNesting) {
        BINDER_LOGE("call from %s refused: it is nested in %d others",
                    mConnection->peerLabel().c_str(), kMaxNesting);
        return STATUS_FAILED_TRANSACTION;
    }
    return mTarget->handle(mMessage.header.code, mMessage.parcel.get(), out);
}

void IncomingCall::run() {
    TracedCall trace(TracedCall::Direction::kIn, mConnection->peerLabel(), mTarget->clazz(),
                     mMessage.header.code, mMessage.header.flags, *mMessage.parcel);
    AParcel out;
    binder_status_t status = serve(&out);
    // Before the caller hears: what came with its request is gone when its call returns.
    mMessage.parcel.reset();
    discharge();
    trace.end(status);
    if (isOneway()) {
        if (auto next = mTarget->nextOneway()) ThreadPool::instance().submit(std::move(next));
    } else {
        mConnection->sendReply(mMessage.header.id, status, &out);
    }
}

}  // namespace hostbinder
