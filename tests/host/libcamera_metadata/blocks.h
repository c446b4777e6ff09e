// Metadata blocks that the tests start from.
#pragma once

#include <system/camera_metadata.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

struct FreeBlock {
    void operator()(camera_metadata_t* block) const { free_camera_metadata(block); }
};
using Block = std::unique_ptr<camera_metadata_t, FreeBlock>;

inline int addOrientation(const Block& block, int32_t degrees) {
    return add_camera_metadata_entry(block.get(), ANDROID_JPEG_ORIENTATION, &degrees, 1);
}

// GPS coordinates (24 bytes of data), orientation (inline) and a timestamp (8 bytes of data).
inline Block makeSampleBlock() {
    Block block(allocate_camera_metadata(10, 80));
    const double coordinates[3] = {47.5, 8.25, 400.0};
    const int64_t timestamp = 1234567890123;
    add_camera_metadata_entry(block.get(), ANDROID_JPEG_GPS_COORDINATES, coordinates, 3);
    addOrientation(block, 90);
    add_camera_metadata_entry(block.get(), ANDROID_JPEG_GPS_TIMESTAMP, &timestamp, 1);
    return block;
}

inline std::vector<uint8_t> bytesOf(const Block& block) {
    const auto* first = reinterpret_cast<const uint8_t*>(block.get());
    return std::vector<uint8_t>(first, first + get_camera_metadata_size(block.get()));
}

template <typename T = uint32_t>
T fieldAt(const std::vector<uint8_t>& bytes, size_t offset) {
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof(value));
    return value;
}
