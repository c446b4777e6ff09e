// Links to the death of clients. A death may be told while its watch ends, so the binder library
// gets a ticket instead of a pointer.
#include "death_watch.h"

#include <map>
#include <mutex>

namespace offlinecamera {

namespace {

/** All watches of the process; never destroyed, because deaths are told at any time. */
struct Tickets {
    std::mutex lock;
    uintptr_t last = 0;
    std::map<uintptr_t, std::weak_ptr<DeathListener>> listeners;
};

Tickets& AllTickets() {
    static Tickets* tickets = new Tickets;
    return *tickets;
}

void OnDied(void* cookie) {
    std::shared_ptr<DeathListener> listener;
    {
        std::lock_guard<std::mutex> guard(AllTickets().lock);
        const auto found = AllTickets().listeners.find(reinterpret_cast<uintptr_t>(cookie));
        if (found != AllTickets().listeners.end()) listener = found->second.lock();
    }
    if (listener != nullptr) listener->OnClientDied();
}

AIBinder_DeathRecipient* Recipient() {
    static AIBinder_DeathRecipient* recipient = AIBinder_DeathRecipient_new(OnDied);
    return recipient;
}

}  // namespace

bool DeathWatch::Begin(const ndk::SpAIBinder& binder, std::weak_ptr<DeathListener> listener) {
    if (!AIBinder_isRemote(binder.get())) return true;
    mBinder = binder;
    {
        std::lock_guard<std::mutex> guard(AllTickets().lock);
        mTicket = ++AllTickets().last;
        AllTickets().listeners[mTicket] = std::move(listener);
    }
    const binder_status_t status =
            AIBinder_linkToDeath(binder.get(), Recipient(), reinterpret_cast<void*>(mTicket));
    if (status != STATUS_OK) End();
    return status == STATUS_OK;
}

void DeathWatch::End() {
    if (mTicket == 0) return;
    {
        std::lock_guard<std::mutex> guard(AllTickets().lock);
        AllTickets().listeners.erase(mTicket);
    }
    // Fails if the client has died, when there is nothing left to unlink.
    AIBinder_unlinkToDeath(mBinder.get(), Recipient(), reinterpret_cast<void*>(mTicket));
    mTicket = 0;
    mBinder.set(nullptr);
}

}  // namespace offlinecamera
