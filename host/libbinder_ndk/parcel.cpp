// A parcel's storage: growth, position, copying and the records of objects.
#include "parcel.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "ibinder.h"

using hostbinder::kBinderHandle;
using hostbinder::kBinderNull;
using hostbinder::kDescriptor;
using hostbinder::ObjectRecord;
using hostbinder::ParcelObject;

namespace {

constexpr size_t kMaxSize = std::numeric_limits<int32_t>::max() - 3;

constexpr size_t Padded(size_t size) {
    return (size + 3) & ~size_t{3};
}

bool StartsBefore(const ParcelObject& object, size_t offset) {
    return object.offset < offset;
}

void DropObject(const ParcelObject& object) {
    if (object.binder != nullptr) object.binder->DecStrong();
    if (object.fd >= 0) close(object.fd);
}

}  // namespace

AParcel::~AParcel() {
    free(m_data);
    for (const ParcelObject& object : m_objects) DropObject(object);
}

void AParcel::Adopt(uint8_t* block, size_t size) {
    free(m_data);
    m_data = block;
    m_size = m_capacity = size;
    m_position = 0;
}

bool AParcel::Reserve(size_t size) {
    if (size <= m_capacity) return true;
    size_t capacity = std::max(size, std::min(m_capacity * 2, kMaxSize));
    capacity = std::max<size_t>(capacity, 256);
    void* grown = realloc(m_data, capacity);
    if (grown == nullptr) return false;
    m_data = static_cast<uint8_t*>(grown);
    m_capacity = capacity;
    return true;
}

uint8_t* AParcel::Grow(size_t size) {
    if (m_position > m_size || size > kMaxSize - m_position) return nullptr;
    const size_t end = m_position + Padded(size);
    if (!Reserve(end)) return nullptr;
    uint8_t* place = m_data + m_position;
    memset(place + size, 0, Padded(size) - size);
    m_position = end;
    m_size = std::max(m_size, end);
    return place;
}

const uint8_t* AParcel::Take(size_t size) const {
    if (size > Left() || Padded(size) > Left()) return nullptr;
    const uint8_t* place = m_data + m_position;
    m_position += Padded(size);
    return place;
}

size_t AParcel::DescriptorCount() const {
    return static_cast<size_t>(std::count_if(m_objects.begin(), m_objects.end(),
                                             [](const auto& object) { return object.fd >= 0; }));
}

binder_status_t AParcel::WriteObject(uint32_t type, AIBinder* binder, int fd) {
    const ParcelObject object{static_cast<uint32_t>(m_position), binder, fd};
    binder_status_t status = STATUS_INVALID_OPERATION;
    const uint32_t flags = type == kBinderNull ? hostbinder::kBinderNullFlags : 0;
    // Indices into the tables are given when the parcel is sent.
    if (m_position == m_size) status = Write(ObjectRecord{type, flags, 0, 0});
    if (status == STATUS_OK && type != kBinderNull) {
        m_objects.push_back(object);
    } else {
        DropObject(object);
    }
    return status;
}

binder_status_t AParcel::ReadObject(uint32_t type, const ParcelObject** object) const {
    *object = nullptr;
    const size_t offset = m_position;
    ObjectRecord record;
    if (Read(&record) != STATUS_OK) return STATUS_BAD_TYPE;
    if (record.type == kBinderNull && type == kBinderHandle) return STATUS_OK;
    auto place = std::lower_bound(m_objects.begin(), m_objects.end(), offset, StartsBefore);
    if (record.type != type || place == m_objects.end() || place->offset != offset ||
        (place->binder != nullptr) != (type == kBinderHandle)) {
        return STATUS_BAD_TYPE;
    }
    *object = &*place;
    return STATUS_OK;
}

binder_status_t AParcel::Append(const AParcel& from, size_t start, size_t size) {
    if (!from.m_objects.empty()) return STATUS_INVALID_OPERATION;
    if (start > from.m_size || size > from.m_size - start) return STATUS_BAD_VALUE;
    m_position = m_size;
    if (size == 0) return STATUS_OK;
    uint8_t* place = Grow(size);
    if (place == nullptr) return STATUS_NO_MEMORY;
    memcpy(place, from.m_data + start, size);
    return STATUS_OK;
}
