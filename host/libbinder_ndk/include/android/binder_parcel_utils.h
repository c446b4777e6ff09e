// Reading and writing C++ values, for generated code: AParcel_writeData and AParcel_readData.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace ndk {

template <typename T>
binder_status_t AParcel_writeData(AParcel* parcel, const T& value);
template <typename T>
binder_status_t AParcel_readData(const AParcel* parcel, T* value);

namespace internal {

// Which AIDL type a C++ type is.

template <typename T>
struct is_array : std::false_type {};
template <typename T>
struct is_array<std::vector<T>> : std::true_type {};
template <typename T, size_t N>
struct is_array<std::array<T, N>> : std::true_type {};

// Parcelables and unions.
template <typename T, typename = void>
struct is_parcelable : std::false_type {};
template <typename T>
struct is_parcelable<T, std::void_t<decltype(std::declval<const T&>().writeToParcel(
                                static_cast<AParcel*>(nullptr)))>> : std::true_type {};

// shared_ptr to an AIDL interface.
template <typename T, typename = void>
struct is_interface : std::false_type {};
template <typename T>
struct is_interface<std::shared_ptr<T>, std::void_t<decltype(T::writeToParcel(
                                                static_cast<AParcel*>(nullptr),
                                                std::declval<const std::shared_ptr<T>&>()))>>
    : std::true_type {};

// Elements that are in a parcel as in memory.
template <typename T>
constexpr bool is_packed_element_v =
        !std::is_same_v<T, bool> && (std::is_arithmetic_v<T> || std::is_enum_v<T>);

template <typename T>
constexpr bool always_false_v = false;

// Numbers and booleans.
struct scalar {
    static binder_status_t write(AParcel* p, bool v) { return AParcel_writeBool(p, v); }
    static binder_status_t write(AParcel* p, int8_t v) { return AParcel_writeByte(p, v); }
    static binder_status_t write(AParcel* p, int32_t v) { return AParcel_writeInt32(p, v); }
    static binder_status_t write(AParcel* p, int64_t v) { return AParcel_writeInt64(p, v); }
    static binder_status_t write(AParcel* p, float v) { return AParcel_writeFloat(p, v); }
    static binder_status_t write(AParcel* p, double v) { return AParcel_writeDouble(p, v); }

    static binder_status_t read(const AParcel* p, bool* v) { return AParcel_readBool(p, v); }
    static binder_status_t read(const AParcel* p, int8_t* v) { return AParcel_readByte(p, v); }
    static binder_status_t read(const AParcel* p, int32_t* v) { return AParcel_readInt32(p, v); }
    static binder_status_t read(const AParcel* p, int64_t* v) { return AParcel_readInt64(p, v); }
    static binder_status_t read(const AParcel* p, float* v) { return AParcel_readFloat(p, v); }
    static binder_status_t read(const AParcel* p, double* v) { return AParcel_readDouble(p, v); }
};

// Enums are their backing type in a parcel.
template <typename T>
binder_status_t readEnum(const AParcel* p, T* v) {
    std::underlying_type_t<T> value{};
    const binder_status_t status = scalar::read(p, &value);
    if (status == STATUS_OK) *v = static_cast<T>(value);
    return status;
}

// Arrays: vectors and fixed arrays.

// Longest array that a server makes on behalf of a caller that sent only its length.
constexpr int32_t kMaxPresizedElements = 1000000;

// Numbers and enums. data may be null if length is 0.
template <typename T>
binder_status_t writePacked(AParcel* p, const T* data, int32_t length) {
    const void* raw = data;
    if constexpr (sizeof(T) == 1) {
        return AParcel_writeByteArray(p, static_cast<const int8_t*>(raw), length);
    } else if constexpr (sizeof(T) == 4) {
        return AParcel_writeInt32Array(p, static_cast<const int32_t*>(raw), length);
    } else {
        static_assert(sizeof(T) == 8, "no such array in a parcel");
        return AParcel_writeInt64Array(p, static_cast<const int64_t*>(raw), length);
    }
}

// Resizes a vector, or checks the length of a fixed array. False refuses the length.
template <typename T>
bool prepareElements(std::vector<T>* array, int32_t length) {
    if (length < 0) return false;
    array->clear();  // elements are moved into a fresh array: move-only types, too
    array->resize(static_cast<size_t>(length));
    return true;
}
template <typename T, size_t N>
bool prepareElements(std::array<T, N>*, int32_t length) {
    return length >= 0 && static_cast<size_t>(length) == N;
}

template <typename Array, typename Wire>
bool packedAllocator(void* arrayData, int32_t length, Wire** outBuffer) {
    static_assert(sizeof(typename Array::value_type) == sizeof(Wire), "as in memory");
    Array* array = static_cast<Array*>(arrayData);
    if (!prepareElements(array, length)) return false;
    *outBuffer = static_cast<Wire*>(static_cast<void*>(array->data()));
    return true;
}

template <typename Array>
binder_status_t readPacked(const AParcel* p, Array* array) {
    using T = typename Array::value_type;
    if constexpr (sizeof(T) == 1) {
        return AParcel_readByteArray(p, array, packedAllocator<Array, int8_t>);
    } else if constexpr (sizeof(T) == 4) {
        return AParcel_readInt32Array(p, array, packedAllocator<Array, int32_t>);
    } else {
        static_assert(sizeof(T) == 8, "no such array in a parcel");
        return AParcel_readInt64Array(p, array, packedAllocator<Array, int64_t>);
    }
}

template <typename Array>
binder_status_t writeArray(AParcel* p, const Array& array) {
    static_assert(!std::is_same_v<typename Array::value_type, int8_t>, "byte[] has uint8_t");
    if (array.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        return STATUS_BAD_VALUE;
    }
    const int32_t length = static_cast<int32_t>(array.size());
    if constexpr (is_packed_element_v<typename Array::value_type>) {
        return writePacked(p, array.data(), length);
    } else {
        return AParcel_writeParcelableArray(
                p, &array, length, [](AParcel* parcel, const void* data, size_t i) {
                    return AParcel_writeData(parcel, (*static_cast<const Array*>(data))[i]);
                });
    }
}

template <typename Array>
binder_status_t readArray(const AParcel* p, Array* array) {
    static_assert(!std::is_same_v<typename Array::value_type, int8_t>, "byte[] has uint8_t");
    if constexpr (is_packed_element_v<typename Array::value_type>) {
        return readPacked(p, array);
    } else {
        return AParcel_readParcelableArray(
                p, array,
                [](void* data, int32_t length) {
                    return prepareElements(static_cast<Array*>(data), length);
                },
                [](const AParcel* parcel, void* data, size_t i) {
                    return AParcel_readData(parcel, &(*static_cast<Array*>(data))[i]);
                });
    }
}

inline bool stringAllocator(void* stringData, int32_t length, char** buffer) {
    if (length < 1) return false;
    auto* string = static_cast<std::string*>(stringData);
    string->resize(static_cast<size_t>(length) - 1);
    *buffer = &(*string)[0];
    return true;
}

}  // namespace internal

template <typename T>
binder_status_t AParcel_writeVector(AParcel* parcel, const std::vector<T>& vector) {
    return internal::writeArray(parcel, vector);
}
template <typename T>
binder_status_t AParcel_readVector(const AParcel* parcel, std::vector<T>* vector) {
    return internal::readArray(parcel, vector);
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
binder_status_t AParcel_resizeVector(const AParcel* parcel, std::vector<T>* vector) {
    int32_t size = 0;
    binder_status_t status = AParcel_readInt32(parcel, &size);
    if (status != STATUS_OK) return status;
    if (size < 0) return STATUS_UNEXPECTED_NULL;
    if (size > internal::kMaxPresizedElements) return STATUS_NO_MEMORY;
    vector->resize(static_cast<size_t>(size));
    return STATUS_OK;
}

static inline binder_status_t AParcel_writeString(AParcel* parcel, const std::string& string) {
    // Too long for a parcel: -1 with non-null data is refused there.
    const bool fits = string.size() <= static_cast<size_t>(std::numeric_limits<int32_t>::max());
    return ::AParcel_writeString(parcel, string.c_str(),
                                 fits ? static_cast<int32_t>(string.size()) : -1);
}
static inline binder_status_t AParcel_readString(const AParcel* parcel, std::string* string) {
    return ::AParcel_readString(parcel, string, internal::stringAllocator);
}

// Objects, which may be null.
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
// Descriptors; -1 is refused with STATUS_UNEXPECTED_NULL.
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
    int value = -1;
    binder_status_t status = AParcel_readParcelFileDescriptor(parcel, &value);
    if (status != STATUS_OK) return status;
    fd->set(value);
    return value < 0 ? STATUS_UNEXPECTED_NULL : STATUS_OK;
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

template <typename T>
binder_status_t AParcel_writeData(AParcel* parcel, const T& value) {
    if constexpr (internal::is_array<T>::value) {
        return internal::writeArray(parcel, value);
    } else if constexpr (std::is_enum_v<T>) {
        return internal::scalar::write(parcel, static_cast<std::underlying_type_t<T>>(value));
    } else if constexpr (std::is_arithmetic_v<T>) {
        return internal::scalar::write(parcel, value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return AParcel_writeString(parcel, value);
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        return AParcel_writeRequiredParcelFileDescriptor(parcel, value);
    } else if constexpr (internal::is_interface<T>::value) {
        return T::element_type::writeToParcel(parcel, value);
    } else if constexpr (internal::is_parcelable<T>::value) {
        return AParcel_writeParcelable(parcel, value);
    } else {
        static_assert(internal::always_false_v<T>, "no AIDL type");
    }
}

template <typename T>
binder_status_t AParcel_readData(const AParcel* parcel, T* value) {
    if constexpr (internal::is_array<T>::value) {
        return internal::readArray(parcel, value);
    } else if constexpr (std::is_enum_v<T>) {
        return internal::readEnum(parcel, value);
    } else if constexpr (std::is_arithmetic_v<T>) {
        return internal::scalar::read(parcel, value);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return AParcel_readString(parcel, value);
    } else if constexpr (std::is_same_v<T, ScopedFileDescriptor>) {
        return AParcel_readRequiredParcelFileDescriptor(parcel, value);
    } else if constexpr (internal::is_interface<T>::value) {
        return T::element_type::readFromParcel(parcel, value);
    } else if constexpr (internal::is_parcelable<T>::value) {
        return AParcel_readParcelable(parcel, value);
    } else {
        static_assert(internal::always_false_v<T>, "no AIDL type");
    }
}

}  // namespace ndk
