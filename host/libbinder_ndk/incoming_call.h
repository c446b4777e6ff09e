// A call from another process, waiting for a thread or running.
#pragma once

#include <memory>

#include "call_budget.h"
#include "local_binder.h"
#include "message.h"
#include "work.h"

namespace hostbinder {

class IncomingCall final : public Work {
  public:
    // Takes over a strong reference to the target.
    IncomingCall(std::shared_ptr<Connection> connection, LocalBinder* target)
        : mConnection(std::move(connection)), mTarget(target) {}
    ~IncomingCall() override;

    IncomingMessage* message() { return &mMessage; }
    bool isOneway() const { return (mMessage.header.flags & FLAG_ONEWAY) != 0; }
    // Counts the call's message against the budget until it has been served. False if that is used
    // up: then the call is to be refused.
    bool charge();
    void run() override;

  private:
    void discharge();
    binder_status_t serve(AParcel* out);

    const std::shared_ptr<Connection> mConnection;
    LocalBinder* const mTarget;
    IncomingMessage mMessage;
    CallShare mCharge;
};

}  // namespace hostbinder
