// Adding and finding entries.
#include <gtest/gtest.h>

#include <cerrno>

#include "tests/host/libcamera_metadata/blocks.h"

namespace {

TEST(AddEntry, FailuresLeaveTheBlockAsItWas) {
    const Block block = makeBlock(2, 8);
    const int32_t orientation = 180;
    const int64_t two[2] = {1, 2};
    ASSERT_EQ(add_camera_metadata_entry(block.get(), ANDROID_JPEG_ORIENTATION, &orientation, 1), 0);
    const std::vector<uint8_t> before = bytesOf(block);

    const auto add = [&](uint32_t tag, const void* data, size_t count) {
        return add_camera_metadata_entry(block.get(), tag, data, count);
    };
    EXPECT_EQ(add(ANDROID_JPEG_GPS_TIMESTAMP, two, 2), 1) << "no room for the data";
    EXPECT_EQ(add(ANDROID_JPEG_GPS_TIMESTAMP, two, SIZE_MAX), 1) << "size overflows";
    EXPECT_EQ(add(ANDROID_JPEG_ORIENTATION, nullptr, 1), 1) << "no data";
    EXPECT_EQ(add(ANDROID_JPEG_END, &orientation, 1), 1) << "unknown tag of a known section";
    EXPECT_EQ(add(static_cast<uint32_t>(VENDOR_SECTION_START), &orientation, 1), 1) << "vendor tag";
    EXPECT_EQ(bytesOf(block), before);

    EXPECT_EQ(add(ANDROID_JPEG_GPS_TIMESTAMP, two, 1), 0);
    EXPECT_EQ(add(ANDROID_JPEG_QUALITY, "\x5f", 1), 1) << "no entry left";
    EXPECT_EQ(validate_camera_metadata_structure(block.get(), nullptr), 0);
}

TEST(AddEntry, EmptyAndInlineValues) {
    const Block block = makeBlock(4, 16);
    EXPECT_EQ(add_camera_metadata_entry(block.get(), ANDROID_JPEG_THUMBNAIL_SIZE, nullptr, 0), 0);
    EXPECT_EQ(add_camera_metadata_entry(block.get(), ANDROID_JPEG_GPS_PROCESSING_METHOD, "GPS", 4),
              0);
    EXPECT_EQ(get_camera_metadata_data_count(block.get()), 0u);
    EXPECT_EQ(
            add_camera_metadata_entry(block.get(), ANDROID_JPEG_GPS_PROCESSING_METHOD, "CELLID", 7),
            0);
    EXPECT_EQ(get_camera_metadata_data_count(block.get()), 8u);
    EXPECT_EQ(get_camera_metadata_entry_count(block.get()), 3u);

    camera_metadata_ro_entry_t entry;
    ASSERT_EQ(get_camera_metadata_ro_entry(block.get(), 1, &entry), 0);
    EXPECT_STREQ(reinterpret_cast<const char*>(entry.data.u8), "GPS");
    EXPECT_EQ(validate_camera_metadata_structure(block.get(), nullptr), 0);
}

TEST(FindEntry, FindsTheFirstOfItsTagSortedOrNot) {
    const Block block = makeBlock(4, 16);
    const int32_t first = 90, second = 270;
    const int64_t timestamp = 5;
    ASSERT_EQ(add_camera_metadata_entry(block.get(), ANDROID_JPEG_GPS_TIMESTAMP, &timestamp, 1), 0);
    ASSERT_EQ(add_camera_metadata_entry(block.get(), ANDROID_JPEG_ORIENTATION, &first, 1), 0);
    ASSERT_EQ(add_camera_metadata_entry(block.get(), ANDROID_JPEG_ORIENTATION, &second, 1), 0);
    camera_metadata_ro_entry_t entry;
    for (const uint32_t sorted : {0u, 1u}) {
        memcpy(reinterpret_cast<char*>(block.get()) + 8, &sorted, sizeof(sorted));  // the flags
        ASSERT_EQ(find_camera_metadata_ro_entry(block.get(), ANDROID_JPEG_ORIENTATION, &entry), 0);
        EXPECT_EQ(entry.index, 1u);
        EXPECT_EQ(entry.data.i32[0], 90);
        EXPECT_EQ(find_camera_metadata_ro_entry(block.get(), ANDROID_JPEG_QUALITY, &entry),
                  -ENOENT);
    }
    // The next addition ends the order.
    ASSERT_EQ(add_camera_metadata_entry(block.get(), ANDROID_JPEG_GPS_PROCESSING_METHOD, "A", 1),
              0);
    EXPECT_EQ(
            find_camera_metadata_ro_entry(block.get(), ANDROID_JPEG_GPS_PROCESSING_METHOD, &entry),
            0);
}

}  // namespace
