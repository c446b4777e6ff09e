// Builds the metadata dump with the camera metadata library.

#include "metadata_dump.h"

#include <system/camera_metadata.h>

namespace offlineframes {

Result<Bytes> makeMetadataDump() {
    const int32_t orientation = 0;
    const uint8_t quality = 95;
    const uint8_t thumbnailQuality = 90;
    const int32_t thumbnailSize[2] = {0, 0};
    camera_metadata_t* const metadata = allocate_camera_metadata(4, 8);
    if (!metadata) return Failure{"no memory for the camera metadata"};
    const int errors =
            add_camera_metadata_entry(metadata, ANDROID_JPEG_ORIENTATION, &orientation, 1) +
            add_camera_metadata_entry(metadata, ANDROID_JPEG_QUALITY, &quality, 1) +
            add_camera_metadata_entry(metadata, ANDROID_JPEG_THUMBNAIL_QUALITY, &thumbnailQuality,
                                      1) +
            add_camera_metadata_entry(metadata, ANDROID_JPEG_THUMBNAIL_SIZE, thumbnailSize, 2);
    const auto* const first = reinterpret_cast<const uint8_t*>(metadata);
    Bytes bytes(first, first + get_camera_metadata_size(metadata));
    free_camera_metadata(metadata);
    if (errors != 0) return Failure{"the camera metadata library refused an entry"};
    return bytes;
}

}  // namespace offlineframes
