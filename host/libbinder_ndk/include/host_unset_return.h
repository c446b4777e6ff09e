// Host only: the value of a returned number, enum or bool that the method did not set. A device
// returns whatever is in memory there; here it must not look like an answer.
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
