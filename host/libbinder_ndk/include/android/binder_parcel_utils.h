// Reading and writing C++ values, for generated code: AParcel_writeData and AParcel_readData for
// what must be there, AParcel_writeNullableData and AParcel_readNullableData for @nullable.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace ndk {

template <typename T>
binder_status_t AParcel_writeData(AParcel* parcel, const T& value);
template <typename T>
binder_status_t AParcel_readData(const AParcel* parcel, T* value);
template <typename T>
binder_status_t AParcel_writeNullableData(AParcel* parcel, const T& value);
template <typename T>
binder_status_t AParcel_readNullableData(const AParcel* parcel, T* value);

namespace internal {

// Longest array that a server makes on behalf of a caller that sent only its length.
constexpr int32_t kMaxPresizedElements = 1000000;

template <typename T, template <typename...> class Template>
struct is_specialization : std::false_type {};
template <template <typename...> class Template, typename... Args>
struct is_specialization<Template<Args...>, Template> : std::true_type {};
template <typename T, template <typename...> class Template>
constexpr bool is_specialization_v = is_specialization<T, Template>::value;

template <typename T>
struct is_fixed_array : std::false_type {};
template <typename T, size_t N>
struct is_fixed_array<std::array<T, N>> : std::true_type {};
template <typename T>
constexpr bool is_fixed_array_v = is_fixed_array<T>::value;

// Parcelables and unions.
template <typename T, typename = void>
struct is_parcelable : std::false_type {};
template <typename T>
struct is_parcelable<T, std::void_t<decltype(std::declval<const T&>().writeToParcel(
                                static_cast<AParcel*>(nullptr)))>> : std::true_type {};
template <typename T>
constexpr bool is_parcelable_v = is_parcelable<T>::value;

// shared_ptr to an AIDL interface.
template <typename T, typename = void>
struct is_interface : std::false_type {};
template <typename T>
struct is_interface<std::shared_ptr<T>, std::void_t<decltype(T::writeToParcel(
                                                static_cast<AParcel*>(nullptr),
                                                std::declval<const std::shared_ptr<T>&>()))>>
    : std::true_type {};
template <typename T>
constexpr bool is_interface_v = is_interface<T>::value;

// The type that stands for T in a parcel: an enum is its backing type.
template <typename T, bool = std::is_enum<T>::value>
struct wire_type {
    using type = T;
};
template <typename T>
struct wire_type<T, true> {
    using type = std::underlying_type_t<T>;
};
template <typename T>
using wire_type_t = typename wire_type<T>::type;

// Elements that lie in an array as they lie in memory, except char16_t, which the parcel widens.
template <typename T>
constexpr bool is_packed_element_v =
        !std::is_same_v<T, bool> && (std::is_arithmetic_v<T> || std::is_enum_v<T>);

template <typename T>
constexpr bool always_false_v = false;

inline binder_status_t writeScalar(AParcel* p, bool v) {
    return AParcel_writeBool(p, v);
}
inline binder_status_t writeScalar(AParcel* p, char16_t v) {
    return AParcel_writeChar(p, v);
}
inline binder_status_t writeScalar(AParcel* p, int8_t v) {
    return AParcel_writeByte(p, v);
}
inline binder_status_t writeScalar(AParcel* p, uint8_t v) {
    return AParcel_writeByte(p, static_cast<int8_t>(v));
}
inline binder_status_t writeScalar(AParcel* p, int32_t v) {
    return AParcel_writeInt32(p, v);
}
inline binder_status_t writeScalar(AParcel* p, uint32_t v) {
    return AParcel_writeUint32(p, v);
}
inline binder_status_t writeScalar(AParcel* p, int64_t v) {
    return AParcel_writeInt64(p, v);
}
inline binder_status_t writeScalar(AParcel* p, uint64_t v) {
    return AParcel_writeUint64(p, v);
}
inline binder_status_t writeScalar(AParcel* p, float v) {
    return AParcel_writeFloat(p, v);
}
inline binder_status_t writeScalar(AParcel* p, double v) {
    return AParcel_writeDouble(p, v);
}

inline binder_status_t readScalar(const AParcel* p, bool* v) {
    return AParcel_readBool(p, v);
}
inline binder_status_t readScalar(const AParcel* p, char16_t* v) {
    return AParcel_readChar(p, v);
}
inline binder_status_t readScalar(const AParcel* p, int8_t* v) {
    return AParcel_readByte(p, v);
}
inline binder_status_t readScalar(const AParcel* p, uint8_t* v) {
    int8_t value = 0;
    binder_status_t status = AParcel_readByte(p, &value);
    if (status == STATUS_OK) *v = static_cast<uint8_t>(value);
    return status;
}
inline binder_status_t readScalar(const AParcel* p, int32_t* v) {
    return AParcel_readInt32(p, v);
}
inline binder_status_t readScalar(const AParcel* p, uint32_t* v) {
    return AParcel_readUint32(p, v);
}
inline binder_status_t readScalar(const AParcel* p, int64_t* v) {
    return AParcel_readInt64(p, v);
}
inline binder_status_t readScalar(const AParcel* p, uint64_t* v) {
    return AParcel_readUint64(p, v);
}
inline binder_status_t readScalar(const AParcel* p, float* v) {
    return AParcel_readFloat(p, v);
}
inline binder_status_t readScalar(const AParcel* p, double* v) {
    return AParcel_readDouble(p, v);
}

// data may be null if length is 0 or -1; T is the element type in memory (enums included).
template <typename T>
binder_status_t writePacked(AParcel* p, const T* data, int32_t length) {
    using Wire = wire_type_t<T>;
    const void* raw = data;
    if constexpr (std::is_same_v<Wire, char16_t>) {
        return AParcel_writeCharArray(p, static_cast<const char16_t*>(raw), length);
    } else if constexpr (sizeof(Wire) == 1) {
        return AParcel_writeByteArray(p, static_cast<const int8_t*>(raw), length);
    } else if constexpr (std::is_same_v<Wire, float>) {
        return AParcel_writeFloatArray(p, static_cast<const float*>(raw), length);
    } else if constexpr (std::is_same_v<Wire, double>) {
        return AParcel_writeDoubleArray(p, static_cast<const double*>(raw), length);
    } else if constexpr (sizeof(Wire) == 4) {
        return AParcel_writeInt32Array(p, static_cast<const int32_t*>(raw), length);
    } else {
        static_assert(sizeof(Wire) == 8, "no such array in a parcel");
        return AParcel_writeInt64Array(p, static_cast<const int64_t*>(raw), length);
    }
}

// Resizes a vector or optional<vector>, or checks the length of a fixed array, then says where the
// elements lie. False refuses the length.
template <typename T>
bool prepareElements(std::vector<T>* array, int32_t length) {
    if (length < 0) return false;
    array->clear();  // elements are moved into a fresh array: move-only types, too
    array->resize(static_cast<size_t>(length));
    return true;
}
template <typename T>
bool prepareElements(std::optional<std::vector<T>>* array, int32_t length) {
    if (length < 0) {
        *array = std::nullopt;
        return true;
    }
    return prepareElements(&array->emplace(), length);
}
template <typename T, size_t N>
bool prepareElements(std::array<T, N>*, int32_t length) {
    return length >= 0 && static_cast<size_t>(length) == N;
}
template <typename T, size_t N>
bool prepareElements(std::optional<std::array<T, N>>* array, int32_t length) {
    if (length < 0) {
        *array = std::nullopt;
        return true;
    }
    return prepareElements(&array->emplace(), length);
}

template <typename Array>
auto& elementsOf(Array& array) {
    if constexpr (is_specialization_v<std::remove_const_t<Array>, std::optional>) {
        return *array;
    } else {
        return array;
    }
}
template <typename Array>
bool hasElements(const Array& array) {
    if constexpr (is_specialization_v<Array, std::optional>) {
        return array.has_value();
    } else {
        return true;
    }
}

template <typename Array, typename T, typename Wire>
bool packedAllocator(void* arrayData, int32_t length, Wire** outBuffer) {
    static_assert(sizeof(T) == sizeof(Wire), "an element lies in memory as in the parcel");
    Array* array = static_cast<Array*>(arrayData);
    if (!prepareElements(array, length)) return false;
    void* data = hasElements(*array) ? static_cast<void*>(elementsOf(*array).data()) : nullptr;
    *outBuffer = static_cast<Wire*>(data);
    return true;
}

// Array is vector, std::array or an optional of either; T its element type.
template <typename T, typename Array>
binder_status_t readPacked(const AParcel* p, Array* array) {
    using Wire = wire_type_t<T>;
    if constexpr (std::is_same_v<Wire, char16_t>) {
        return AParcel_readCharArray(p, array, packedAllocator<Array, T, char16_t>);
    } else if constexpr (sizeof(Wire) == 1) {
        return AParcel_readByteArray(p, array, packedAllocator<Array, T, int8_t>);
    } else if constexpr (std::is_same_v<Wire, float>) {
        return AParcel_readFloatArray(p, array, packedAllocator<Array, T, float>);
    } else if constexpr (std::is_same_v<Wire, double>) {
        return AParcel_readDoubleArray(p, array, packedAllocator<Array, T, double>);
    } else if constexpr (sizeof(Wire) == 4) {
        return AParcel_readInt32Array(p, array, packedAllocator<Array, T, int32_t>);
    } else {
        static_assert(sizeof(Wire) == 8, "no such array in a parcel");
        return AParcel_readInt64Array(p, array, packedAllocator<Array, T, int64_t>);
    }
}

template <typename Array>
bool elementsAllocator(void* arrayData, int32_t length) {
    return prepareElements(static_cast<Array*>(arrayData), length);
}

// Elements of a @nullable array are nullable themselves where the type allows it.
template <typename T>
binder_status_t writeElement(AParcel* p, const T& element) {
    if constexpr (is_specialization_v<T, std::optional>) {
        return AParcel_writeNullableData(p, element);
    } else {
        return AParcel_writeData(p, element);
    }
}
template <typename T>
binder_status_t readElement(const AParcel* p, T* element) {
    if constexpr (is_specialization_v<T, std::optional>) {
        return AParcel_readNullableData(p, element);
    } else {
        return AParcel_readData(p, element);
    }
}

template <typename Array>
binder_status_t writeArray(AParcel* p, const Array& array) {
    if (!hasElements(array)) return AParcel_writeInt32(p, -1);
    const auto& elements = elementsOf(array);
    using Elements = std::decay_t<decltype(elements)>;
    using T = typename Elements::value_type;
    if (elements.size() > static_cast<size_t>(std::numeric_limits<int32_t>::max())) {
        return STATUS_BAD_VALUE;
    }
    int32_t length = static_cast<int32_t>(elements.size());
    if constexpr (is_packed_element_v<T>) {
        return writePacked(p, elements.data(), length);
    } else if constexpr (std::is_same_v<T, bool>) {
        return AParcel_writeBoolArray(p, &elements, length, [](const void* data, size_t i) -> bool {
            return (*static_cast<const Elements*>(data))[i];
        });
    } else {
        return AParcel_writeParcelableArray(
                p, &elements, length, [](AParcel* parcel, const void* data, size_t i) {
                    return writeElement(parcel, (*static_cast<const Elements*>(data))[i]);
                });
    }
}

template <typename Array>
binder_status_t readArray(const AParcel* p, Array* array) {
    using Elements = std::decay_t<decltype(elementsOf(*array))>;
    using T = typename Elements::value_type;
    if constexpr (is_packed_element_v<T>) {
        return readPacked<T>(p, array);
    } else if constexpr (std::is_same_v<T, bool>) {
        return AParcel_readBoolArray(p, array, elementsAllocator<Array>,
                                     [](void* data, size_t i, bool value) {
                                         elementsOf(*static_cast<Array*>(data))[i] = value;
                                     });
    } else {
        return AParcel_readParcelableArray(
                p, array, elementsAllocator<Array>,
                [](const AParcel* parcel, void* data, size_t i) {
                    return readElement(parcel, &elementsOf(*static_cast<Array*>(data))[i]);
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
