// Turning parcels into frames and frames into parcels.
#include "message.h"

#include <chrono>
#include <cstring>
#include <utility>

#include "connection.h"
#include "endpoint.h"
#include "log.h"
#include "object_table.h"

namespace hostbinder {

namespace {

// Of one message's references to third processes, each of which has a limit of its own.
constexpr std::chrono::seconds kResolveLimit{5};

binder_status_t makeReference(AIBinder* binder, Connection* connection, ReferenceRecord* record,
                              std::vector<AIBinder*>* heldForPeer) {
    *record = {};
    if (LocalBinder* local = binder->asLocal()) {
        record->owner = ReferenceOwner::kSender;
        Endpoint::instance().ensureListening();  // the peer may pass the reference on
        return ObjectTable::instance().exportTo(connection->objects(), local, &record->number);
    }
    ProxyBinder* proxy = binder->asProxy();
    record->number = proxy->number();
    if (proxy->connection().get() == connection) {
        record->owner = ReferenceOwner::kReceiver;
        return STATUS_OK;
    }
    record->owner = ReferenceOwner::kOther;
    // Without a connection the object never was reachable: nobody has the empty name.
    const std::string name = proxy->connection() == nullptr ? "" : proxy->connection()->peerName();
    memcpy(record->name, name.data(), name.size());
    binder->incStrong();
    heldForPeer->push_back(binder);
    return STATUS_OK;
}

// Puts one object into the frame's tables and the place there into its record.
binder_status_t encodeObject(const ParcelObject& object, uint8_t* bytes, Connection* connection,
                             OutgoingFrame* frame, std::vector<AIBinder*>* heldForPeer) {
    ObjectRecord record;
    memcpy(&record, bytes + object.offset, sizeof(record));
    if (object.binder != nullptr) {
        ReferenceRecord reference;
        binder_status_t status = makeReference(object.binder, connection, &reference, heldForPeer);
        if (status != STATUS_OK) return status;
        record.handle = frame->references.size();
        frame->references.push_back(reference);
    } else {
        record.handle = frame->descriptors.size();
        frame->descriptors.push_back(object.fd);
    }
    memcpy(bytes + object.offset, &record, sizeof(record));
    frame->offsets.push_back(object.offset);
    return STATUS_OK;
}

}  // namespace

binder_status_t encodeMessage(AParcel* parcel, Connection* connection, OutgoingFrame* frame,
                              std::vector<AIBinder*>* heldForPeer) {
    if (parcel->size() > kMaxParcelBytes) {
        BINDER_LOGE("message of %zu bytes is too large, %u at most", parcel->size(),
                    kMaxParcelBytes);
        return STATUS_FAILED_TRANSACTION;
    }
    frame->data = parcel->data();
    frame->dataSize = parcel->size();
    for (const ParcelObject& object : parcel->objects()) {
        binder_status_t status =
                encodeObject(object, parcel->mutableData(), connection, frame, heldForPeer);
        if (status == STATUS_OK && frame->descriptors.size() > kMaxDescriptors) {
            BINDER_LOGE("message has more than %u descriptors", kMaxDescriptors);
            status = STATUS_FAILED_TRANSACTION;
        }
        if (status != STATUS_OK) {
            undoExports(connection, *frame);
            return status;
        }
    }
    return STATUS_OK;
}

void undoExports(Connection* connection, const OutgoingFrame& frame) {
    for (const ReferenceRecord& reference : frame.references) {
        if (reference.owner != ReferenceOwner::kSender) continue;
        LocalBinder* dropped = nullptr;
        ObjectTable::instance().giveBack(connection->objects(), reference.number, 1, &dropped);
        if (dropped != nullptr) dropped->decStrong();
    }
}

namespace {

// Builds the parcel's objects from the frame's tables, one record after the other.
class ObjectDecoder {
  public:
    ObjectDecoder(IncomingFrame* frame, const std::shared_ptr<Connection>& connection,
                  IncomingMessage* message)
        : mFrame(frame), mConnection(connection), mMessage(message) {}

    bool decodeAll(std::string* reason) {
        const FrameHeader& header = mFrame->header;
        for (size_t i = 0; i < header.objectCount; ++i) {
            const uint32_t offset = mFrame->offsetAt(i);
            if (offset % 4 != 0 || offset < mEnd ||
                offset > header.dataSize - sizeof(ObjectRecord)) {
                *reason = "object record at offset " + std::to_string(offset) + " is misplaced";
                return false;
            }
            mEnd = offset + sizeof(ObjectRecord);
            if (!decodeOne(offset, reason)) return false;
        }
        return true;
    }

  private:
    bool decodeOne(uint32_t offset, std::string* reason) {
        ObjectRecord record;
        memcpy(&record, mFrame->body.get() + offset, sizeof(record));
        ParcelObject object{offset, nullptr, -1};
        if (record.type == kDescriptor && record.handle == mDescriptors &&
            mDescriptors < mFrame->header.descriptorCount) {
            if (!mFrame->descriptorsLost) {
                object.fd = std::exchange(mFrame->descriptors[mDescriptors], -1);
            }
            ++mDescriptors;
        } else if (record.type == kBinderHandle && record.handle == mReferences &&
                   mReferences < mFrame->header.referenceCount) {
            if (!decodeReference(mFrame->referenceAt(mReferences++), &object, reason)) return false;
        } else {
            *reason = "object record at offset " + std::to_string(offset) + " is not valid";
            return false;
        }
        mMessage->parcel->objects().push_back(object);
        return true;
    }

    bool decodeReference(const ReferenceRecord& reference, ParcelObject* object,
                         std::string* reason) {
        ObjectTable& table = ObjectTable::instance();
        switch (reference.owner) {
            case ReferenceOwner::kSender:
                object->binder =
                        table.proxyFor(mConnection, mConnection->objects(), reference.number, 1);
                return true;
            case ReferenceOwner::kReceiver:
                object->binder = table.findHeld(mConnection->objects(), reference.number);
                if (object->binder != nullptr) return true;
                *reason = "reference to unknown object " + std::to_string(reference.number);
                return false;
            case ReferenceOwner::kOther:
                mMessage->unresolved.push_back(
                        {mMessage->parcel->objects().size(), reference.name, reference.number});
                return true;
        }
        *reason = "reference with unknown kind of owner";
        return false;
    }

    IncomingFrame* const mFrame;
    const std::shared_ptr<Connection>& mConnection;
    IncomingMessage* const mMessage;
    size_t mEnd = 0;  // of the record before
    size_t mDescriptors = 0;
    size_t mReferences = 0;
};

}  // namespace

bool decodeMessage(IncomingFrame* frame, const std::shared_ptr<Connection>& connection,
                   IncomingMessage* message, std::string* reason) {
    message->header = frame->header;
    message->status = frame->header.status;
    message->parcel = std::make_unique<AParcel>();
    if (!ObjectDecoder(frame, connection, message).decodeAll(reason)) return false;
    message->parcel->adoptData(frame->body.release(), frame->header.dataSize);
    if (frame->descriptorsLost) {
        BINDER_LOGE("message from %s lost its descriptors: this process has too many open",
                    connection->peerLabel().c_str());
        message->status = STATUS_FAILED_TRANSACTION;
    }
    return true;
}

void resolveReferences(IncomingMessage* message, Connection* connection) {
    const auto limit = std::chrono::steady_clock::now() + kResolveLimit;
    for (const UnresolvedReference& reference : message->unresolved) {
        if (message->status == STATUS_OK && std::chrono::steady_clock::now() > limit) {
            BINDER_LOGE("message from %s refused: it refers to processes that do not answer",
                        connection->peerLabel().c_str());
            message->status = STATUS_FAILED_TRANSACTION;
        }
        if (message->status != STATUS_OK) break;
        message->parcel->objects()[reference.objectIndex].binder =
                Endpoint::instance().resolve(reference.owner, reference.number);
    }
    message->unresolved.clear();
    if (message->header.referencesId != 0) {
        connection->sendReferencesTaken(message->header.referencesId);
    }
}

}  // namespace hostbinder
