// Pixel formats and usage bits that buffers of a camera have, as version 1.2 numbers them.
#pragma once

#include <cstdint>

namespace android::hardware::graphics::common::V1_2 {

enum class PixelFormat : int32_t {
    RGBA_8888 = 0x1,
    RAW16 = 0x20,
    BLOB = 0x21,
    IMPLEMENTATION_DEFINED = 0x22,
    YCBCR_420_888 = 0x23,
    RAW_OPAQUE = 0x24,
    RAW10 = 0x25,
    RAW12 = 0x26,
    Y8 = 0x20203859,
    Y16 = 0x20363159,
    YV12 = 0x32315659,
    DEPTH_16 = 0x30,
    YCBCR_P010 = 0x36,
};

enum class BufferUsage : uint64_t {
    CPU_READ_MASK = 0xfULL,
    CPU_READ_NEVER = 0,
    CPU_READ_RARELY = 2,
    CPU_READ_OFTEN = 3,
    CPU_WRITE_MASK = 0xfULL << 4,
    CPU_WRITE_NEVER = 0ULL << 4,
    CPU_WRITE_RARELY = 2ULL << 4,
    CPU_WRITE_OFTEN = 3ULL << 4,
    GPU_TEXTURE = 1ULL << 8,
    GPU_RENDER_TARGET = 1ULL << 9,
    PROTECTED = 1ULL << 14,
    VIDEO_ENCODER = 1ULL << 16,
    CAMERA_OUTPUT = 1ULL << 17,
    CAMERA_INPUT = 1ULL << 18,
    VIDEO_DECODER = 1ULL << 22,
    SENSOR_DIRECT_DATA = 1ULL << 23,
    GPU_DATA_BUFFER = 1ULL << 24,
    HW_IMAGE_ENCODER = 1ULL << 27,
    VENDOR_MASK = 0xfULL << 28,
    VENDOR_MASK_HI = 0xffffULL << 48,
};

}  // namespace android::hardware::graphics::common::V1_2
