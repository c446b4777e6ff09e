// Strings in a parcel: UTF-16 with a terminating NUL, UTF-8 outside. What is not UTF-8 is converted
// as on a device.
#include <utils/Unicode.h>

#include <limits>

#include "parcel.h"

namespace {

// A string's units in the parcel. Null for a null string, and for one that is malformed.
const char16_t* ReadUnits(const AParcel* parcel, size_t* count) {
    *count = 0;
    int32_t length = 0;
    if (parcel->Read(&length) != STATUS_OK || length < 0) return nullptr;
    const size_t size = (static_cast<size_t>(length) + 1) * sizeof(char16_t);
    // Every item of a parcel begins at a multiple of 4.
    const auto* const units = reinterpret_cast<const char16_t*>(parcel->Take(size));
    if (units == nullptr || units[length] != 0) return nullptr;
    *count = static_cast<size_t>(length);
    return units;
}

// Bytes of the units as UTF-8.
size_t Utf8Size(const char16_t* units, size_t count) {
    return count == 0 ? 0 : static_cast<size_t>(utf16_to_utf8_length(units, count));
}

}  // namespace

binder_status_t AParcel_writeString(AParcel* parcel, const char* string, int32_t length) {
    if (string == nullptr) return length == -1 ? parcel->Write(int32_t{-1}) : STATUS_BAD_VALUE;
    if (length < 0) return STATUS_BAD_VALUE;
    const auto* const utf8 = reinterpret_cast<const uint8_t*>(string);
    const auto size = static_cast<size_t>(length);
    const ssize_t units = utf8_to_utf16_length(utf8, size, false);
    if (units < 0) return STATUS_BAD_VALUE;  // ends within a character
    binder_status_t status = parcel->Write(static_cast<int32_t>(units));
    if (status != STATUS_OK) return status;
    const size_t room = static_cast<size_t>(units) + 1;
    uint8_t* place = parcel->Grow(room * sizeof(char16_t));
    if (place == nullptr) return STATUS_NO_MEMORY;
    utf8_to_utf16(utf8, size, reinterpret_cast<char16_t*>(place), room);
    return STATUS_OK;
}

binder_status_t AParcel_readString(const AParcel* parcel, void* stringData,
                                   AParcel_stringAllocator allocator) {
    size_t count = 0;
    const char16_t* const units = ReadUnits(parcel, &count);
    char* buffer = nullptr;
    if (units == nullptr) {
        return allocator(stringData, -1, &buffer) ? STATUS_OK : STATUS_UNEXPECTED_NULL;
    }
    const size_t size = Utf8Size(units, count) + 1;
    if (size > static_cast<size_t>(std::numeric_limits<int32_t>::max())) return STATUS_NO_MEMORY;
    if (!allocator(stringData, static_cast<int32_t>(size), &buffer) || buffer == nullptr) {
        return STATUS_NO_MEMORY;
    }
    buffer[0] = '\0';  // which an empty string is not given
    utf16_to_utf8(units, count, buffer, size);
    return STATUS_OK;
}

namespace hostbinder {

binder_status_t WriteString(AParcel* parcel, const std::string& string) {
    return AParcel_writeString(parcel, string.data(), static_cast<int32_t>(string.size()));
}

binder_status_t ReadString(const AParcel* parcel, std::string* string) {
    return AParcel_readString(parcel, string, [](void* data, int32_t size, char** buffer) {
        if (size < 1) return false;
        auto* const result = static_cast<std::string*>(data);
        result->resize(static_cast<size_t>(size) - 1);
        *buffer = &(*result)[0];
        return true;
    });
}

binder_status_t WriteInterfaceHeader(AParcel* parcel, const std::string& descriptor) {
    parcel->Write(kStrictModePresent);
    parcel->Write(kWorkSourceUnset);
    parcel->Write(kHeaderTag);
    return WriteString(parcel, descriptor);
}

binder_status_t CheckInterfaceHeader(const AParcel* parcel, const std::string& descriptor) {
    uint32_t strictMode = 0;
    int32_t workSource = 0;
    uint32_t tag = 0;
    std::string named;
    if (parcel->Read(&strictMode) != STATUS_OK || parcel->Read(&workSource) != STATUS_OK ||
        parcel->Read(&tag) != STATUS_OK || tag != kHeaderTag ||
        ReadString(parcel, &named) != STATUS_OK || named != descriptor) {
        return STATUS_BAD_TYPE;
    }
    return STATUS_OK;
}

}  // namespace hostbinder
