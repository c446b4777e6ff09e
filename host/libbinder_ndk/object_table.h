// Which objects other processes hold of this one, and which proxies this process has.
//
// Counting is by references sent: each time an object goes to a peer, the peer holds one more, and
// it gives back exactly what it received. So a reference on its way and a release on its way in the
// other direction cannot be mistaken for each other.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "local_binder.h"
#include "proxy_binder.h"

namespace hostbinder {

class Connection;

// The table's part that belongs to one connection; guarded by the table.
struct PeerObjects {
    bool open = true;
    std::unordered_map<uint64_t, uint64_t> held;         // number of an own object -> references
    std::unordered_map<uint64_t, ProxyBinder*> proxies;  // number at the peer -> not owned
};

class ObjectTable {
  public:
    // Lives as long as the process.
    static ObjectTable& instance();

    // Numbers and pointers in and out; every LocalBinder*, ProxyBinder* returned is an owned strong
    // reference. Nothing is released inside the table, because that may run any code.

    // Objects that one peer may hold.
    static constexpr size_t kMaxHeld = 8192;

    // Counts one reference that goes to the peer. STATUS_DEAD_OBJECT if the connection has ended,
    // STATUS_FAILED_TRANSACTION (with a log line) if the peer holds too many objects.
    binder_status_t exportTo(PeerObjects* peer, LocalBinder* binder, uint64_t* number);
    // The peer gives back references. False if it does not hold that many. *dropped is a reference
    // for the caller to release, or null.
    bool giveBack(PeerObjects* peer, uint64_t number, uint64_t count, LocalBinder** dropped);
    // The peer wants a reference of its own. False if there is no such object.
    bool acquire(PeerObjects* peer, uint64_t number);
    // An object the peer holds, or null.
    LocalBinder* findHeld(PeerObjects* peer, uint64_t number);
    // An object any peer holds, or null.
    LocalBinder* findExported(uint64_t number);
    // The object with the number every peer knows; takes a reference.
    void setContextObject(LocalBinder* binder);

    // The one proxy for the peer's object, which now stands for `received` references more.
    ProxyBinder* proxyFor(const std::shared_ptr<Connection>& connection, PeerObjects* peer,
                          uint64_t number, uint64_t received);
    // The proxy if there is one, or null.
    ProxyBinder* findProxy(PeerObjects* peer, uint64_t number);
    // The proxy's last strong reference is gone. Returns the references to give back.
    uint64_t forgetProxy(PeerObjects* peer, ProxyBinder* proxy);

    // The connection has ended: what the peer held, and the proxies of the peer's objects.
    void closePeer(PeerObjects* peer, std::vector<LocalBinder*>* dropped,
                   std::vector<ProxyBinder*>* orphans);

  private:
    struct Exported {
        LocalBinder* binder;  // a strong reference
        uint64_t references;  // of all peers together
    };
    LocalBinder* dropReferencesLocked(uint64_t number, uint64_t count);
    LocalBinder* findExportedLocked(uint64_t number);

    std::mutex mMutex;  // guards everything, also in PeerObjects; nothing else is locked inside
    std::unordered_map<uint64_t, Exported> mExported;
    LocalBinder* mContextObject = nullptr;
};

}  // namespace hostbinder
