// Checks, reads and makes camera metadata blobs.
#include "camera_metadata_blob.h"

#include <system/camera_metadata.h>

namespace offlinecamera {

namespace {

const camera_metadata_t* AsMetadata(const std::vector<uint8_t>& blob) {
    return reinterpret_cast<const camera_metadata_t*>(blob.data());
}

}  // namespace

std::string CheckMetadataBlob(const std::vector<uint8_t>& blob) {
    if (blob.empty()) return {};
    const size_t length = blob.size();
    // The structure is checked first: the size field is only there in a blob of some length.
    if (validate_camera_metadata_structure(AsMetadata(blob), &length) != 0) {
        return "metadata of " + std::to_string(length) + " bytes is not a camera metadata blob";
    }
    if (get_camera_metadata_size(AsMetadata(blob)) != length) {
        return "metadata has " + std::to_string(length) + " bytes, but its blob says " +
               std::to_string(get_camera_metadata_size(AsMetadata(blob)));
    }
    return {};
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
    camera_metadata_t* metadata = allocate_camera_metadata(1, 0);
    if (metadata == nullptr ||
        add_camera_metadata_entry(metadata, ANDROID_JPEG_ORIENTATION, &orientation, 1) != 0) {
        free_camera_metadata(metadata);
        return {};
    }
    const auto* bytes = reinterpret_cast<const uint8_t*>(metadata);
    std::vector<uint8_t> blob(bytes, bytes + get_camera_metadata_size(metadata));
    free_camera_metadata(metadata);
    return blob;
}

}  // namespace offlinecamera
