// Objects in messages: which objects of this process a peer holds, which proxies this process has
// of the peer's objects, and how a message refers to both.
//
// Counting is by references sent: each time an object goes to a peer, the peer holds one more, and
// it gives back exactly what it received. So a reference on its way and a release on its way in the
// other direction cannot be mistaken for each other.
#pragma once

#include <base/result.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "frame.h"
#include "message.h"
#include "objects.h"

namespace hostbinder {

// What this process and one peer hold of each other. Every LocalBinder*, ProxyBinder* that it
// returns is an owned strong reference. Nothing is released inside, because that may run any code.
class PeerReferences {
  public:
    // Counts one reference that goes to the peer. STATUS_DEAD_OBJECT if the connection has ended.
    binder_status_t Export(LocalBinder* binder, uint64_t* number);
    // The peer gives back references. False if it does not hold as many. *dropped is a reference
    // for the caller to release, or null.
    bool GiveBack(uint64_t number, uint64_t count, LocalBinder** dropped);
    // An object the peer may call, or null.
    LocalBinder* FindHeld(uint64_t number);

    // The one proxy for the peer's object, which now has `received` references more.
    ProxyBinder* ProxyFor(const std::shared_ptr<Peer>& peer, uint64_t number, uint64_t received);
    // The proxy if there is one, or null.
    ProxyBinder* FindProxy(uint64_t number);
    // The proxy's last strong reference is gone. Returns the references to give back.
    uint64_t ForgetProxy(ProxyBinder* proxy);

    // Takes over a reference to an object of a third process, until the peer has one of its own.
    // *id is the message's, given here if it is 0. STATUS_DEAD_OBJECT if the connection has ended.
    binder_status_t Keep(AIBinder* binder, uint64_t* id);
    // The references of that message, for the caller to release.
    std::vector<AIBinder*> TakeKept(uint64_t id);

    // The connection has ended. The caller releases what was held and kept for the peer, and the
    // proxies of the peer's objects.
    void Close(std::vector<AIBinder*>* dropped, std::vector<ProxyBinder*>* orphans);

  private:
    struct Held {
        LocalBinder* binder = nullptr;  // a strong reference
        uint64_t references = 0;
    };

    std::mutex m_mutex;  // guards what follows
    bool m_open = true;
    std::unordered_map<uint64_t, Held> m_held;             // by number of an own object
    std::unordered_map<uint64_t, ProxyBinder*> m_proxies;  // by number at the peer; not owned
    std::unordered_map<uint64_t, std::vector<AIBinder*>> m_kept;  // by number of the message
    uint64_t m_lastKept = 0;
};

// An own object that some peer knows, or the context object; owned, or null.
LocalBinder* FindExported(uint64_t number);
void ForgetExported(const LocalBinder* binder);
// The object with the number every peer knows and may call; takes a reference.
void SetContextObject(LocalBinder* binder);

// Fills the frame from the parcel, whose bytes and descriptors it borrows, and counts references to
// own objects as sent: a frame that is then not sent has ended the connection, and all counts.
binder_status_t EncodeMessage(AParcel* parcel, Peer* peer, OutgoingFrame* frame);

// Takes over a frame's content. A failure says what is malformed.
base::Result<base::Done> DecodeMessage(IncomingFrame* frame, const std::shared_ptr<Peer>& peer,
                                       IncomingMessage* message);

}  // namespace hostbinder
