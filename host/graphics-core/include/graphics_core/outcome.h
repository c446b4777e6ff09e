// How an operation on graphics memory ended.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace graphics {

// The numbers are those of both mapper interfaces.
enum class BufferError : int32_t {
    kNone = 0,
    kBadDescriptor = 1,
    kBadBuffer = 2,
    kBadValue = 3,
    kNoResources = 5,
    kUnsupported = 7,
};

// `reason` is for a log line: what was wrong with which value. Empty without an error.
struct [[nodiscard]] Outcome {
    BufferError error = BufferError::kNone;
    std::string reason;

    bool ok() const { return error == BufferError::kNone; }
};

inline Outcome failure(BufferError error, std::string reason) {
    return {error, std::move(reason)};
}

}  // namespace graphics
