// Strings in a parcel: UTF-16 with a terminating NUL, UTF-8 outside.
#include <limits>

#include "parcel.h"
#include "utf16.h"

namespace {

// A string's units in the parcel; *units is null for a null string.
binder_status_t readUnits(const AParcel* parcel, const uint8_t** units, size_t* count) {
    int32_t length = 0;
    binder_status_t status = parcel->read(&length);
    if (status != STATUS_OK) return status;
    *units = nullptr;
    *count = 0;
    if (length == -1) return STATUS_OK;
    if (length < -1) return STATUS_BAD_VALUE;
    *count = static_cast<size_t>(length);
    *units = parcel->take((*count + 1) * sizeof(char16_t));
    if (*units == nullptr) return STATUS_NOT_ENOUGH_DATA;
    const uint8_t* end = *units + *count * sizeof(char16_t);
    return end[0] == 0 && end[1] == 0 ? STATUS_OK : STATUS_BAD_VALUE;
}

}  // namespace

binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length) {
    if (string == nullptr) return length == -1 ? parcel->write(int32_t{-1}) : STATUS_BAD_VALUE;
    if (length < 0) return STATUS_BAD_VALUE;
    std::u16string units;
    if (!hostbinder::utf8ToUtf16(string, static_cast<size_t>(length), &units)) {
        return STATUS_BAD_VALUE;
    }
    binder_status_t status = parcel->write(static_cast<int32_t>(units.size()));
    if (status != STATUS_OK) return status;
    const size_t bytes = (units.size() + 1) * sizeof(char16_t);
    uint8_t* place = parcel->grow(bytes);
    if (place == nullptr) return STATUS_NO_MEMORY;
    memcpy(place, units.c_str(), bytes);
    return STATUS_OK;
}

binder_status_t AParcel_readString(const AParcel* parcel, void* stringData,
                                   AParcel_stringAllocator allocator) {
    const uint8_t* units = nullptr;
    size_t count = 0;
    binder_status_t status = readUnits(parcel, &units, &count);
    if (status != STATUS_OK) return status;
    char* buffer = nullptr;
    if (units == nullptr) {
        return allocator(stringData, -1, &buffer) ? STATUS_OK : STATUS_UNEXPECTED_NULL;
    }
    const std::string utf8 = hostbinder::utf16ToUtf8(units, count);
    if (utf8.size() >= static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        return STATUS_NO_MEMORY;
    }
    const int32_t length = static_cast<int32_t>(utf8.size() + 1);
    if (!allocator(stringData, length, &buffer) || buffer == nullptr) return STATUS_NO_MEMORY;
    memcpy(buffer, utf8.c_str(), utf8.size() + 1);
    return STATUS_OK;
}

namespace hostbinder {

binder_status_t writeString(AParcel* parcel, const std::string& string) {
    return AParcel_writeString(parcel, string.data(), static_cast<int32_t>(string.size()));
}

binder_status_t readString(const AParcel* parcel, std::string* string) {
    const uint8_t* units = nullptr;
    size_t count = 0;
    binder_status_t status = readUnits(parcel, &units, &count);
    if (status != STATUS_OK) return status;
    if (units == nullptr) return STATUS_UNEXPECTED_NULL;
    *string = utf16ToUtf8(units, count);
    return STATUS_OK;
}

}  // namespace hostbinder
