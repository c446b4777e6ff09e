// A C stream that closes itself.
#pragma once

#include <cstdio>
#include <memory>

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

// Null, with errno set, when the file cannot be opened.
inline File OpenFile(const char* path, const char* mode) {
    return File(fopen(path, mode), fclose);
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
