// A call from another process, waiting for a thread or running.
#pragma once

#include <memory>

#include "local_binder.h"
#include "message.h"
#include "work.h"

namespace hostbinder {

class IncomingCall final : public Work {
  public:
    // Takes over a strong reference to the target.
    IncomingCall(std::shared_ptr<Connection> connection, LocalBinder* target)
        : mConnection(std::move(connection)), mTarget(target) {}
    ~IncomingCall() override { mTarget->decStrong(); }

    IncomingMessage* message() { return &mMessage; }
    bool isOneway() const { return (mMessage.header.flags & FLAG_ONEWAY) != 0; }
    void run() override;

  private:
    binder_status_t serve(AParcel* out);

    const std::shared_ptr<Connection> mConnection;
    LocalBinder* const mTarget;
    IncomingMessage mMessage;
};

}  // namespace hostbinder
