// The table of objects that are known across processes, and references in messages.
#include "references.h"

#include <cstring>
#include <utility>

#include "log.h"
#include "wire_format.h"

namespace hostbinder {

ReferenceTable& ReferenceTable::Instance() {
    static ReferenceTable* const table = new ReferenceTable;
    return *table;
}

binder_status_t ReferenceTable::Export(PeerReferences* peer, LocalBinder* binder,
                                       uint64_t* number) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!peer->open) return STATUS_DEAD_OBJECT;
    if (binder->exportedNumber == 0) binder->exportedNumber = ++m_lastNumber;
    *number = binder->exportedNumber;
    auto entry = m_exported.try_emplace(*number, Exported{binder, 0});
    if (entry.second) binder->IncStrong();
    ++entry.first->second.references;
    ++peer->held[*number];
    return STATUS_OK;
}

LocalBinder* ReferenceTable::DropReferencesLocked(uint64_t number, uint64_t count) {
    auto entry = m_exported.find(number);
    entry->second.references -= count;
    if (entry->second.references > 0) return nullptr;
    LocalBinder* dropped = entry->second.binder;
    m_exported.erase(entry);
    return dropped;
}

bool ReferenceTable::GiveBack(PeerReferences* peer, uint64_t number, uint64_t count,
                              LocalBinder** dropped) {
    *dropped = nullptr;
    std::lock_guard<std::mutex> lock(m_mutex);
    if (number == kContextObject && m_contextObject != nullptr) return true;
    auto held = peer->held.find(number);
    if (held == peer->held.end() || held->second < count) return false;
    held->second -= count;
    if (held->second == 0) peer->held.erase(held);
    *dropped = DropReferencesLocked(number, count);
    return true;
}

bool ReferenceTable::Acquire(PeerReferences* peer, uint64_t number) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (number == kContextObject) return m_contextObject != nullptr;
    auto entry = m_exported.find(number);
    if (!peer->open || entry == m_exported.end()) return false;
    ++entry->second.references;
    ++peer->held[number];
    return true;
}

LocalBinder* ReferenceTable::Find(const PeerReferences* peer, uint64_t number) {
    std::lock_guard<std::mutex> lock(m_mutex);
    LocalBinder* found = m_contextObject;
    if (number != kContextObject) {
        if (peer != nullptr && peer->held.count(number) == 0) return nullptr;
        auto entry = m_exported.find(number);
        found = entry == m_exported.end() ? nullptr : entry->second.binder;
    }
    if (found != nullptr) found->IncStrong();
    return found;
}

void ReferenceTable::SetContextObject(LocalBinder* binder) {
    std::lock_guard<std::mutex> lock(m_mutex);
    binder->IncStrong();
    m_contextObject = binder;
}

ProxyBinder* ReferenceTable::ProxyFor(const std::shared_ptr<ObjectOwner>& owner,
                                      PeerReferences* peer, uint64_t number, uint64_t received) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!peer->open) return new ProxyBinder(nullptr, number);
    ProxyBinder*& place = peer->proxies[number];
    // A proxy without strong references is on its way out: a new one takes its place.
    if (place == nullptr || !place->TryIncStrong()) place = new ProxyBinder(owner, number);
    place->receivedReferences += received;
    return place;
}

ProxyBinder* ReferenceTable::FindProxy(PeerReferences* peer, uint64_t number) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto found = peer->proxies.find(number);
    return found != peer->proxies.end() && found->second->TryIncStrong() ? found->second : nullptr;
}

uint64_t ReferenceTable::ForgetProxy(PeerReferences* peer, ProxyBinder* proxy) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto found = peer->proxies.find(proxy->Number());
    if (found != peer->proxies.end() && found->second == proxy) peer->proxies.erase(found);
    return proxy->receivedReferences;
}

void ReferenceTable::ClosePeer(PeerReferences* peer, std::vector<LocalBinder*>* dropped,
                               std::vector<ProxyBinder*>* orphans) {
    std::lock_guard<std::mutex> lock(m_mutex);
    peer->open = false;
    for (const auto& [number, count] : peer->held) {
        if (LocalBinder* binder = DropReferencesLocked(number, count)) dropped->push_back(binder);
    }
    peer->held.clear();
    for (const auto& entry : peer->proxies) {
        if (entry.second->TryIncStrong()) orphans->push_back(entry.second);
    }
    peer->proxies.clear();
}

namespace {

binder_status_t MakeReference(AIBinder* binder, const ObjectOwner* peer, PeerReferences* references,
                              ReferenceRecord* record, std::vector<AIBinder*>* heldForPeer) {
    *record = {};
    if (LocalBinder* local = binder->AsLocal()) {
        record->owner = ReferenceOwner::kSender;
        return ReferenceTable::Instance().Export(references, local, &record->number);
    }
    const ProxyBinder* const proxy = binder->AsProxy();
    record->number = proxy->Number();
    if (proxy->Owner().get() == peer) {
        record->owner = ReferenceOwner::kReceiver;
        return STATUS_OK;
    }
    record->owner = ReferenceOwner::kOther;
    // Without an owner the object never was reachable: no process has the empty name.
    const std::string name = proxy->Owner() == nullptr ? "" : proxy->Owner()->Name();
    memcpy(record->name, name.data(), name.size());
    binder->IncStrong();
    heldForPeer->push_back(binder);
    return STATUS_OK;
}

}  // namespace

binder_status_t EncodeMessage(AParcel* parcel, const ObjectOwner* peer, PeerReferences* references,
                              OutgoingFrame* frame, std::vector<AIBinder*>* heldForPeer) {
    if (parcel->Size() > kMaxParcelBytes) {
        BINDER_LOGE("message of %zu bytes is too large, %u at most", parcel->Size(),
                    kMaxParcelBytes);
        return STATUS_FAILED_TRANSACTION;
    }
    if (parcel->DescriptorCount() > kMaxDescriptors) {
        BINDER_LOGE("message has more than %u descriptors", kMaxDescriptors);
        return STATUS_FAILED_TRANSACTION;
    }
    frame->data = parcel->Data();
    frame->dataSize = parcel->Size();
    for (const ParcelObject& object : parcel->Objects()) {
        uint64_t index = frame->descriptors.size();
        if (object.binder == nullptr) {
            frame->descriptors.push_back(object.fd);
        } else {
            ReferenceRecord reference;
            binder_status_t status =
                    MakeReference(object.binder, peer, references, &reference, heldForPeer);
            if (status != STATUS_OK) {
                UndoExports(references, *frame);
                return status;
            }
            index = frame->references.size();
            frame->references.push_back(reference);
        }
        memcpy(parcel->MutableData() + object.offset + offsetof(ObjectRecord, handle), &index,
               sizeof(index));
        frame->offsets.push_back(object.offset);
    }
    return STATUS_OK;
}

void UndoExports(PeerReferences* references, const OutgoingFrame& frame) {
    for (const ReferenceRecord& reference : frame.references) {
        if (reference.owner != ReferenceOwner::kSender) continue;
        LocalBinder* dropped = nullptr;
        ReferenceTable::Instance().GiveBack(references, reference.number, 1, &dropped);
        if (dropped != nullptr) dropped->DecStrong();
    }
}

namespace {

base::Failure RecordFailure(uint32_t offset, const char* problem) {
    return {"object record at offset " + std::to_string(offset) + problem};
}

// Null, without a failure, for an object of a third process.
base::Result<AIBinder*> DecodeReference(const ReferenceRecord& reference,
                                        const std::shared_ptr<ObjectOwner>& peer,
                                        PeerReferences* references, IncomingMessage* message) {
    ReferenceTable& table = ReferenceTable::Instance();
    if (reference.owner == ReferenceOwner::kSender) {
        return static_cast<AIBinder*>(table.ProxyFor(peer, references, reference.number, 1));
    }
    if (reference.owner == ReferenceOwner::kReceiver) {
        if (AIBinder* found = table.Find(references, reference.number)) return found;
        return base::Failure{"reference to unknown object " + std::to_string(reference.number)};
    }
    if (reference.owner != ReferenceOwner::kOther) {
        return base::Failure{"reference with unknown kind of owner"};
    }
    message->unresolved.push_back(
            {message->parcel->Objects().size(), reference.name, reference.number});
    return static_cast<AIBinder*>(nullptr);
}

}  // namespace

base::Result<base::Done> DecodeMessage(IncomingFrame* frame,
                                       const std::shared_ptr<ObjectOwner>& peer,
                                       PeerReferences* references, IncomingMessage* message) {
    const FrameHeader& header = frame->header;
    message->header = header;
    message->status = header.status;
    size_t end = 0;  // of the record before
    size_t descriptors = 0;
    size_t binders = 0;
    for (size_t i = 0; i < header.objectCount; ++i) {
        const uint32_t offset = frame->OffsetAt(i);
        if (offset % 4 != 0 || offset < end || offset > header.dataSize - sizeof(ObjectRecord)) {
            return RecordFailure(offset, " is misplaced");
        }
        end = offset + sizeof(ObjectRecord);
        ObjectRecord record;
        memcpy(&record, frame->body.get() + offset, sizeof(record));
        ParcelObject object{offset, nullptr, -1};
        if (record.type == kDescriptor && record.handle == descriptors &&
            descriptors < header.descriptorCount) {
            if (!frame->descriptorsLost)
                object.fd = std::exchange(frame->descriptors[descriptors], -1);
            ++descriptors;
        } else if (record.type == kBinderHandle && record.handle == binders &&
                   binders < header.referenceCount) {
            const base::Result<AIBinder*> binder =
                    DecodeReference(frame->ReferenceAt(binders++), peer, references, message);
            if (!binder.Ok()) return binder.GetFailure();
            object.binder = binder.Value();
        } else {
            return RecordFailure(offset, " is not valid");
        }
        message->parcel->Objects().push_back(object);
    }
    message->parcel->Adopt(frame->body.release(), header.dataSize);
    return base::Done{};
}

}  // namespace hostbinder
