// Array lengths, and arrays whose elements have their own reader and writer.
#include "parcel_arrays.h"

namespace hostbinder {

binder_status_t writeArrayLength(AParcel* parcel, const void* data, int32_t length) {
    if (length < -1) return STATUS_BAD_VALUE;
    if (data == nullptr && length > 0) return STATUS_BAD_VALUE;
    if (data != nullptr && length == -1) return STATUS_BAD_VALUE;
    return parcel->write(length);
}

binder_status_t readArrayLength(const AParcel* parcel, size_t elementSize, int32_t* length) {
    binder_status_t status = parcel->read(length);
    if (status != STATUS_OK) return status;
    if (*length < -1) return STATUS_BAD_VALUE;
    if (*length <= 0) return STATUS_OK;
    const size_t count = static_cast<size_t>(*length);
    if (count > parcel->left()) return STATUS_NO_MEMORY;
    if (count > parcel->left() / elementSize) return STATUS_NOT_ENOUGH_DATA;
    return STATUS_OK;
}

binder_status_t finishAllocation(bool accepted, int32_t length) {
    if (accepted) return STATUS_OK;
    return length < 0 ? STATUS_UNEXPECTED_NULL : STATUS_NO_MEMORY;
}

}  // namespace hostbinder

using hostbinder::finishAllocation;
using hostbinder::readArrayLength;
using hostbinder::writeArrayLength;

binder_status_t AParcel_writeParcelableArray(AParcel* parcel, const void* arrayData, int32_t length,
                                             AParcel_writeParcelableElement elementWriter) {
    binder_status_t status = writeArrayLength(parcel, arrayData, length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = elementWriter(parcel, arrayData, static_cast<size_t>(i));
    }
    return status;
}

binder_status_t AParcel_readParcelableArray(const AParcel* parcel, void* arrayData,
                                            AParcel_parcelableArrayAllocator allocator,
                                            AParcel_readParcelableElement elementReader) {
    int32_t length = 0;
    binder_status_t status = readArrayLength(parcel, 1, &length);
    if (status != STATUS_OK) return status;
    status = finishAllocation(allocator(arrayData, length), length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        status = elementReader(parcel, arrayData, static_cast<size_t>(i));
    }
    return status;
}

binder_status_t AParcel_writeStringArray(AParcel* parcel, const void* arrayData, int32_t length,
                                         AParcel_stringArrayElementGetter getter) {
    binder_status_t status = writeArrayLength(parcel, arrayData, length);
    for (int32_t i = 0; status == STATUS_OK && i < length; ++i) {
        int32_t elementLength = 0;
        const char* element = getter(arrayData, static_cast<size_t>(i), &elementLength);
        status = AParcel_writeString(parcel, element, elementLength);
    }
    return status;
}

binder_status_t AParcel_readStringArray(const AParcel* parcel, void* arrayData,
                                        AParcel_stringArrayAllocator allocator,
                                        AParcel_stringArrayElementAllocator elementAllocator) {
    int32_t length = 0;
    binder_status_t status = readArrayLength(parcel, sizeof(int32_t), &length);
    if (status != STATUS_OK) return status;
    status = finishAllocation(allocator(arrayData, length), length);

    struct Element {
        void* arrayData;
        size_t index;
        AParcel_stringArrayElementAllocator allocator;
    } element{arrayData, 0, elementAllocator};
    for (; status == STATUS_OK && length > 0 && element.index < static_cast<size_t>(length);
         ++element.index) {
        status = AParcel_readString(parcel, &element, [](void* data, int32_t size, char** buffer) {
            auto* e = static_cast<Element*>(data);
            return e->allocator(e->arrayData, e->index, size, buffer);
        });
    }
    return status;
}
