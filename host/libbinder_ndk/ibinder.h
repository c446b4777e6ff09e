// AIBinder: what objects of this process and of others have in common.
#pragma once

#include <android/binder_ibinder.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace hostbinder {
class LocalBinder;
class ProxyBinder;
}  // namespace hostbinder

struct AIBinder_Class {
    std::string descriptor;
    AIBinder_Class_onCreate onCreate = nullptr;
    AIBinder_Class_onDestroy onDestroy = nullptr;
    AIBinder_Class_onTransact onTransact = nullptr;
    // Method names by code - FIRST_CALL_TRANSACTION, for the trace; null or immutable.
    std::atomic<const std::vector<std::string>*> transactionNames = nullptr;
};

// Counted by strong and weak references: the last strong one ends the object, the last weak one its
// memory. (The platform's RefBase would do, but the thread sanitizer cannot see the ordering inside
// that prebuilt library.)
struct AIBinder {
    void IncStrong() { m_strong.fetch_add(1, std::memory_order_relaxed); }
    void DecStrong();
    // False if the last strong reference is gone already.
    bool TryIncStrong();
    void IncWeak() { m_weak.fetch_add(1, std::memory_order_relaxed); }
    void DecWeak();

    virtual hostbinder::LocalBinder* AsLocal() { return nullptr; }
    virtual hostbinder::ProxyBinder* AsProxy() { return nullptr; }
    virtual bool IsAlive() const = 0;
    // Makes the call with any code. `in` is borrowed, *out owned by the caller on success.
    virtual binder_status_t Transact(transaction_code_t code, AParcel* in, AParcel** out,
                                     binder_flags_t flags) = 0;
    virtual bool AssociateClass(const AIBinder_Class* wanted) = 0;
    const AIBinder_Class* Class() const { return m_class.load(std::memory_order_acquire); }

    // The stability level that goes into a parcel; an object without one gets the system's.
    int16_t DeclareStability();
    // Sets the level of a local object; ends the process if it has another one.
    void MarkStability(int16_t level);
    // Notes the level a remote object came with. False if there is no such level.
    bool AdoptStability(int32_t level);
    int16_t Stability() const { return m_stability; }

  protected:
    explicit AIBinder(const AIBinder_Class* clazz) : m_class(clazz) {}
    virtual ~AIBinder() = default;
    virtual void OnLastStrongReference() = 0;

    std::atomic<const AIBinder_Class*> m_class;

  private:
    std::atomic<int32_t> m_strong{1};
    std::atomic<int32_t> m_weak{1};  // all strong references together hold one
    std::atomic<int16_t> m_stability{0};
};
