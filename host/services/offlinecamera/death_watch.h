// Tells owners of sessions and registrations that their client's process has died.
#pragma once

#include <android/binder_auto_utils.h>

#include <cstdint>
#include <functional>
#include <memory>

namespace offlinecamera {

/** Who wants to know; held weakly, so it may be gone by then. */
class DeathListener {
  public:
    virtual void OnClientDied() = 0;

  protected:
    ~DeathListener() = default;
};

/** One watched binder. Watching ends with the object; a binder of this process is never watched. */
class DeathWatch {
  public:
    DeathWatch() = default;
    ~DeathWatch() { End(); }
    DeathWatch(const DeathWatch&) = delete;
    DeathWatch& operator=(const DeathWatch&) = delete;

    /** @return whether the client is alive (as far as one can tell) and now watched */
    [[nodiscard]] bool Begin(const ndk::SpAIBinder& binder, std::weak_ptr<DeathListener> listener);

    void End();

  private:
    ndk::SpAIBinder mBinder;
    uintptr_t mTicket = 0;
};

}  // namespace offlinecamera
