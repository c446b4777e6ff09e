// Calls a function when the process of a remote object dies.
#pragma once

#include <android/binder_auto_utils.h>

#include <functional>
#include <memory>

namespace services {

// Watches one object from Begin until the end of its life.
class DeathWatch {
  public:
    // Calls `died` at most once, on any thread, even while the watch ends; so it refers to what it
    // needs weakly. Returns false if the process is dead already. An object of this process is
    // alive and never watched.
    [[nodiscard]] bool Begin(const ndk::SpAIBinder& binder, std::function<void()> died) {
        using Callback = std::function<void()>;
        if (!AIBinder_isRemote(binder.get())) return true;
        m_recipient.set(AIBinder_DeathRecipient_new(
                [](void* callback) { (*static_cast<Callback*>(callback))(); }));
        AIBinder_DeathRecipient_setOnUnlinked(
                m_recipient.get(), [](void* callback) { delete static_cast<Callback*>(callback); });
        auto callback = std::make_unique<Callback>(std::move(died));
        if (AIBinder_linkToDeath(binder.get(), m_recipient.get(), callback.get()) != STATUS_OK) {
            return false;
        }
        (void)callback.release();  // deleted when the link ends
        return true;
    }

  private:
    ndk::ScopedAIBinder_DeathRecipient m_recipient;  // its end unlinks it
};

}  // namespace services
