// Failures of operations on graphics memory.
#pragma once

#include <base/result.h>

#include <cstdint>
#include <string>
#include <utility>

namespace graphics {

// The numbers are those of mapper 4.0.
enum class BufferError : int32_t {
    kNone = 0,
    kBadDescriptor = 1,
    kBadBuffer = 2,
    kBadValue = 3,
    kNoResources = 5,
    kUnsupported = 7,
};

// `text` says what was wrong with which value.
inline base::Failure Failed(BufferError error, std::string text) {
    return {std::move(text), false, static_cast<int>(error)};
}

template <class T>
BufferError ErrorOf(const base::Result<T>& result) {
    return result.Ok() ? BufferError::kNone : static_cast<BufferError>(result.GetFailure().code);
}

}  // namespace graphics
