// Objects that are known across processes, and references to them in messages.
#include "references.h"

#include <cstring>
#include <utility>

#include "log.h"
#include "peer.h"
#include "wire_format.h"

namespace hostbinder {

namespace {

// Own objects by their numbers. Not owned: each leaves the table when it ends.
struct ExportedObjects {
    std::mutex mutex;  // guards all, also the objects' numbers
    std::unordered_map<uint64_t, LocalBinder*> byNumber;
    uint64_t lastNumber = 0;
};

ExportedObjects& TheExportedObjects() {
    static ExportedObjects* const objects = new ExportedObjects;
    return *objects;
}

uint64_t NumberOf(LocalBinder* binder) {
    ExportedObjects& exported = TheExportedObjects();
    std::lock_guard<std::mutex> lock(exported.mutex);
    if (binder->exportedNumber == 0) {
        binder->exportedNumber = ++exported.lastNumber;
        exported.byNumber[binder->exportedNumber] = binder;
    }
    return binder->exportedNumber;
}

}  // namespace

LocalBinder* FindExported(uint64_t number) {
    ExportedObjects& exported = TheExportedObjects();
    std::lock_guard<std::mutex> lock(exported.mutex);
    auto found = exported.byNumber.find(number);
    return found != exported.byNumber.end() && found->second->TryIncStrong() ? found->second
                                                                             : nullptr;
}

void ForgetExported(const LocalBinder* binder) {
    ExportedObjects& exported = TheExportedObjects();
    std::lock_guard<std::mutex> lock(exported.mutex);
    if (binder->exportedNumber != 0) exported.byNumber.erase(binder->exportedNumber);
}

void SetContextObject(LocalBinder* binder) {
    binder->IncStrong();
    ExportedObjects& exported = TheExportedObjects();
    std::lock_guard<std::mutex> lock(exported.mutex);
    exported.byNumber[kContextObject] = binder;
}

binder_status_t PeerReferences::Export(LocalBinder* binder, uint64_t* number) {
    *number = NumberOf(binder);
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_open) return STATUS_DEAD_OBJECT;
    Held& held = m_held[*number];
    if (held.references++ == 0) {
        binder->IncStrong();
        held.binder = binder;
    }
    return STATUS_OK;
}

bool PeerReferences::GiveBack(uint64_t number, uint64_t count, LocalBinder** dropped) {
    *dropped = nullptr;
    std::lock_guard<std::mutex> lock(m_mutex);
    auto held = m_held.find(number);
    if (held == m_held.end() || held->second.references < count) return false;
    held->second.references -= count;
    if (held->second.references > 0) return true;
    *dropped = held->second.binder;
    m_held.erase(held);
    return true;
}

LocalBinder* PeerReferences::FindHeld(uint64_t number) {
    if (number == kContextObject) return FindExported(number);
    std::lock_guard<std::mutex> lock(m_mutex);
    auto held = m_held.find(number);
    if (held == m_held.end()) return nullptr;
    held->second.binder->IncStrong();
    return held->second.binder;
}

ProxyBinder* PeerReferences::ProxyFor(const std::shared_ptr<Peer>& peer, uint64_t number,
                                      uint64_t received) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_open) return new ProxyBinder(nullptr, number);
    ProxyBinder*& place = m_proxies[number];
    // A proxy without strong references is on its way out: a new one takes its place.
    if (place == nullptr || !place->TryIncStrong()) place = new ProxyBinder(peer, number);
    place->receivedReferences += received;
    return place;
}

ProxyBinder* PeerReferences::FindProxy(uint64_t number) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto found = m_proxies.find(number);
    return found != m_proxies.end() && found->second->TryIncStrong() ? found->second : nullptr;
}

uint64_t PeerReferences::ForgetProxy(ProxyBinder* proxy) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto found = m_proxies.find(proxy->Number());
    if (found != m_proxies.end() && found->second == proxy) m_proxies.erase(found);
    return proxy->receivedReferences;
}

binder_status_t PeerReferences::Keep(AIBinder* binder, uint64_t* id) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_open) return STATUS_DEAD_OBJECT;
    if (*id == 0) *id = ++m_lastKept;
    binder->IncStrong();
    m_kept[*id].push_back(binder);
    return STATUS_OK;
}

std::vector<AIBinder*> PeerReferences::TakeKept(uint64_t id) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto kept = m_kept.extract(id);
    return kept.empty() ? std::vector<AIBinder*>() : std::move(kept.mapped());
}

void PeerReferences::Close(std::vector<AIBinder*>* dropped, std::vector<ProxyBinder*>* orphans) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_open = false;
    for (const auto& entry : m_held) dropped->push_back(entry.second.binder);
    for (const auto& entry : m_kept) {
        dropped->insert(dropped->end(), entry.second.begin(), entry.second.end());
    }
    for (const auto& entry : m_proxies) {
        if (entry.second->TryIncStrong()) orphans->push_back(entry.second);
    }
    m_held.clear();
    m_kept.clear();
    m_proxies.clear();
}

namespace {

binder_status_t AddReference(AIBinder* binder, Peer* peer, OutgoingFrame* frame) {
    ReferenceRecord record{};
    binder_status_t status = STATUS_OK;
    const ProxyBinder* const proxy = binder->AsProxy();
    if (proxy == nullptr) {
        record.owner = ReferenceOwner::kSender;
        status = peer->References()->Export(binder->AsLocal(), &record.number);
    } else if (proxy->Owner().get() == peer) {
        record.owner = ReferenceOwner::kReceiver;
        record.number = proxy->Number();
    } else {
        record.owner = ReferenceOwner::kOther;
        record.number = proxy->Number();
        // Without an owner the object never was reachable: no process has the empty name.
        const std::string name = proxy->Owner() == nullptr ? "" : proxy->Owner()->PeerName();
        memcpy(record.name, name.data(), name.size());
        status = peer->References()->Keep(binder, &frame->header.referencesId);
    }
    if (status == STATUS_OK) frame->references.push_back(record);
    return status;
}

}  // namespace

binder_status_t EncodeMessage(AParcel* parcel, Peer* peer, OutgoingFrame* frame) {
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
            index = frame->references.size();
            const binder_status_t status = AddReference(object.binder, peer, frame);
            if (status != STATUS_OK) return status;
        }
        memcpy(parcel->MutableData() + object.offset + offsetof(ObjectRecord, handle), &index,
               sizeof(index));
        frame->offsets.push_back(object.offset);
    }
    return STATUS_OK;
}

namespace {

base::Failure RecordFailure(uint32_t offset, const char* problem) {
    return {"object record at offset " + std::to_string(offset) + problem};
}

// Null, without a failure, for an object of a third process.
base::Result<AIBinder*> DecodeReference(const ReferenceRecord& reference,
                                        const std::shared_ptr<Peer>& peer,
                                        IncomingMessage* message) {
    PeerReferences* const references = peer->References();
    if (reference.owner == ReferenceOwner::kSender) {
        return static_cast<AIBinder*>(references->ProxyFor(peer, reference.number, 1));
    }
    if (reference.owner == ReferenceOwner::kReceiver) {
        if (AIBinder* found = references->FindHeld(reference.number)) return found;
        return base::Failure{"reference to unknown object " + std::to_string(reference.number)};
    }
    if (reference.owner != ReferenceOwner::kOther) {
        return base::Failure{"reference with unknown kind of owner"};
    }
    message->unresolved.emplace_back(message->parcel->Objects().size(), reference);
    return static_cast<AIBinder*>(nullptr);
}

}  // namespace

base::Result<base::Done> DecodeMessage(IncomingFrame* frame, const std::shared_ptr<Peer>& peer,
                                       IncomingMessage* message) {
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
                    DecodeReference(frame->ReferenceAt(binders++), peer, message);
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
