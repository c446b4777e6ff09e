// Iterating over the enumerators of an AIDL enum: for (E e : ndk::enum_range<E>()) ...
#pragma once

#include <array>
#include <cstddef>
#include <iterator>
#include <type_traits>

namespace ndk {

namespace internal {
// Specialised by generated code with a std::array of all enumerators in declaration order.
template <typename EnumType, typename = std::enable_if_t<std::is_enum<EnumType>::value>>
constexpr inline void* enum_values = nullptr;
}  // namespace internal

template <typename EnumType, typename = std::enable_if_t<std::is_enum<EnumType>::value>>
struct enum_range {
    constexpr auto begin() const { return std::begin(internal::enum_values<EnumType>); }
    constexpr auto end() const { return std::end(internal::enum_values<EnumType>); }
};

}  // namespace ndk
