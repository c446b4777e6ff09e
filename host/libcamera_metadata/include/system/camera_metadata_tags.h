// Numbers of the metadata sections and tags, ANDROID_JPEG_ORIENTATION and the like, from the table
// in camera_metadata_tags.def. A tag is (section << 16) + index within the section.
#pragma once

// Each section has three names, such as ANDROID_JPEG, ANDROID_JPEG_START for its first tag, and
// ANDROID_JPEG_END for the number after its last tag.
typedef enum camera_metadata_section {
#define CAMERA_METADATA_SECTION(name, number, tags) ANDROID_##name = number,
#define CAMERA_METADATA_TAG(name, number, type)
#include "camera_metadata_tags.def"
    ANDROID_SECTION_COUNT,
    VENDOR_SECTION = 0x8000,
} camera_metadata_section_t;

typedef enum camera_metadata_section_start {
#define CAMERA_METADATA_SECTION(name, number, tags) ANDROID_##name##_START = (number) << 16,
#define CAMERA_METADATA_TAG(name, number, type)
#include "camera_metadata_tags.def"
    VENDOR_SECTION_START = VENDOR_SECTION << 16,
} camera_metadata_section_start_t;

typedef enum camera_metadata_tag {
#define CAMERA_METADATA_SECTION(name, number, tags) \
    ANDROID_##name##_END = ((number) << 16) + (tags),
#define CAMERA_METADATA_TAG(name, number, type) name = number,
#include "camera_metadata_tags.def"
} camera_metadata_tag_t;
