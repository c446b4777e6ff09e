// Strings, binder objects, descriptors and parcelables.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace ndk {

namespace internal {

inline bool stringAllocator(void* stringData, int32_t length, char** buffer) {
    if (length < 1) return false;
    auto* string = static_cast<std::string*>(stringData);
    string->resize(static_cast<size_t>(length) - 1);
    *buffer = &(*string)[0];
    return true;
}
inline bool nullableStringAllocator(void* stringData, int32_t length, char** buffer) {
    auto* string = static_cast<std::optional<std::string>*>(stringData);
    if (length == -1) {
        *string = std::nullopt;
        return true;
    }
    return stringAllocator(&string->emplace(), length, buffer);
}

inline int32_t stringLength(const std::string& string) {
    // Too long for a parcel: -1 with non-null data is refused there.
    return string.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max())
                   ? -1
                   : static_cast<int32_t>(string.size());
}

}  // namespace internal

// Strings.
static inline binder_status_t AParcel_writeString(AParcel* parcel, const std::string& string) {
    return ::AParcel_writeString(parcel, string.c_str(), internal::stringLength(string));
}
static inline binder_status_t AParcel_readString(const AParcel* parcel, std::string* string) {
    return ::AParcel_readString(parcel, string, internal::stringAllocator);
}
static inline binder_status_t AParcel_writeString(AParcel* parcel,
                                                  const std::optional<std::string>& string) {
    if (!string.has_value()) return ::AParcel_writeString(parcel, nullptr, -1);
    return AParcel_writeString(parcel, *string);
}
static inline binder_status_t AParcel_readString(const AParcel* parcel,
                                                 std::optional<std::string>* string) {
    return ::AParcel_readString(parcel, string, internal::nullableStringAllocator);
}

// Objects. "Required" refuses null with STATUS_UNEXPECTED_NULL.
static inline binder_status_t AParcel_writeNullableStrongBinder(AParcel* parcel,
                                                                const SpAIBinder& binder) {
    return AParcel_writeStrongBinder(parcel, binder.get());
}
static inline binder_status_t AParcel_readNullableStrongBinder(const AParcel* parcel,
                                                               SpAIBinder* binder) {
    AIBinder* value = nullptr;
    binder_status_t status = AParcel_readStrongBinder(parcel, &value);
    if (status == STATUS_OK) binder->set(value);
    return status;
}
static inline binder_status_t AParcel_writeRequiredStrongBinder(AParcel* parcel,
                                                                const SpAIBinder& binder) {
    if (binder.get() == nullptr) return STATUS_UNEXPECTED_NULL;
    return AParcel_writeStrongBinder(parcel, binder.get());
}
static inline binder_status_t AParcel_readRequiredStrongBinder(const AParcel* parcel,
                                                               SpAIBinder* binder) {
    binder_status_t status = AParcel_readNullableStrongBinder(parcel, binder);
    if (status == STATUS_OK && binder->get() == nullptr) return STATUS_UNEXPECTED_NULL;
    return status;
}

// Descriptors.
static inline binder_status_t AParcel_writeNullableParcelFileDescriptor(
        AParcel* parcel, const ScopedFileDescriptor& fd) {
    return AParcel_writeParcelFileDescriptor(parcel, fd.get());
}
static inline binder_status_t AParcel_readNullableParcelFileDescriptor(const AParcel* parcel,
                                                                       ScopedFileDescriptor* fd) {
    int value = -1;
    binder_status_t status = AParcel_readParcelFileDescriptor(parcel, &value);
    if (status == STATUS_OK) fd->set(value);
    return status;
}
static inline binder_status_t AParcel_writeRequiredParcelFileDescriptor(
        AParcel* parcel, const ScopedFileDescriptor& fd) {
    if (fd.get() < 0) {
        syslog(LOG_ERR, "Passing -1 file descriptor as non-@nullable AIDL ParcelFileDescriptor");
        return STATUS_UNEXPECTED_NULL;
    }
    return AParcel_writeParcelFileDescriptor(parcel, fd.get());
}
static inline binder_status_t AParcel_readRequiredParcelFileDescriptor(const AParcel* parcel,
                                                                       ScopedFileDescriptor* fd) {
    binder_status_t status = AParcel_readNullableParcelFileDescriptor(parcel, fd);
    if (status == STATUS_OK && fd->get() < 0) return STATUS_UNEXPECTED_NULL;
    return status;
}

// Parcelables and unions: a presence word, then the body.
template <typename P>
binder_status_t AParcel_writeParcelable(AParcel* parcel, const P& value) {
    binder_status_t status = AParcel_writeInt32(parcel, 1);
    return status != STATUS_OK ? status : value.writeToParcel(parcel);
}
template <typename P>
binder_status_t AParcel_readParcelable(const AParcel* parcel, P* value) {
    int32_t present = 0;
    binder_status_t status = AParcel_readInt32(parcel, &present);
    if (status != STATUS_OK) return status;
    if (present == 0) return STATUS_UNEXPECTED_NULL;
    return value->readFromParcel(parcel);
}
template <typename P>
binder_status_t AParcel_writeNullableParcelable(AParcel* parcel, const std::optional<P>& value) {
    return value.has_value() ? AParcel_writeParcelable(parcel, *value)
                             : AParcel_writeInt32(parcel, 0);
}
template <typename P>
binder_status_t AParcel_readNullableParcelable(const AParcel* parcel, std::optional<P>* value) {
    int32_t present = 0;
    binder_status_t status = AParcel_readInt32(parcel, &present);
    if (status != STATUS_OK) return status;
    if (present == 0) {
        *value = std::nullopt;
        return STATUS_OK;
    }
    return value->emplace().readFromParcel(parcel);
}

}  // namespace ndk
