// Arrays, and the lengths of a caller's out arrays.
#pragma once

#include <android/binder_parcel_utils/elements.h>

namespace ndk {

namespace internal {

// Longest array that a server makes on behalf of a caller that sent only its length.
constexpr int32_t kMaxPresizedElements = 1000000;

}  // namespace internal

// Arrays; an optional is a @nullable one.
template <typename T>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<T>& vector) {
    return internal::writeArray(parcel, vector);
}
template <typename T>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::optional<std::vector<T>>& vector) {
    return internal::writeArray(parcel, vector);
}
template <typename T>
binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<T>* vector) {
    return internal::readArray(parcel, vector);
}
template <typename T>
binder_status_t AParcel_readVector(const AParcel* parcel, std::optional<std::vector<T>>* vector) {
    return internal::readArray(parcel, vector);
}
template <typename T, size_t N>
binder_status_t AParcel_writeFixedArray(AParcel* parcel, const std::array<T, N>& array) {
    return internal::writeArray(parcel, array);
}
template <typename T, size_t N>
binder_status_t AParcel_readFixedArray(const AParcel* parcel, std::array<T, N>* array) {
    return internal::readArray(parcel, array);
}

// The length of a caller's out vector, so that the server can make one of the same length.
template <typename T>
binder_status_t AParcel_writeVectorSize(AParcel* parcel, const std::vector<T>& vector) {
    if (vector.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        return STATUS_BAD_VALUE;
    }
    return AParcel_writeInt32(parcel, static_cast<int32_t>(vector.size()));
}
template <typename T>
binder_status_t AParcel_writeVectorSize(AParcel* parcel,
                                        const std::optional<std::vector<T>>& vector) {
    return vector.has_value() ? AParcel_writeVectorSize(parcel, *vector)
                              : AParcel_writeInt32(parcel, -1);
}
template <typename T>
binder_status_t AParcel_resizeVector(const AParcel* parcel, std::vector<T>* vector) {
    int32_t size = 0;
    binder_status_t status = AParcel_readInt32(parcel, &size);
    if (status != STATUS_OK) return status;
    if (size < 0) return STATUS_UNEXPECTED_NULL;
    if (size > internal::kMaxPresizedElements) return STATUS_NO_MEMORY;
    vector->resize(static_cast<size_t>(size));
    return STATUS_OK;
}
template <typename T>
binder_status_t AParcel_resizeVector(const AParcel* parcel, std::optional<std::vector<T>>* vector) {
    int32_t size = 0;
    binder_status_t status = AParcel_readInt32(parcel, &size);
    if (status != STATUS_OK) return status;
    if (size < -1) return STATUS_UNEXPECTED_NULL;
    if (size > internal::kMaxPresizedElements) return STATUS_NO_MEMORY;
    *vector = std::nullopt;
    if (size >= 0) vector->emplace().resize(static_cast<size_t>(size));
    return STATUS_OK;
}

}  // namespace ndk
