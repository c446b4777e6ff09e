// Checks of the sizes that a view claims.
#pragma once

#include <imaging/planes.h>
#include <imaging/raw10.h>

#include <string>

namespace imaging {

inline std::string Size(uint32_t width, uint32_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

/** Empty, or what is wrong with the view's sizes; `what` names it in the text. */
inline std::string CheckRaw(const RawView& raw, const char* what) {
    if (raw.width == 0 || raw.width % kRaw10PixelsPerGroup != 0 || raw.height == 0 ||
        raw.height % 2 != 0) {
        return std::string(what) + " is " + Size(raw.width, raw.height) +
               ": RAW10 needs a width that is a multiple of 4 and an even height";
    }
    if (raw.strideBytes < Raw10RowBytes(raw.width)) {
        return std::string(what) + " has a stride of " + std::to_string(raw.strideBytes) +
               " bytes: " + std::to_string(raw.width) + " pixels need " +
               std::to_string(Raw10RowBytes(raw.width));
    }
    return {};
}

inline std::string CheckNv12(const Nv12View& picture, const char* what) {
    if (picture.width == 0 || picture.width % 2 != 0 || picture.height == 0 ||
        picture.height % 2 != 0) {
        return std::string(what) + " is " + Size(picture.width, picture.height) +
               ": NV12 needs even sizes";
    }
    if (picture.strideBytes < picture.width) {
        return std::string(what) + " has a stride of " + std::to_string(picture.strideBytes) +
               " bytes: " + std::to_string(picture.width) + " pixels need as many";
    }
    return {};
}

/** Whether a frame can be developed into a picture. */
inline std::string CheckDevelopment(const RawView& raw, const Nv12View& picture) {
    std::string problem = CheckRaw(raw, "RAW frame");
    if (problem.empty()) problem = CheckNv12(picture, "picture");
    if (problem.empty() && (picture.width > raw.width || picture.height > raw.height)) {
        problem = "picture of " + Size(picture.width, picture.height) +
                  " is larger than its RAW frame of " + Size(raw.width, raw.height);
    }
    return problem;
}

}  // namespace imaging
