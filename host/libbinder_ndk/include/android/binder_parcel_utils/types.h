// What kind of AIDL type a C++ type is.
#pragma once

#include <android/binder_parcel.h>

#include <array>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <utility>

namespace ndk::internal {

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

}  // namespace ndk::internal
