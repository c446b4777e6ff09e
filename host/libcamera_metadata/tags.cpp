// Types of the tags that are known here.
#include "layout.h"

using namespace host::metadata;

namespace {

// By number within the section.
constexpr uint8_t kJpegTypes[] = {
        TYPE_DOUBLE,  // GPS_COORDINATES
        TYPE_BYTE,    // GPS_PROCESSING_METHOD
        TYPE_INT64,   // GPS_TIMESTAMP
        TYPE_INT32,   // ORIENTATION
        TYPE_BYTE,    // QUALITY
        TYPE_BYTE,    // THUMBNAIL_QUALITY
        TYPE_INT32,   // THUMBNAIL_SIZE
        TYPE_INT32,   // AVAILABLE_THUMBNAIL_SIZES
        TYPE_INT32,   // MAX_SIZE
        TYPE_INT32,   // SIZE
};
static_assert(sizeof(kJpegTypes) == ANDROID_JPEG_END - ANDROID_JPEG_START, "one line per tag");

}  // namespace

int get_camera_metadata_tag_type(uint32_t tag) {
    if (tag < ANDROID_JPEG_START || tag >= ANDROID_JPEG_END) return -1;
    return kJpegTypes[tag - ANDROID_JPEG_START];
}
