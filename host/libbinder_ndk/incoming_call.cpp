// Serving a call from another process.
#include "incoming_call.h"

#include "call_context.h"
#include "connection.h"
#include "thread_pool.h"
#include "trace.h"

namespace hostbinder {

binder_status_t IncomingCall::serve(AParcel* out) {
    resolveReferences(&mMessage, mConnection.get());
    if (mMessage.status != STATUS_OK) return mMessage.status;
    CallContext context;
    context.handling = true;
    context.uid = mConnection->peer().uid;
    context.pid = mConnection->peer().pid;
    context.chain = isOneway() ? 0 : mMessage.header.chain;
    ScopedCallContext scope(context);
    return mTarget->handle(mMessage.header.code, mMessage.parcel.get(), out);
}

void IncomingCall::run() {
    TracedCall trace(TracedCall::Direction::kIn, mConnection->peerLabel(), mTarget->clazz(),
                     mMessage.header.code, mMessage.header.flags, *mMessage.parcel);
    AParcel out;
    binder_status_t status = serve(&out);
    // Before the caller hears: what came with its request is gone when its call returns.
    mMessage.parcel.reset();
    trace.end(status);
    if (isOneway()) {
        if (auto next = mTarget->nextOneway()) ThreadPool::instance().submit(std::move(next));
    } else {
        mConnection->sendReply(mMessage.header.id, status, &out);
    }
}

}  // namespace hostbinder
