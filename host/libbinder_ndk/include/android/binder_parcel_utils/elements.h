// Arrays of any kind: vectors, fixed arrays, and optionals of either.
#pragma once

#include <android/binder_parcel.h>
#include <android/binder_parcel_utils/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <type_traits>
#include <vector>

namespace ndk {

// Elements are written and read by these; binder_parcel_utils.h defines them.
template <typename T>
binder_status_t AParcel_writeData(AParcel* parcel, const T& value);
template <typename T>
binder_status_t AParcel_readData(const AParcel* parcel, T* value);
template <typename T>
binder_status_t AParcel_writeNullableData(AParcel* parcel, const T& value);
template <typename T>
binder_status_t AParcel_readNullableData(const AParcel* parcel, T* value);

namespace internal {

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

}  // namespace internal
}  // namespace ndk
