// Reading and writing C++ values, for generated code: AParcel_writeData and AParcel_readData for
// what must be there, AParcel_writeNullableData and AParcel_readNullableData for @nullable.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_parcel_utils/arrays.h>
#include <android/binder_parcel_utils/elements.h>
#include <android/binder_parcel_utils/objects.h>
#include <android/binder_parcel_utils/scalars.h>
#include <android/binder_parcel_utils/types.h>

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace ndk {

template <typename T>
binder_status_t AParcel_writeData(AParcel* parcel, const T& value) {
    using internal::is_specialization_v;
    if constexpr (is_specialization_v<T, std::vector> || internal::is_fixed_array_v<T>) {
        return internal::writeArray(parcel, value);
    } else if constexpr (std::is_enum_v<T>) {
        return internal::writeScalar(parcel, static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_arithmetic_v<T>) {
        return internal::writeScalar(parcel, value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return AParcel_writeString(parcel, value);
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_writeRequiredStrongBinder(parcel, value);
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        return AParcel_writeRequiredParcelFileDescriptor(parcel, value);
    } else if constexpr (internal::is_interface_v<T>) {
        return T::element_type::writeToParcel(parcel, value);
    } else if constexpr (internal::is_parcelable_v<T>) {
        return AParcel_writeParcelable(parcel, value);
    } else {
        static_assert(internal::always_false_v<T>, "no AIDL type");
    }
}

template <typename T>
binder_status_t AParcel_readData(const AParcel* parcel, T* value) {
    using internal::is_specialization_v;
    if constexpr (is_specialization_v<T, std::vector> || internal::is_fixed_array_v<T>) {
        return internal::readArray(parcel, value);
    } else if constexpr (std::is_enum_v<T>) {
        std::underlying_type_t<T> number{};
        binder_status_t status = internal::readScalar(parcel, &number);
        if (status == STATUS_OK) *value = static_cast<T>(number);
        return status;
    } else if constexpr (std::is_arithmetic_v<T>) {
        return internal::readScalar(parcel, value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return AParcel_readString(parcel, value);
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_readRequiredStrongBinder(parcel, value);
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        return AParcel_readRequiredParcelFileDescriptor(parcel, value);
    } else if constexpr (internal::is_interface_v<T>) {
        return T::element_type::readFromParcel(parcel, value);
    } else if constexpr (internal::is_parcelable_v<T>) {
        return AParcel_readParcelable(parcel, value);
    } else {
        static_assert(internal::always_false_v<T>, "no AIDL type");
    }
}

template <typename T>
binder_status_t AParcel_writeNullableData(AParcel* parcel, const T& value) {
    using internal::is_specialization_v;
    if constexpr (is_specialization_v<T, std::optional>) {
        using V = typename T::value_type;
        if constexpr (is_specialization_v<V, std::vector> || internal::is_fixed_array_v<V>) {
            return internal::writeArray(parcel, value);
        } else if constexpr (std::is_same_v<V, std::string>) {
            return AParcel_writeString(parcel, value);
        } else {
            return AParcel_writeNullableParcelable(parcel, value);
        }
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_writeNullableStrongBinder(parcel, value);
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        return AParcel_writeNullableParcelFileDescriptor(parcel, value);
    } else {
        return AParcel_writeData(parcel, value);
    }
}

template <typename T>
binder_status_t AParcel_readNullableData(const AParcel* parcel, T* value) {
    using internal::is_specialization_v;
    if constexpr (is_specialization_v<T, std::optional>) {
        using V = typename T::value_type;
        if constexpr (is_specialization_v<V, std::vector> || internal::is_fixed_array_v<V>) {
            return internal::readArray(parcel, value);
        } else if constexpr (std::is_same_v<V, std::string>) {
            return AParcel_readString(parcel, value);
        } else {
            return AParcel_readNullableParcelable(parcel, value);
        }
    } else if constexpr (std::is_same_v<T, SpAIBinder>) {
        return AParcel_readNullableStrongBinder(parcel, value);
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        return AParcel_readNullableParcelFileDescriptor(parcel, value);
    } else {
        return AParcel_readData(parcel, value);
    }
}

}  // namespace ndk
