// The two kinds of objects: of this process (LocalBinder) and of others (ProxyBinder).
#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "death_link.h"
#include "ibinder.h"
#include "threads.h"

namespace hostbinder {

class Peer;

class LocalBinder final : public AIBinder {
  public:
    LocalBinder(const AIBinder_Class* clazz, void* userData)
        : AIBinder(clazz), m_userData(userData) {}

    LocalBinder* AsLocal() override { return this; }
    bool IsAlive() const override { return true; }
    binder_status_t Transact(transaction_code_t code, AParcel* in, AParcel** out,
                             binder_flags_t flags) override;
    // Only the class the object was made with: its user data belongs to that class.
    bool AssociateClass(const AIBinder_Class* wanted) override;

    // Serves one call, on the calling thread. Both parcels are borrowed; `in` is at its start.
    binder_status_t Handle(transaction_code_t code, const AParcel* in, AParcel* out);
    void* UserData() const { return m_userData; }

    // Oneway calls run one after the other. True if the caller is to run `call` itself (by handing
    // it to the pool); otherwise it waits behind the one that runs.
    bool BeginOneway(Work* call);
    // The next waiting oneway call, or an empty one; to be asked after each one.
    Work NextOneway();

    // The number peers know this object by; 0: none yet. references.cpp gives and guards it.
    uint64_t exportedNumber = 0;

  private:
    void OnLastStrongReference() override;

    void* const m_userData;
    std::mutex m_mutex;  // guards what follows
    bool m_onewayRunning = false;
    std::deque<Work> m_onewayCalls;
};

class ProxyBinder final : public AIBinder {
  public:
    // owner is null for an object whose process is gone already.
    ProxyBinder(std::shared_ptr<Peer> owner, uint64_t number);

    ProxyBinder* AsProxy() override { return this; }
    bool IsAlive() const override;
    binder_status_t Transact(transaction_code_t code, AParcel* in, AParcel** out,
                             binder_flags_t flags) override;
    // The first class with the right descriptor stays.
    bool AssociateClass(const AIBinder_Class* wanted) override;
    // Asks the object for its interface's name.
    binder_status_t ReadDescriptor(std::string* descriptor);
    // Sets the class without asking the object for its descriptor.
    void AssumeClass(const AIBinder_Class* clazz) { m_class = clazz; }

    const std::shared_ptr<Peer>& Owner() const { return m_owner; }
    uint64_t Number() const { return m_number; }

    binder_status_t LinkToDeath(AIBinder_DeathRecipient* recipient, void* cookie);
    binder_status_t UnlinkToDeath(AIBinder_DeathRecipient* recipient, void* cookie);
    // The process is gone: later calls fail at once. The links are for the caller to tell.
    DeathLinks MarkDead();

    // References received from the owner and not given back; guarded by its PeerReferences.
    uint64_t receivedReferences = 0;

  private:
    void OnLastStrongReference() override;

    const std::shared_ptr<Peer> m_owner;
    const uint64_t m_number;
    std::atomic<bool> m_alive;
    std::mutex m_mutex;  // guards m_links, and m_alive together with it
    DeathLinks m_links;
};

}  // namespace hostbinder
