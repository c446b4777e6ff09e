// Objects in messages: which objects other processes hold of this one, which proxies this process
// has, and how a message refers to both.
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

// The table's part that belongs to one peer; guarded by the table.
struct PeerReferences {
    bool open = true;
    std::unordered_map<uint64_t, uint64_t> held;         // number of an own object -> references
    std::unordered_map<uint64_t, ProxyBinder*> proxies;  // number at the peer -> not owned
};

// Every LocalBinder*, ProxyBinder* that it returns is an owned strong reference. Nothing is
// released inside the table, because that may run any code.
class ReferenceTable {
  public:
    // Lives as long as the process.
    static ReferenceTable& Instance();

    // Counts one reference that goes to the peer. STATUS_DEAD_OBJECT if the connection has ended.
    binder_status_t Export(PeerReferences* peer, LocalBinder* binder, uint64_t* number);
    // The peer gives back references. False if it does not hold as many. *dropped is a reference
    // for the caller to release, or null.
    bool GiveBack(PeerReferences* peer, uint64_t number, uint64_t count, LocalBinder** dropped);
    // The peer wants a reference of its own. False if there is no such object.
    bool Acquire(PeerReferences* peer, uint64_t number);
    // An object the peer (if null: any peer) holds, or null.
    LocalBinder* Find(const PeerReferences* peer, uint64_t number);
    // The object with the number every peer knows; takes a reference.
    void SetContextObject(LocalBinder* binder);

    // The one proxy for the peer's object, which now has `received` references more.
    ProxyBinder* ProxyFor(const std::shared_ptr<ObjectOwner>& owner, PeerReferences* peer,
                          uint64_t number, uint64_t received);
    // The proxy if there is one, or null.
    ProxyBinder* FindProxy(PeerReferences* peer, uint64_t number);
    // The proxy's last strong reference is gone. Returns the references to give back.
    uint64_t ForgetProxy(PeerReferences* peer, ProxyBinder* proxy);

    // The connection has ended: what the peer held, and the proxies of the peer's objects.
    void ClosePeer(PeerReferences* peer, std::vector<LocalBinder*>* dropped,
                   std::vector<ProxyBinder*>* orphans);

  private:
    struct Exported {
        LocalBinder* binder;  // a strong reference
        uint64_t references;  // of all peers together
    };
    LocalBinder* DropReferencesLocked(uint64_t number, uint64_t count);

    std::mutex m_mutex;  // guards all, also in PeerReferences; nothing else is locked inside
    std::unordered_map<uint64_t, Exported> m_exported;
    uint64_t m_lastNumber = 0;
    LocalBinder* m_contextObject = nullptr;
};

// Fills the frame from the parcel, whose bytes and descriptors it borrows. Counts references to own
// objects as sent; UndoExports takes that back if the frame is not sent. Objects of third processes
// go to *heldForPeer (owned references), which are to be kept until the peer has them.
binder_status_t EncodeMessage(AParcel* parcel, const ObjectOwner* peer, PeerReferences* references,
                              OutgoingFrame* frame, std::vector<AIBinder*>* heldForPeer);
void UndoExports(PeerReferences* references, const OutgoingFrame& frame);

// Takes over a frame's content. A failure says what is malformed.
base::Result<base::Done> DecodeMessage(IncomingFrame* frame,
                                       const std::shared_ptr<ObjectOwner>& peer,
                                       PeerReferences* references, IncomingMessage* message);

}  // namespace hostbinder
