// The inside of a parcel: bytes, a position, and the objects whose records are in the bytes.
#pragma once

#include <android/binder_ibinder.h>
#include <android/binder_parcel.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "wire_format.h"

namespace hostbinder {

// A binder (strong reference) or a descriptor that a record in the parcel's bytes refers to.
struct ParcelObject {
    uint32_t offset;             // of the ObjectRecord
    AIBinder* binder = nullptr;  // null for a descriptor
    int fd = -1;
};

}  // namespace hostbinder

struct AParcel {
    AParcel() = default;
    ~AParcel();
    AParcel(const AParcel&) = delete;
    AParcel& operator=(const AParcel&) = delete;

    // Room for `size` bytes at the position, which moves behind it; padding is zeroed.
    // Null if there is no memory, the parcel would grow too large or the position is behind the
    // end.
    uint8_t* Grow(size_t size);
    // The next `size` bytes (and their padding), or null if there are not as many.
    const uint8_t* Take(size_t size) const;
    size_t Left() const { return m_position < m_size ? m_size - m_position : 0; }

    template <typename T>
    binder_status_t Write(T value) {
        uint8_t* place = Grow(sizeof(T));
        if (place == nullptr) return STATUS_NO_MEMORY;
        memcpy(place, &value, sizeof(T));
        return STATUS_OK;
    }
    template <typename T>
    binder_status_t Read(T* value) const {
        const uint8_t* place = Take(sizeof(T));
        if (place == nullptr) return STATUS_NOT_ENOUGH_DATA;
        memcpy(value, place, sizeof(T));
        return STATUS_OK;
    }

    // Writes a record at the end and keeps the object; takes ownership of the reference or
    // descriptor, also on failure.
    binder_status_t WriteObject(uint32_t type, AIBinder* binder, int fd);
    // The object of the record at the position; null for the record of a null binder.
    // STATUS_BAD_TYPE if there is no such record.
    binder_status_t ReadObject(uint32_t type, const hostbinder::ParcelObject** object) const;

    // Adds plain bytes: STATUS_INVALID_OPERATION if `from` holds objects.
    binder_status_t Append(const AParcel& from, size_t start, size_t size);
    // Takes over a malloc'ed block whose first `size` bytes are the content; the objects in them
    // are added before or after.
    void Adopt(uint8_t* block, size_t size);

    const uint8_t* Data() const { return m_data; }
    uint8_t* MutableData() { return m_data; }
    size_t Size() const { return m_size; }
    size_t Position() const { return m_position; }
    void SetPosition(size_t position) const { m_position = position; }
    std::vector<hostbinder::ParcelObject>& Objects() { return m_objects; }
    const std::vector<hostbinder::ParcelObject>& Objects() const { return m_objects; }
    // How many of the objects are descriptors.
    size_t DescriptorCount() const;

    // The object a request was prepared for: to be compared only, because it may be gone.
    const AIBinder* PreparedFor() const { return m_preparedFor; }
    void SetPreparedFor(const AIBinder* binder) { m_preparedFor = binder; }

  private:
    bool Reserve(size_t size);

    uint8_t* m_data = nullptr;
    size_t m_size = 0;
    size_t m_capacity = 0;
    mutable size_t m_position = 0;
    std::vector<hostbinder::ParcelObject> m_objects;  // ascending offsets
    const AIBinder* m_preparedFor = nullptr;
};

namespace hostbinder {

// Strings without allocator functions. A null string cannot be read: STATUS_UNEXPECTED_NULL.
binder_status_t WriteString(AParcel* parcel, const std::string& string);
binder_status_t ReadString(const AParcel* parcel, std::string* string);

// The header of a request, which names the interface it is for.
binder_status_t WriteInterfaceHeader(AParcel* parcel, const std::string& descriptor);
// STATUS_BAD_TYPE if the header names another interface.
binder_status_t CheckInterfaceHeader(const AParcel* parcel, const std::string& descriptor);

}  // namespace hostbinder
