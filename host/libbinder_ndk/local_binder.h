// An object that lives in this process.
#pragma once

#include <deque>
#include <memory>
#include <mutex>

#include "ibinder.h"
#include "parcel.h"
#include "work.h"

namespace hostbinder {

class LocalBinder final : public AIBinder {
  public:
    LocalBinder(const AIBinder_Class* clazz, void* userData) : AIBinder(clazz), mData(userData) {}

    LocalBinder* asLocal() override { return this; }
    bool isAlive() const override { return true; }
    binder_status_t transact(transaction_code_t code, AParcel* in, AParcel** out,
                             binder_flags_t flags) override;
    // Only the class the object was made with: its user data belongs to that class.
    bool associateClass(const AIBinder_Class* clazz) override;

    // Serves one call, on the calling thread. Both parcels are borrowed; `in` is at its start.
    binder_status_t handle(transaction_code_t code, const AParcel* in, AParcel* out);

    void* userData() const { return mData; }
    void setExtension(AIBinder* extension);
    // An owned reference or null.
    AIBinder* extension();

    // Oneway calls run one after the other. True if the caller is to run `call` itself (by handing
    // it to the pool); otherwise it waits behind the one that runs.
    bool beginOneway(std::unique_ptr<Work>& call);
    // The next waiting oneway call, or null; to be asked after each one.
    std::unique_ptr<Work> nextOneway();

    // The number peers know this object by; guarded by the object table, 0: none yet.
    uint64_t exportedNumber = 0;

  private:
    void onLastStrongReference() override;
    binder_status_t handleDump(const AParcel* in);
    binder_status_t handleShell(const AParcel* in);

    void* const mData;
    std::mutex mMutex;  // guards what follows
    AIBinder* mExtension = nullptr;
    bool mOnewayRunning = false;
    std::deque<std::unique_ptr<Work>> mOnewayCalls;
};

}  // namespace hostbinder
