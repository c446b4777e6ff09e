// AParcel: numbers, arrays, objects and whole contents, as programs use them.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <limits>

#include "ibinder.h"
#include "parcel.h"

using hostbinder::kBinderHandle;
using hostbinder::kBinderNull;
using hostbinder::kDescriptor;
using hostbinder::ParcelObject;

AParcel* AParcel_create(void) {
    return new AParcel;
}

void AParcel_delete(AParcel* parcel) {
    delete parcel;
}

binder_status_t AParcel_setDataPosition(const AParcel* parcel, int32_t position) {
    if (position < 0) return STATUS_BAD_VALUE;
    parcel->SetPosition(static_cast<size_t>(position));
    return STATUS_OK;
}

int32_t AParcel_getDataPosition(const AParcel* parcel) {
    return static_cast<int32_t>(parcel->Position());
}

int32_t AParcel_getDataSize(const AParcel* parcel) {
    return static_cast<int32_t>(std::max(parcel->Size(), parcel->Position()));
}

binder_status_t AParcel_appendFrom(const AParcel* from, AParcel* to, int32_t start, int32_t size) {
    if (start < 0 || size < 0) return STATUS_BAD_VALUE;
    return to->Append(*from, static_cast<size_t>(start), static_cast<size_t>(size));
}

binder_status_t AParcel_marshal(const AParcel* parcel, uint8_t* buffer, size_t start, size_t len) {
    if (!parcel->Objects().empty()) return STATUS_INVALID_OPERATION;
    if (start > parcel->Size() || len > parcel->Size() - start) return STATUS_BAD_VALUE;
    if (len > 0) memcpy(buffer, parcel->Data() + start, len);
    return STATUS_OK;
}

binder_status_t AParcel_unmarshal(AParcel* parcel, const uint8_t* buffer, size_t len) {
    if (!parcel->Objects().empty()) return STATUS_INVALID_OPERATION;
    auto* const block = static_cast<uint8_t*>(malloc(std::max<size_t>(len, 1)));
    if (block == nullptr) return STATUS_NO_MEMORY;
    if (len > 0) memcpy(block, buffer, len);
    parcel->Adopt(block, len);
    return STATUS_OK;
}

binder_status_t AParcel_writeInt32(AParcel* parcel, int32_t value) {
    return parcel->Write(value);
}
binder_status_t AParcel_writeInt64(AParcel* parcel, int64_t value) {
    return parcel->Write(value);
}
binder_status_t AParcel_writeFloat(AParcel* parcel, float value) {
    return parcel->Write(value);
}
binder_status_t AParcel_writeDouble(AParcel* parcel, double value) {
    return parcel->Write(value);
}
binder_status_t AParcel_writeBool(AParcel* parcel, bool value) {
    return parcel->Write(int32_t{value});
}
binder_status_t AParcel_writeByte(AParcel* parcel, int8_t value) {
    return parcel->Write(int32_t{value});
}

namespace {

// Types narrower than 4 bytes are stored as int32.
template <typename T>
binder_status_t ReadNarrow(const AParcel* parcel, T* value) {
    int32_t word = 0;
    binder_status_t status = parcel->Read(&word);
    if (status == STATUS_OK) *value = static_cast<T>(word);
    return status;
}

}  // namespace

binder_status_t AParcel_readInt32(const AParcel* parcel, int32_t* value) {
    return parcel->Read(value);
}
binder_status_t AParcel_readInt64(const AParcel* parcel, int64_t* value) {
    return parcel->Read(value);
}
binder_status_t AParcel_readFloat(const AParcel* parcel, float* value) {
    return parcel->Read(value);
}
binder_status_t AParcel_readDouble(const AParcel* parcel, double* value) {
    return parcel->Read(value);
}
binder_status_t AParcel_readBool(const AParcel* parcel, bool* value) {
    return ReadNarrow(parcel, value);
}
binder_status_t AParcel_readByte(const AParcel* parcel, int8_t* value) {
    return ReadNarrow(parcel, value);
}

namespace {

// Null data goes with length -1 (null array) or 0, else STATUS_BAD_VALUE.
binder_status_t WriteArrayLength(AParcel* parcel, const void* data, int32_t length) {
    if (length < -1 || (data == nullptr && length > 0) || (data != nullptr && length == -1)) {
        return STATUS_BAD_VALUE;
    }
    return parcel->Write(length);
}

// Reads a length that the bytes left can hold, so that no memory is taken for elements that cannot
// come. Below -1: STATUS_BAD_VALUE. Too long: STATUS_NO_MEMORY.
binder_status_t ReadArrayLength(const AParcel* parcel, size_t elementSize, int32_t* length) {
    binder_status_t status = parcel->Read(length);
    if (status != STATUS_OK) return status;
    if (*length < -1) return STATUS_BAD_VALUE;
    const bool fits = *length < 0 || static_cast<size_t>(*length) <= parcel->Left() / elementSize;
    return fits ? STATUS_OK : STATUS_NO_MEMORY;
}

// Arrays whose elements are in the parcel as in memory.
template <typename T>
binder_status_t WritePackedArray(AParcel* parcel, const T* elements, int32_t length) {
    binder_status_t status = WriteArrayLength(parcel, elements, length);
    if (status != STATUS_OK || length <= 0) return status;
    if (static_cast<size_t>(length) > std::numeric_limits<int32_t>::max() / sizeof(T)) {
        return STATUS_NO_MEMORY;
    }
    const size_t bytes = static_cast<size_t>(length) * sizeof(T);
    uint8_t* place = parcel->Grow(bytes);
    if (place == nullptr) return STATUS_NO_MEMORY;
    memcpy(place, elements, bytes);
    return STATUS_OK;
}

template <typename T>
binder_status_t ReadPackedArray(const AParcel* parcel, void* arrayData,
                                bool (*allocator)(void*, int32_t, T**)) {
    int32_t length = 0;
    binder_status_t status = ReadArrayLength(parcel, sizeof(T), &length);
    if (status != STATUS_OK) return status;
    T* buffer = nullptr;
    if (!allocator(arrayData, length, &buffer)) return STATUS_NO_MEMORY;
    if (length <= 0) return STATUS_OK;
    const size_t bytes = static_cast<size_t>(length) * sizeof(T);
    const uint8_t* place = parcel->Take(bytes);
    if (buffer == nullptr || place == nullptr) return STATUS_NO_MEMORY;
    memcpy(buffer, place, bytes);
    return STATUS_OK;
}

}  // namespace

binder_status_t AParcel_writeInt32Array(AParcel* parcel, const int32_t* data, int32_t length) {
    return WritePackedArray(parcel, data, length);
}
binder_status_t AParcel_writeInt64Array(AParcel* parcel, const int64_t* data, int32_t length) {
    return WritePackedArray(parcel, data, length);
}
binder_status_t AParcel_writeByteArray(AParcel* parcel, const int8_t* data, int32_t length) {
    return WritePackedArray(parcel, data, length);
}

binder_status_t AParcel_readInt32Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int32ArrayAllocator allocator) {
    return ReadPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readInt64Array(const AParcel* parcel, void* arrayData,
                                       AParcel_int64ArrayAllocator allocator) {
    return ReadPackedArray(parcel, arrayData, allocator);
}
binder_status_t AParcel_readByteArray(const AParcel* parcel, void* arrayData,
                                      AParcel_byteArrayAllocator allocator) {
    return ReadPackedArray(parcel, arrayData, allocator);
}

binder_status_t AParcel_writeParcelableArray(AParcel* parcel, const void* arrayData, int32_t length,
                                             AParcel_writeParcelableElement elementWriter) {
    binder_status_t status = WriteArrayLength(parcel, arrayData, length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = elementWriter(parcel, arrayData, static_cast<size_t>(i));
    }
    return status;
}

binder_status_t AParcel_readParcelableArray(const AParcel* parcel, void* arrayData,
                                            AParcel_parcelableArrayAllocator allocator,
                                            AParcel_readParcelableElement elementReader) {
    int32_t length = 0;
    binder_status_t status = ReadArrayLength(parcel, 1, &length);
    if (status == STATUS_OK && !allocator(arrayData, length)) status = STATUS_NO_MEMORY;
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = elementReader(parcel, arrayData, static_cast<size_t>(i));
    }
    return status;
}

binder_status_t AParcel_writeStrongBinder(AParcel* parcel, AIBinder* binder) {
    int16_t stability = hostbinder::kStabilityUndeclared;
    if (binder != nullptr) {
        binder->IncStrong();
        stability = binder->DeclareStability();
    }
    binder_status_t status =
            parcel->WriteObject(binder == nullptr ? kBinderNull : kBinderHandle, binder, -1);
    return status == STATUS_OK ? parcel->Write(int32_t{stability}) : status;
}

binder_status_t AParcel_readStrongBinder(const AParcel* parcel, AIBinder** binder) {
    const ParcelObject* object = nullptr;
    binder_status_t status = parcel->ReadObject(kBinderHandle, &object);
    if (status != STATUS_OK) return status;
    int32_t stability = 0;
    status = parcel->Read(&stability);
    if (status != STATUS_OK) return status;
    if (object == nullptr) {
        if (stability != hostbinder::kStabilityUndeclared) return STATUS_BAD_TYPE;
        *binder = nullptr;
        return STATUS_OK;
    }
    if (!object->binder->AdoptStability(stability)) return STATUS_BAD_TYPE;
    object->binder->IncStrong();
    *binder = object->binder;
    return STATUS_OK;
}

binder_status_t AParcel_writeParcelFileDescriptor(AParcel* parcel, int fd) {
    if (fd < -1) return STATUS_UNKNOWN_ERROR;
    if (fd == -1) return parcel->Write(int32_t{0});
    const int copy = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) return STATUS_UNKNOWN_ERROR;
    binder_status_t status = parcel->Write(int32_t{1});
    if (status == STATUS_OK) status = parcel->Write(int32_t{0});  // no communication channel
    if (status != STATUS_OK) {
        close(copy);
        return status;
    }
    return parcel->WriteObject(kDescriptor, nullptr, copy);
}

binder_status_t AParcel_readParcelFileDescriptor(const AParcel* parcel, int* fd) {
    int32_t present = 0;
    binder_status_t status = parcel->Read(&present);
    if (status != STATUS_OK) return status;
    if (present == 0) {
        *fd = -1;
        return STATUS_OK;
    }
    int32_t channel = 0;
    parcel->Read(&channel);  // not used
    const ParcelObject* object = nullptr;
    status = parcel->ReadObject(kDescriptor, &object);
    if (status != STATUS_OK) return status;
    const int copy = fcntl(object->fd, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) return STATUS_BAD_VALUE;
    *fd = copy;
    return STATUS_OK;
}
