// An object that lives in another process.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "death_recipient.h"
#include "ibinder.h"

namespace hostbinder {

class Connection;

class ProxyBinder final : public AIBinder {
  public:
    // connection is null for an object whose process is gone already.
    ProxyBinder(std::shared_ptr<Connection> connection, uint64_t number);

    ProxyBinder* asProxy() override { return this; }
    bool isAlive() const override;
    binder_status_t transact(transaction_code_t code, AParcel* in, AParcel** out,
                             binder_flags_t flags) override;
    // The first class with the right descriptor stays.
    bool associateClass(const AIBinder_Class* clazz) override;
    // Asks the object for its interface's name.
    binder_status_t readDescriptor(std::string* descriptor);
    // Sets the class without asking the object for its descriptor.
    void assumeClass(const AIBinder_Class* clazz) { mClass = clazz; }

    const std::shared_ptr<Connection>& connection() const { return mConnection; }
    uint64_t number() const { return mNumber; }

    binder_status_t linkToDeath(AIBinder_DeathRecipient* recipient, void* cookie);
    binder_status_t unlinkToDeath(AIBinder_DeathRecipient* recipient, void* cookie);
    // The process is gone: later calls fail at once, recipients are told on the pool.
    void markDead();

    // References received from the owner and not given back; guarded by the object table.
    uint64_t receivedReferences = 0;

  private:
    void onLastStrongReference() override;

    const std::shared_ptr<Connection> mConnection;
    const uint64_t mNumber;
    std::atomic<bool> mAlive;
    std::mutex mMutex;  // guards mLinks, and mAlive together with it
    std::vector<std::shared_ptr<DeathLink>> mLinks;
};

}  // namespace hostbinder
