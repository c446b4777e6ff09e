// Numbers in a parcel, and arrays of numbers.
#include <limits>

#include "parcel.h"
#include "parcel_arrays.h"

namespace {

using hostbinder::finishAllocation;
using hostbinder::readArrayLength;
using hostbinder::writeArrayLength;

// Elements lie in the parcel as in memory.
template <typename T>
binder_status_t writePackedArray(AParcel* parcel, const T* elements, int32_t length) {
    binder_status_t status = writeArrayLength(parcel, elements, length);
    if (status != STATUS_OK || length <= 0) return status;
    if (static_cast<size_t>(length) > std::numeric_limits<int32_t>::max() / sizeof(T)) {
        return STATUS_NO_MEMORY;
    }
    const size_t bytes = static_cast<size_t>(length) * sizeof(T);
    uint8_t* place = parcel->grow(bytes);
    if (place == nullptr) return STATUS_NO_MEMORY;
    memcpy(place, elements, bytes);
    return STATUS_OK;
}

template <typename T>
binder_status_t readPackedArray(const AParcel* parcel, void* arrayData,
                                bool (*allocator)(void*, int32_t, T**)) {
    int32_t length = 0;
    binder_status_t status = readArrayLength(parcel, sizeof(T), &length);
    if (status != STATUS_OK) return status;
    T* buffer = nullptr;
    bool accepted = allocator(arrayData, length, &buffer);
    status = finishAllocation(accepted && (length <= 0 || buffer != nullptr), length);
    if (status != STATUS_OK || length <= 0) return status;
    const size_t bytes = static_cast<size_t>(length) * sizeof(T);
    const uint8_t* place = parcel->take(bytes);
    if (place == nullptr) return STATUS_NOT_ENOUGH_DATA;
    memcpy(buffer, place, bytes);
    return STATUS_OK;
}

// Types narrower than 4 bytes are stored as int32.
template <typename T>
binder_status_t readNarrow(const AParcel* parcel, T* value) {
    int32_t word = 0;
    binder_status_t status = parcel->read(&word);
    if (status == STATUS_OK) *value = static_cast<T>(word);
    return status;
}

}  // namespace

binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value) {
    return parcel->write(value);
}
binder_status_t AParcel_writeUint32(AParcel* parcel, uint32_t value) {
    return parcel->write(value);
}
binder_status_t AParcel_writeInt64(AParcel* parcel, int64_t value) {
    return parcel->write(value);
}
binder_status_t AParcel_writeUint64(AParcel* parcel, uint64_t value) {
    return parcel->write(value);
}
binder_status_t AParcel_writeFloat(AParcel* parcel, float value) {
    return parcel->write(value);
}
binder_status_t AParcel_writeDouble(AParcel* parcel, double value) {
    return parcel->write(value);
}
binder_status_t AParcel_writeBool(AParcel* parcel, bool value) {
    return parcel->write(int32_t{value});
}
binder_status_t AParcel_writeChar(AParcel* parcel, char16_t value) {
    return parcel->write(int32_t{value});
}
binder_status_t AParcel_writeByte(AParcel* parcel, int8_t value) {
    return parcel->write(int32_t{value});
}

binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value) {
    return parcel->read(value);
}
binder_status_t AParcel_readUint32(const AParcel* parcel, uint32_t* value) {
    return parcel->read(value);
}
binder_status_t AParcel_readInt64(const AParcel* parcel, int64_t* value) {
    return parcel->read(value);
}
binder_status_t AParcel_readUint64(const AParcel* parcel, uint64_t* value) {
    return parcel->read(value);
}
binder_status_t AParcel_readFloat(const AParcel* parcel, float* value) {
    return parcel->read(value);
}
binder_status_t AParcel_readDouble(const AParcel* parcel, double* value) {
    return parcel->read(value);
}
binder_status_t AParcel_readBool(const AParcel* parcel, bool* value) {
    return readNarrow(parcel, value);
}
binder_status_t AParcel_readChar(const AParcel* parcel, char16_t* value) {
    return readNarrow(parcel, value);
}
binder_status_t AParcel_readByte(const AParcel* parcel, int8_t* value) {
    return readNarrow(parcel, value);
}

binder_status_t AParcel_writeInt32Array(AParcel* parcel, const int32_t* data, int32_t length) {
    return writePackedArray(parcel, data, length);
}
binder_status_t AParcel_writeUint32Array(AParcel* parcel, const uint32_t* data, int32_t length) {
    return writePackedArray(parcel, data, length);
}
binder_status_t AParcel_writeInt64Array(AParcel* parcel, const int64_t* data, int32_t length) {
    return writePackedArray(parcel, data, length);
}
binder_status_t AParcel_writeUint64Array(AParcel* parcel, const uint64_t* data, int32_t length) {
    return writePackedArray(parcel, data, length);
}
binder_status_t AParcel_writeFloatArray(AParcel* parcel, const float* data, int32_t length) {
    return writePackedArray(parcel, data, length);
}
binder_status_t AParcel_writeDoubleArray(AParcel* parcel, const double* data, int32_t length) {
    return writePackedArray(parcel, data, length);
}
binder_status_t AParcel_writeByteArray(AParcel* parcel, const int8_t* data, int32_t length) {
    return writePackedArray(parcel, data, length);
}

binder_status_t AParcel_writeCharArray(AParcel* parcel, const char16_t* data, int32_t length) {
    binder_status_t status = writeArrayLength(parcel, data, length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = AParcel_writeChar(parcel, data[i]);
    }
    return status;
}

binder_status_t AParcel_writeBoolArray(AParcel* parcel, const void* data, int32_t length,
                                       AParcel_boolArrayGetter getter) {
    binder_status_t status = writeArrayLength(parcel, data, length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = AParcel_writeBool(parcel, getter(data, static_cast<size_t>(i)));
    }
    return status;
}

binder_status_t AParcel_readInt32Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int32ArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readUint32Array(const AParcel* parcel, void* arrayData,
                                        AParcel_uint32ArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readInt64Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int64ArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readUint64Array(const AParcel* parcel, void* arrayData,
                                        AParcel_uint64ArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readFloatArray(const AParcel* parcel, void* arrayData,
                                       AParcel_floatArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readDoubleArray(const AParcel* parcel, void* arrayData,
                                        AParcel_doubleArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readByteArray(const AParcel* parcel, void* arrayData,
                                      AParcel_byteArrayAllocator allocator) {
    return readPackedArray(parcel, arrayData, allocator);
}

binder_status_t AParcel_readCharArray(const AParcel* parcel, void* arrayData,
                                      AParcel_charArrayAllocator allocator) {
    int32_t length = 0;
    binder_status_t status = readArrayLength(parcel, sizeof(int32_t), &length);
    if (status != STATUS_OK) return status;
    char16_t* buffer = nullptr;
    bool accepted = allocator(arrayData, length, &buffer);
    status = finishAllocation(accepted && (length <= 0 || buffer != nullptr), length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = AParcel_readChar(parcel, &buffer[i]);
    }
    return status;
}

binder_status_t AParcel_readBoolArray(const AParcel* parcel, void* arrayData,
                                      AParcel_boolArrayAllocator allocator,
                                      AParcel_boolArraySetter setter) {
    int32_t length = 0;
    binder_status_t status = readArrayLength(parcel, sizeof(int32_t), &length);
    if (status != STATUS_OK) return status;
    status = finishAllocation(allocator(arrayData, length), length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        bool value = false;
        status = AParcel_readBool(parcel, &value);
        if (status == STATUS_OK) setter(arrayData, static_cast<size_t>(i), value);
    }
    return status;
}
