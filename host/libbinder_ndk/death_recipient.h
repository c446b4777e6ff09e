// Death links: who is told when a remote object's process is gone.
#pragma once

#include <android/binder_ibinder.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace hostbinder {

// One pair of recipient and cookie on one object. Ends once: by death, by unlinking, with the last
// reference to the object or with the recipient.
class DeathLink {
  public:
    DeathLink(AIBinder_DeathRecipient_onBinderDied onDied,
              AIBinder_DeathRecipient_onBinderUnlinked onUnlinked, void* cookie)
        : mOnDied(onDied), mOnUnlinked(onUnlinked), mCookie(cookie) {}

    void* cookie() const { return mCookie; }
    bool isActive() const { return mActive; }
    // The object died. No effect on a link that has ended.
    void die() {
        if (!mActive.exchange(false)) return;
        mOnDied(mCookie);
        if (mOnUnlinked != nullptr) mOnUnlinked(mCookie);
    }
    // False if the link had ended before.
    bool unlink() {
        if (!mActive.exchange(false)) return false;
        if (mOnUnlinked != nullptr) mOnUnlinked(mCookie);
        return true;
    }

  private:
    const AIBinder_DeathRecipient_onBinderDied mOnDied;
    const AIBinder_DeathRecipient_onBinderUnlinked mOnUnlinked;
    void* const mCookie;
    std::atomic<bool> mActive{true};
};

}  // namespace hostbinder

struct AIBinder_DeathRecipient {
    explicit AIBinder_DeathRecipient(AIBinder_DeathRecipient_onBinderDied onDied)
        : mOnDied(onDied) {}
    ~AIBinder_DeathRecipient();

    void setOnUnlinked(AIBinder_DeathRecipient_onBinderUnlinked onUnlinked);
    std::shared_ptr<hostbinder::DeathLink> newLink(void* cookie);
    bool owns(const std::shared_ptr<hostbinder::DeathLink>& link);

  private:
    const AIBinder_DeathRecipient_onBinderDied mOnDied;
    std::mutex mMutex;  // guards what follows
    AIBinder_DeathRecipient_onBinderUnlinked mOnUnlinked = nullptr;
    std::vector<std::shared_ptr<hostbinder::DeathLink>> mLinks;
};
