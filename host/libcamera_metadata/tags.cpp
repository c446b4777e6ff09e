// Names and types of sections and tags.
#include "layout.h"

using namespace host::metadata;

namespace {

// By section number.
constexpr const char* kSectionNames[] = {
        "android.colorCorrection",
        "android.control",
        "android.demosaic",
        "android.edge",
        "android.flash",
        "android.flash.info",
        "android.hotPixel",
        "android.jpeg",
        "android.lens",
        "android.lens.info",
        "android.noiseReduction",
        "android.quirks",
        "android.request",
        "android.scaler",
        "android.sensor",
        "android.sensor.info",
        "android.shading",
        "android.statistics",
        "android.statistics.info",
        "android.tonemap",
        "android.led",
        "android.info",
        "android.blackLevel",
        "android.sync",
        "android.reprocess",
        "android.depth",
        "android.logicalMultiCamera",
        "android.distortionCorrection",
        "android.heic",
        "android.heic.info",
        "android.automotive",
        "android.automotive.lens",
        "android.extension",
        "android.jpegr",
};
static_assert(sizeof(kSectionNames) / sizeof(*kSectionNames) == ANDROID_SECTION_COUNT,
              "one name per section");

struct TagInfo {
    const char* name;
    uint8_t type;
};

// By number within the section.
constexpr TagInfo kJpegTags[] = {
        {"gpsCoordinates", TYPE_DOUBLE}, {"gpsProcessingMethod", TYPE_BYTE},
        {"gpsTimestamp", TYPE_INT64},    {"orientation", TYPE_INT32},
        {"quality", TYPE_BYTE},          {"thumbnailQuality", TYPE_BYTE},
        {"thumbnailSize", TYPE_INT32},   {"availableThumbnailSizes", TYPE_INT32},
        {"maxSize", TYPE_INT32},         {"size", TYPE_INT32},
};
static_assert(sizeof(kJpegTags) / sizeof(*kJpegTags) == ANDROID_JPEG_END - ANDROID_JPEG_START,
              "one line per tag");

// Null for a tag that is not known here; vendor tags never are.
const TagInfo* findTagInfo(uint32_t tag) {
    if (tag < ANDROID_JPEG_START || tag >= ANDROID_JPEG_END) return nullptr;
    return &kJpegTags[tag - ANDROID_JPEG_START];
}

}  // namespace

const char* get_camera_metadata_section_name(uint32_t tag) {
    const uint32_t section = tag >> 16;
    return section < ANDROID_SECTION_COUNT ? kSectionNames[section] : nullptr;
}

const char* get_camera_metadata_tag_name(uint32_t tag) {
    const TagInfo* info = findTagInfo(tag);
    return info != nullptr ? info->name : nullptr;
}

int get_camera_metadata_tag_type(uint32_t tag) {
    const TagInfo* info = findTagInfo(tag);
    return info != nullptr ? info->type : -1;
}
