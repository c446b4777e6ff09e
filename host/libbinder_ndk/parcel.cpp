// A parcel's storage: growth, position, copying and the records of objects.
#include "parcel.h"

#include <android/binder_parcel_platform.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "received_descriptor.h"

using hostbinder::kBinderHandle;
using hostbinder::kBinderNull;
using hostbinder::kDescriptor;
using hostbinder::ObjectRecord;
using hostbinder::padded;
using hostbinder::ParcelObject;

namespace {

constexpr size_t kMaxSize = std::numeric_limits<int32_t>::max() - 3;

bool startsBefore(const ParcelObject& object, size_t offset) {
    return object.offset < offset;
}

void dropObject(const ParcelObject& object) {
    if (object.binder != nullptr) AIBinder_decStrong(object.binder);
    if (object.fd >= 0) hostbinder::closeReceived(object.fd);
}

}  // namespace

AParcel::~AParcel() {
    clear();
    setPreparedFor(nullptr);
}

void AParcel::clear() {
    std::vector<ParcelObject> objects = std::move(mObjects);
    mObjects.clear();
    if (mSensitive && mData != nullptr) explicit_bzero(mData, mCapacity);
    free(mData);
    mData = nullptr;
    mSize = mCapacity = mPosition = 0;
    for (const ParcelObject& object : objects) dropObject(object);
}

void AParcel::setPreparedFor(AIBinder* binder) {
    if (binder != nullptr) AIBinder_incStrong(binder);
    if (mPreparedFor != nullptr) AIBinder_decStrong(mPreparedFor);
    mPreparedFor = binder;
}

void AParcel::adopt(uint8_t* block, size_t size) {
    clear();
    adoptData(block, size);
}

void AParcel::adoptData(uint8_t* block, size_t size) {
    free(mData);
    mData = block;
    mSize = mCapacity = size;
}

bool AParcel::reserve(size_t size) {
    if (size <= mCapacity) return true;
    size_t capacity = std::max(size, std::min(mCapacity * 2, kMaxSize));
    capacity = std::max<size_t>(capacity, 256);
    void* grown = realloc(mData, capacity);
    if (grown == nullptr) return false;
    mData = static_cast<uint8_t*>(grown);
    mCapacity = capacity;
    return true;
}

bool AParcel::overlapsObject(size_t start, size_t end) const {
    // Records are equally long, so only the last one that starts before `end` can reach `start`.
    auto next = std::lower_bound(mObjects.begin(), mObjects.end(), end, startsBefore);
    return next != mObjects.begin() && std::prev(next)->offset + sizeof(ObjectRecord) > start;
}

uint8_t* AParcel::grow(size_t size) {
    if (mPosition > mSize || size > kMaxSize - mPosition) return nullptr;
    const size_t end = mPosition + padded(size);
    if (mPosition < mSize && overlapsObject(mPosition, end)) return nullptr;
    if (!reserve(end)) return nullptr;
    uint8_t* place = mData + mPosition;
    memset(place + size, 0, padded(size) - size);
    mPosition = end;
    mSize = std::max(mSize, end);
    return place;
}

const uint8_t* AParcel::take(size_t size) const {
    if (size > left() || padded(size) > left()) return nullptr;
    const uint8_t* place = mData + mPosition;
    mPosition += padded(size);
    return place;
}

size_t AParcel::descriptorCount() const {
    return static_cast<size_t>(std::count_if(mObjects.begin(), mObjects.end(),
                                             [](const auto& object) { return object.fd >= 0; }));
}

binder_status_t AParcel::writeObject(uint32_t type, AIBinder* binder, int fd) {
    const size_t offset = mPosition;
    // Indices into the tables are given when the parcel is sent.
    binder_status_t status = write(ObjectRecord{type, 0, 0, 0});
    ParcelObject object{static_cast<uint32_t>(offset), binder, fd};
    if (status != STATUS_OK) {
        dropObject(object);
        return status;
    }
    if (type == kBinderNull) return STATUS_OK;
    auto place = std::lower_bound(mObjects.begin(), mObjects.end(), offset, startsBefore);
    mObjects.insert(place, object);
    return STATUS_OK;
}

binder_status_t AParcel::readObject(uint32_t type, const ParcelObject** object) const {
    *object = nullptr;
    const size_t offset = mPosition;
    ObjectRecord record;
    binder_status_t status = read(&record);
    if (status != STATUS_OK) return status;
    if (record.type == kBinderNull && type == kBinderHandle) return STATUS_OK;
    auto place = std::lower_bound(mObjects.begin(), mObjects.end(), offset, startsBefore);
    if (record.type != type || place == mObjects.end() || place->offset != offset ||
        (place->binder != nullptr) != (type == kBinderHandle)) {
        return STATUS_BAD_TYPE;
    }
    *object = &*place;
    return STATUS_OK;
}

binder_status_t AParcel::append(const AParcel& from, size_t start, size_t size) {
    if (start > from.mSize || size > from.mSize - start) return STATUS_BAD_VALUE;
    const size_t end = start + size;
    auto first = std::lower_bound(from.mObjects.begin(), from.mObjects.end(), start, startsBefore);
    auto last = std::lower_bound(first, from.mObjects.end(), end, startsBefore);
    if (from.overlapsObject(start, start + 1) &&
        (first == from.mObjects.end() || first->offset != start)) {
        return STATUS_BAD_VALUE;  // begins inside a record
    }
    if (first != last && std::prev(last)->offset + sizeof(ObjectRecord) > end) {
        return STATUS_BAD_VALUE;  // ends inside a record
    }
    mPosition = mSize;
    if (size == 0) return STATUS_OK;
    const size_t base = mPosition;
    // Offsets are kept while growing: from may be this parcel.
    std::vector<ParcelObject> copies;
    for (; first != last; ++first) {
        ParcelObject copy = *first;
        copy.offset = static_cast<uint32_t>(base + (copy.offset - start));
        if (copy.binder != nullptr) AIBinder_incStrong(copy.binder);
        if (copy.fd >= 0) copy.fd = fcntl(copy.fd, F_DUPFD_CLOEXEC, 0);
        copies.push_back(copy);
    }
    bool complete = std::none_of(copies.begin(), copies.end(), [](const ParcelObject& object) {
        return object.binder == nullptr && object.fd < 0;
    });
    uint8_t* place = complete ? grow(size) : nullptr;
    if (place == nullptr) {
        for (const ParcelObject& copy : copies) dropObject(copy);
        return STATUS_NO_MEMORY;
    }
    memcpy(place, from.mData + start, size);
    mObjects.insert(mObjects.end(), copies.begin(), copies.end());
    return STATUS_OK;
}

AParcel* AParcel_create(void) {
    return new AParcel;
}

void AParcel_delete(AParcel* parcel) {
    delete parcel;
}

binder_status_t AParcel_reset(AParcel* parcel) {
    parcel->clear();
    return STATUS_OK;
}

binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position) {
    if (position < 0) return STATUS_BAD_VALUE;
    parcel->setPosition(static_cast<size_t>(position));
    return STATUS_OK;
}

int32_t AParcel_getDataPosition(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->position());
}

int32_t AParcel_getDataSize(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->size());
}

binder_status_t AParcel_appendFrom(const AParcel* from, AParcel* to, int32_t start, int32_t size) {
    if (start < 0 || size < 0) return STATUS_BAD_VALUE;
    return to->append(*from, static_cast<size_t>(start), static_cast<size_t>(size));
}

binder_status_t AParcel_marshal(const AParcel* parcel, uint8_t* buffer, size_t start, size_t len) {
    if (!parcel->objects().empty()) return STATUS_INVALID_OPERATION;
    if (start > parcel->size() || len > parcel->size() - start) return STATUS_BAD_VALUE;
    if (len > 0) memcpy(buffer, parcel->data() + start, len);
    return STATUS_OK;
}

binder_status_t AParcel_unmarshal(AParcel* parcel, const uint8_t* buffer, size_t len) {
    if (len > kMaxSize) return STATUS_NO_MEMORY;
    uint8_t* block = static_cast<uint8_t*>(malloc(std::max<size_t>(len, 1)));
    if (block == nullptr) return STATUS_NO_MEMORY;
    if (len > 0) memcpy(block, buffer, len);
    parcel->adopt(block, len);
    return STATUS_OK;
}

void AParcel_markSensitive(const AParcel* parcel) {
    parcel->markSensitive();
}

bool AParcel_getAllowFds(const AParcel*) {
    return true;
}
