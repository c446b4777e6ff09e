// AIBinder: what objects of this process (LocalBinder) and of others (ProxyBinder) have in common.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_shell.h>

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
    std::atomic<AIBinder_onDump> onDump = nullptr;
    std::atomic<AIBinder_handleShellCommand> onShell = nullptr;
    std::atomic<bool> hasInterfaceHeader = true;
    // Method names by code - FIRST_CALL_TRANSACTION, for the trace; null or immutable.
    std::atomic<const std::vector<std::string>*> transactionNames = nullptr;
};

// Counted by strong and weak references: the last strong one ends what the object stands for, the
// last weak one its memory. (The platform's RefBase would do, but the thread sanitizer cannot see
// the ordering inside that prebuilt library.)
struct AIBinder {
    void incStrong();
    void decStrong();
    // False if the last strong reference is gone already.
    bool tryIncStrong();
    void incWeak();
    void decWeak();
    int32_t strongCount() const { return mStrong.load(std::memory_order_relaxed); }

    virtual hostbinder::LocalBinder* asLocal() { return nullptr; }
    virtual hostbinder::ProxyBinder* asProxy() { return nullptr; }
    virtual bool isAlive() const = 0;
    // Makes the call with any code. `in` is borrowed, *out owned by the caller on success.
    virtual binder_status_t transact(transaction_code_t code, AParcel* in, AParcel** out,
                                     binder_flags_t flags) = 0;
    virtual bool associateClass(const AIBinder_Class* clazz) = 0;
    const AIBinder_Class* clazz() const { return mClass.load(std::memory_order_acquire); }

    // The level that goes into a parcel; an object without one gets the system's.
    int16_t declaredStability();
    // Sets the level of a local object; ends the process if it has another one.
    void markStability(int16_t level);
    void forceStability(int16_t level) { mStability = level; }
    // Notes the level a remote object came with. False if there is no such level.
    bool adoptStability(int32_t level);
    int16_t stability() const { return mStability; }

  protected:
    explicit AIBinder(const AIBinder_Class* clazz) : mClass(clazz) {}
    virtual ~AIBinder() = default;
    virtual void onLastStrongReference() = 0;

    std::atomic<const AIBinder_Class*> mClass;

  private:
    std::atomic<int32_t> mStrong{1};
    std::atomic<int32_t> mWeak{1};  // all strong references together hold one
    std::atomic<int16_t> mStability{0};
};
