// The table of objects that are known across processes.
#include "object_table.h"

#include "log.h"
#include "secret_numbers.h"
#include "wire_format.h"

namespace hostbinder {

ObjectTable& ObjectTable::instance() {
    static ObjectTable* const table = new ObjectTable;
    return *table;
}

binder_status_t ObjectTable::exportTo(PeerObjects* peer, LocalBinder* binder, uint64_t* number) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (!peer->open) return STATUS_DEAD_OBJECT;
    if (peer->held.size() >= kMaxHeld && peer->held.count(binder->exportedNumber) == 0) {
        BINDER_LOGE("a peer holds %zu objects: it gets no further one", kMaxHeld);
        return STATUS_FAILED_TRANSACTION;
    }
    if (binder->exportedNumber == 0) binder->exportedNumber = newSecretNumber();
    *number = binder->exportedNumber;
    auto entry = mExported.try_emplace(*number, Exported{binder, 0});
    if (entry.second) binder->incStrong();
    ++entry.first->second.references;
    ++peer->held[*number];
    return STATUS_OK;
}

LocalBinder* ObjectTable::dropReferencesLocked(uint64_t number, uint64_t count) {
    auto entry = mExported.find(number);
    entry->second.references -= count;
    if (entry->second.references > 0) return nullptr;
    LocalBinder* dropped = entry->second.binder;
    mExported.erase(entry);
    return dropped;
}

bool ObjectTable::giveBack(PeerObjects* peer, uint64_t number, uint64_t count,
                           LocalBinder** dropped) {
    *dropped = nullptr;
    std::lock_guard<std::mutex> lock(mMutex);
    if (number == kContextObject && mContextObject != nullptr) return true;
    auto held = peer->held.find(number);
    if (held == peer->held.end() || held->second < count) return false;
    held->second -= count;
    if (held->second == 0) peer->held.erase(held);
    *dropped = dropReferencesLocked(number, count);
    return true;
}

bool ObjectTable::acquire(PeerObjects* peer, uint64_t number) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (number == kContextObject) return mContextObject != nullptr;
    auto entry = mExported.find(number);
    if (!peer->open || entry == mExported.end() || peer->held.size() >= kMaxHeld) return false;
    ++entry->second.references;
    ++peer->held[number];
    return true;
}

LocalBinder* ObjectTable::findExportedLocked(uint64_t number) {
    LocalBinder* found = mContextObject;
    if (number != kContextObject) {
        auto entry = mExported.find(number);
        found = entry == mExported.end() ? nullptr : entry->second.binder;
    }
    if (found != nullptr) found->incStrong();
    return found;
}

LocalBinder* ObjectTable::findHeld(PeerObjects* peer, uint64_t number) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (number != kContextObject && peer->held.count(number) == 0) return nullptr;
    return findExportedLocked(number);
}

LocalBinder* ObjectTable::findExported(uint64_t number) {
    std::lock_guard<std::mutex> lock(mMutex);
    return findExportedLocked(number);
}

void ObjectTable::setContextObject(LocalBinder* binder) {
    std::lock_guard<std::mutex> lock(mMutex);
    binder->incStrong();
    mContextObject = binder;
}

ProxyBinder* ObjectTable::proxyFor(const std::shared_ptr<Connection>& connection, PeerObjects* peer,
                                   uint64_t number, uint64_t received) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (!peer->open) return new ProxyBinder(nullptr, number);
    ProxyBinder*& place = peer->proxies[number];
    // A proxy without strong references is on its way out: a new one takes its place.
    if (place == nullptr || !place->tryIncStrong()) place = new ProxyBinder(connection, number);
    place->receivedReferences += received;
    return place;
}

ProxyBinder* ObjectTable::findProxy(PeerObjects* peer, uint64_t number) {
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = peer->proxies.find(number);
    return found != peer->proxies.end() && found->second->tryIncStrong() ? found->second : nullptr;
}

uint64_t ObjectTable::forgetProxy(PeerObjects* peer, ProxyBinder* proxy) {
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = peer->proxies.find(proxy->number());
    if (found != peer->proxies.end() && found->second == proxy) peer->proxies.erase(found);
    return proxy->receivedReferences;
}

void ObjectTable::closePeer(PeerObjects* peer, std::vector<LocalBinder*>* dropped,
                            std::vector<ProxyBinder*>* orphans) {
    std::lock_guard<std::mutex> lock(mMutex);
    peer->open = false;
    for (const auto& [number, count] : peer->held) {
        if (LocalBinder* binder = dropReferencesLocked(number, count)) dropped->push_back(binder);
    }
    peer->held.clear();
    for (const auto& entry : peer->proxies) {
        if (entry.second->tryIncStrong()) orphans->push_back(entry.second);
    }
    peer->proxies.clear();
}

}  // namespace hostbinder
