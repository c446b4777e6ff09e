// Descriptions and handles that several tests use, and counts of what a process holds.
#pragma once

#include <graphics/buffer_handle.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "tests/host/libhidlbase/open_descriptors.h"

namespace graphics {

inline BufferDescription Describe(int32_t format, uint32_t width, uint32_t height) {
    return {"", width, height, 1, format, 3, 0};
}

inline UniqueHandle Create(const BufferDescription& description) {
    return CreateBuffer(description).Value();
}

// 491,520 bytes.
inline UniqueHandle CreateNv12() {
    return Create(Describe(kFormatYcbcr420, 640, 480));
}

// Mappings of buffers in this process.
inline int BufferMappings() {
    std::ifstream maps("/proc/self/maps");
    int count = 0;
    for (std::string line; std::getline(maps, line);) {
        if (line.find("memfd:graphics_buffer") != std::string::npos) ++count;
    }
    return count;
}

}  // namespace graphics
