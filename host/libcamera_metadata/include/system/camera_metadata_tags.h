// Numbers of the metadata tags: (section << 16) + index within the section. The JPEG ones are known
// here, of the other sections only that they exist.
#pragma once

typedef enum camera_metadata_section {
    ANDROID_JPEG = 7,
    ANDROID_SECTION_COUNT = 34,
    VENDOR_SECTION = 0x8000,
} camera_metadata_section_t;

// The first tag of a section.
typedef enum camera_metadata_section_start {
    ANDROID_JPEG_START = ANDROID_JPEG << 16,
    VENDOR_SECTION_START = VENDOR_SECTION << 16,
} camera_metadata_section_start_t;

typedef enum camera_metadata_tag {
    ANDROID_JPEG_GPS_COORDINATES = ANDROID_JPEG_START,  // double: latitude, longitude, altitude
    ANDROID_JPEG_GPS_PROCESSING_METHOD,                 // byte
    ANDROID_JPEG_GPS_TIMESTAMP,                         // int64: seconds since 1970
    ANDROID_JPEG_ORIENTATION,                           // int32: degrees clockwise, 0 90 180 270
    ANDROID_JPEG_QUALITY,                               // byte: 1 to 100
    ANDROID_JPEG_THUMBNAIL_QUALITY,                     // byte: 1 to 100
    ANDROID_JPEG_THUMBNAIL_SIZE,                        // int32: width, height in pixels
    ANDROID_JPEG_AVAILABLE_THUMBNAIL_SIZES,             // int32: width, height in pixels, ...
    ANDROID_JPEG_MAX_SIZE,                              // int32: bytes
    ANDROID_JPEG_SIZE,                                  // int32: bytes
    ANDROID_JPEG_END,
} camera_metadata_tag_t;
