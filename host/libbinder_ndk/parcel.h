// The inside of a parcel: bytes, a position, and the objects whose records lie in the bytes.
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

// A binder (strong reference) or a descriptor that a record in the parcel's bytes stands for.
struct ParcelObject {
    uint32_t offset;             // of the ObjectRecord
    AIBinder* binder = nullptr;  // null for a descriptor
    int fd = -1;
};

constexpr size_t padded(size_t size) {
    return (size + 3) & ~size_t{3};
}

}  // namespace hostbinder

struct AParcel {
    AParcel() = default;
    ~AParcel();
    AParcel(const AParcel&) = delete;
    AParcel& operator=(const AParcel&) = delete;

    // Room for `size` bytes at the position, which moves behind it; padding is zeroed.
    // Null if there is no memory, the parcel would grow too large, the position lies behind the
    // end, or the bytes of an object record would be overwritten.
    uint8_t* grow(size_t size);
    // The next `size` bytes (and their padding), or null if there are not that many.
    const uint8_t* take(size_t size) const;
    size_t left() const { return mPosition < mSize ? mSize - mPosition : 0; }

    template <typename T>
    binder_status_t write(T value) {
        uint8_t* place = grow(sizeof(T));
        if (place == nullptr) return STATUS_NO_MEMORY;
        memcpy(place, &value, sizeof(T));
        return STATUS_OK;
    }
    template <typename T>
    binder_status_t read(T* value) const {
        const uint8_t* place = take(sizeof(T));
        if (place == nullptr) return STATUS_NOT_ENOUGH_DATA;
        memcpy(value, place, sizeof(T));
        return STATUS_OK;
    }

    // Writes a record and keeps the object; takes ownership of the reference or descriptor, also
    // on failure.
    binder_status_t writeObject(uint32_t type, AIBinder* binder, int fd);
    // The object of the record at the position; null for the record of a null binder.
    binder_status_t readObject(uint32_t type, const hostbinder::ParcelObject** object) const;

    binder_status_t append(const AParcel& from, size_t start, size_t size);
    // Drops all content.
    void clear();
    // Takes over a malloc'ed block whose first `size` bytes are the content.
    void adopt(uint8_t* block, size_t size);
    // The same, for bytes whose objects are here already.
    void adoptData(uint8_t* block, size_t size);

    const uint8_t* data() const { return mData; }
    uint8_t* mutableData() { return mData; }
    size_t size() const { return mSize; }
    size_t position() const { return mPosition; }
    void setPosition(size_t position) const { mPosition = position; }
    std::vector<hostbinder::ParcelObject>& objects() { return mObjects; }
    const std::vector<hostbinder::ParcelObject>& objects() const { return mObjects; }
    // How many of the objects are descriptors.
    size_t descriptorCount() const;
    void markSensitive() const { mSensitive = true; }

    // The object a request was prepared for (strong reference), or null.
    AIBinder* preparedFor() const { return mPreparedFor; }
    void setPreparedFor(AIBinder* binder);

  private:
    bool reserve(size_t size);
    bool overlapsObject(size_t start, size_t end) const;

    uint8_t* mData = nullptr;
    size_t mSize = 0;
    size_t mCapacity = 0;
    mutable size_t mPosition = 0;
    mutable bool mSensitive = false;
    std::vector<hostbinder::ParcelObject> mObjects;  // ascending offsets
    AIBinder* mPreparedFor = nullptr;
};

namespace hostbinder {

binder_status_t writeInterfaceHeader(AParcel* parcel, const std::string& descriptor);
// STATUS_BAD_TYPE if the header names another interface.
binder_status_t checkInterfaceHeader(const AParcel* parcel, const std::string& descriptor);

// Strings without allocator functions.
binder_status_t writeString(AParcel* parcel, const std::string& string);
binder_status_t readString(const AParcel* parcel, std::string* string);

}  // namespace hostbinder
