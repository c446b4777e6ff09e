// Host only: what a number, an enum or a bool is that a method should return and did not set. On a
// device it is what happens to be in memory, which must not look like an answer here.
#pragma once

#include <cstdint>
#include <type_traits>

namespace host {

constexpr int32_t kUnsetReturn = 0x0BADC0DE;  // 195936478

template <typename T>
constexpr T UnsetReturn() {
    if constexpr (std::is_same_v<T, bool>) return true;
    return static_cast<T>(kUnsetReturn);
}

}  // namespace host
