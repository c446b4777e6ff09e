// Death links: who is told when a remote object's process is gone.
#pragma once

#include <android/binder_ibinder.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace hostbinder {

// One pair of recipient and cookie on one object. Ends once: by death, by unlinking, with the last
// reference to the object or with the recipient.
class DeathLink {
  public:
    DeathLink(const AIBinder_DeathRecipient* recipient, AIBinder_DeathRecipient_onBinderDied onDied,
              AIBinder_DeathRecipient_onBinderUnlinked onUnlinked, void* cookie)
        : m_recipient(recipient), m_onDied(onDied), m_onUnlinked(onUnlinked), m_cookie(cookie) {}

    bool IsFor(const AIBinder_DeathRecipient* recipient, const void* cookie) const {
        return m_active && m_recipient == recipient && m_cookie == cookie;
    }
    bool IsActive() const { return m_active; }
    // The object died. No effect on a link that has ended.
    void Die() { End(true); }
    // False if the link had ended before.
    bool Unlink() { return End(false); }

  private:
    bool End(bool died) {
        if (!m_active.exchange(false)) return false;
        if (died) m_onDied(m_cookie);
        if (m_onUnlinked != nullptr) m_onUnlinked(m_cookie);
        return true;
    }

    const AIBinder_DeathRecipient* const m_recipient;  // compared only: it may be gone
    const AIBinder_DeathRecipient_onBinderDied m_onDied;
    const AIBinder_DeathRecipient_onBinderUnlinked m_onUnlinked;
    void* const m_cookie;
    std::atomic<bool> m_active{true};
};

using DeathLinks = std::vector<std::shared_ptr<DeathLink>>;

inline void DropEnded(DeathLinks* links) {
    links->erase(std::remove_if(links->begin(), links->end(),
                                [](const auto& link) { return !link->IsActive(); }),
                 links->end());
}

}  // namespace hostbinder

struct AIBinder_DeathRecipient {
    explicit AIBinder_DeathRecipient(AIBinder_DeathRecipient_onBinderDied onDied)
        : m_onDied(onDied) {}
    ~AIBinder_DeathRecipient() {
        for (const auto& link : m_links) link->Unlink();
    }

    void SetOnUnlinked(AIBinder_DeathRecipient_onBinderUnlinked onUnlinked) {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_onUnlinked = onUnlinked;
    }
    std::shared_ptr<hostbinder::DeathLink> NewLink(void* cookie) {
        std::lock_guard<std::mutex> lock(m_mutex);
        hostbinder::DropEnded(&m_links);
        m_links.push_back(
                std::make_shared<hostbinder::DeathLink>(this, m_onDied, m_onUnlinked, cookie));
        return m_links.back();
    }

  private:
    const AIBinder_DeathRecipient_onBinderDied m_onDied;
    std::mutex m_mutex;  // guards what follows
    AIBinder_DeathRecipient_onBinderUnlinked m_onUnlinked = nullptr;
    hostbinder::DeathLinks m_links;
};
