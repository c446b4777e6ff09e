// Checks, reads and makes camera metadata blobs.
#include "camera_metadata_blob.h"

#include <system/camera_metadata.h>

namespace offlinecamera {

namespace {

const camera_metadata_t* AsMetadata(const std::vector<uint8_t>& blob) {
    return reinterpret_cast<const camera_metadata_t*>(blob.data());
}

}  // namespace

base::Result<base::Done> CheckMetadataBlob(const std::vector<uint8_t>& blob) {
    if (blob.empty()) return base::Done{};
    const size_t length = blob.size();
    // The structure first: a shorter blob has no size field to read.
    if (validate_camera_metadata_structure(AsMetadata(blob), &length) != 0) {
        return base::Failure{"metadata of " + std::to_string(length) +
                             " bytes is not a camera metadata blob"};
    }
    const size_t stated = get_camera_metadata_size(AsMetadata(blob));
    if (stated == length) return base::Done{};
    return base::Failure{"metadata has " + std::to_string(length) + " bytes, but its blob says " +
                         std::to_string(stated)};
}

std::optional<int32_t> FindJpegOrientation(const std::vector<uint8_t>& blob) {
    camera_metadata_ro_entry_t entry;
    if (blob.empty() ||
        find_camera_metadata_ro_entry(AsMetadata(blob), ANDROID_JPEG_ORIENTATION, &entry) != 0 ||
        entry.type != TYPE_INT32 || entry.count != 1) {
        return std::nullopt;
    }
    return entry.data.i32[0];
}

std::vector<uint8_t> MakeResultMetadata(int32_t orientation) {
    std::vector<uint8_t> blob;
    camera_metadata_t* metadata = allocate_camera_metadata(1, 0);
    if (metadata != nullptr &&
        add_camera_metadata_entry(metadata, ANDROID_JPEG_ORIENTATION, &orientation, 1) == 0) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(metadata);
        blob.assign(bytes, bytes + get_camera_metadata_size(metadata));
    }
    free_camera_metadata(metadata);
    return blob;
}

}  // namespace offlinecamera
