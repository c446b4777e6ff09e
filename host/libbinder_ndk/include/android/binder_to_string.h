// ToString for the values of AIDL types, used by generated toString() methods.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcelable_utils.h>

#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

namespace android {
namespace internal {

template <typename T, typename = void>
struct HasToStringMethod : std::false_type {};
template <typename T>
struct HasToStringMethod<T, std::void_t<decltype(std::declval<const T&>().toString())>>
    : std::true_type {};

// Generated enums have a free toString in their own namespace.
template <typename T, typename = void>
struct HasToStringFunction : std::false_type {};
template <typename T>
struct HasToStringFunction<T, std::void_t<decltype(toString(std::declval<const T&>()))>>
    : std::true_type {};

template <typename T, typename = void>
struct IsIterable : std::false_type {};
template <typename T>
struct IsIterable<T, std::void_t<decltype(std::declval<const T&>().begin()),
                                 decltype(std::declval<const T&>().end())>> : std::true_type {};

template <typename T>
struct IsInterfacePointer : std::false_type {};
template <typename T>
struct IsInterfacePointer<std::shared_ptr<T>> : std::is_base_of<::ndk::ICInterface, T> {};

template <typename T>
std::string ToString(const T& t) {
    if constexpr (std::is_same_v<T, bool>) {
        return t ? "true" : "false";
    } else if constexpr (std::is_arithmetic_v<T>) {
        return std::to_string(t);
    } else if constexpr (std::is_same_v<T, std::string>) {
        return t;
    } else if constexpr (std::is_same_v<T, ::ndk::ScopedFileDescriptor>) {
        return "fd:" + std::to_string(t.get());
    } else if constexpr (HasToStringMethod<T>::value) {
        return t.toString();
    } else if constexpr (HasToStringFunction<T>::value) {
        return toString(t);
    } else if constexpr (IsInterfacePointer<T>::value) {
        std::ostringstream text;
        text << "interface:" << static_cast<const void*>(t.get());
        return text.str();
    } else if constexpr (IsIterable<T>::value) {
        std::string text = "[";
        bool first = true;
        for (const auto& element : t) {
            if (!first) text += ", ";
            first = false;
            text += ToString<typename T::value_type>(element);
        }
        return text + "]";
    }
}

}  // namespace internal
}  // namespace android
