// Checks of the sizes that a view claims.
#pragma once

#include <base/result.h>
#include <imaging/planes.h>
#include <imaging/raw10.h>

#include <string>

namespace imaging {

using base::Done;
using base::Failure;
using base::Result;

inline std::string Size(uint32_t width, uint32_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

// Fails when the sizes of a view are impossible; `what` names it in the text.
inline Result<Done> CheckSizes(uint32_t width, uint32_t height, size_t strideBytes, size_t rowBytes,
                               uint32_t grid, const char* what, const char* rule) {
    if (width == 0 || width % grid != 0 || height == 0 || height % 2 != 0) {
        return Failure{std::string(what) + " is " + Size(width, height) + ": " + rule};
    }
    if (strideBytes >= rowBytes) return Done{};
    return Failure{std::string(what) + " has a stride of " + std::to_string(strideBytes) +
                   " bytes: " + std::to_string(width) + " pixels need " + std::to_string(rowBytes)};
}

inline Result<Done> CheckRaw(const RawView& raw, const char* what) {
    return CheckSizes(raw.width, raw.height, raw.strideBytes, Raw10RowBytes(raw.width),
                      kRaw10PixelsPerGroup, what,
                      "RAW10 needs a width that is a multiple of 4 and an even height");
}

inline Result<Done> CheckNv12(const Nv12View& picture, const char* what) {
    return CheckSizes(picture.width, picture.height, picture.strideBytes, picture.width, 2, what,
                      "NV12 needs even sizes");
}

// Whether a frame can be developed into a picture.
inline Result<Done> CheckDevelopment(const RawView& raw, const Nv12View& picture) {
    Result<Done> checked = CheckRaw(raw, "RAW frame");
    if (checked.Ok()) checked = CheckNv12(picture, "picture");
    if (checked.Ok() && (picture.width > raw.width || picture.height > raw.height)) {
        return Failure{"picture of " + Size(picture.width, picture.height) +
                       " is larger than its RAW frame of " + Size(raw.width, raw.height)};
    }
    return checked;
}

}  // namespace imaging
