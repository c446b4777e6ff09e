// The packed layout of metadata blocks; adding and finding entries.
#include <gtest/gtest.h>

#include <cerrno>

#include "tests/host/libcamera_metadata/blocks.h"

namespace {

TEST(Block, LayoutOfInlineEntriesAndOfDataOutside) {
    const Block block(allocate_camera_metadata(10, 80));
    ASSERT_EQ(addOrientation(block, 90), 0);
    const std::vector<uint8_t> bytes = bytesOf(block);
    // size, version, flags, entry count, capacity and start, data count, capacity and start
    const uint32_t header[] = {288, 1, 0, 1, 10, 48, 0, 80, 208};
    for (size_t i = 0; i < 9; ++i) EXPECT_EQ(fieldAt(bytes, 4 * i), header[i]) << "field " << i;
    EXPECT_EQ(fieldAt<uint64_t>(bytes, 40), UINT64_MAX);
    // tag, count, value, type
    const uint32_t entry[] = {0x70003, 1, 90, TYPE_INT32};
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(fieldAt(bytes, 48 + 4 * i), entry[i]) << "word " << i;

    const std::vector<uint8_t> outside = bytesOf(makeSampleBlock());
    EXPECT_EQ(fieldAt(outside, 48 + 2 * 16 + 8), 24u);  // the third entry's offset
    EXPECT_EQ(fieldAt<int64_t>(outside, 208 + 24), 1234567890123);
    EXPECT_EQ(allocate_camera_metadata(SIZE_MAX, 0), nullptr);
    EXPECT_EQ(allocate_camera_metadata(0, UINT32_MAX), nullptr) << "a header more than 4 GiB";
}

TEST(AddEntry, RefusesWhatDoesNotFitAndChangesNothing) {
    const Block block(allocate_camera_metadata(2, 8));
    const auto add = [&](uint32_t tag, const void* data, size_t count) {
        return add_camera_metadata_entry(block.get(), tag, data, count);
    };
    const int64_t two[2] = {1, 2};
    ASSERT_EQ(add(ANDROID_JPEG_GPS_PROCESSING_METHOD, "GPS", 4), 0);
    const std::vector<uint8_t> before = bytesOf(block);
    EXPECT_EQ(add(ANDROID_JPEG_GPS_TIMESTAMP, two, 2), 1) << "no room for the data";
    EXPECT_EQ(add(ANDROID_JPEG_GPS_TIMESTAMP, two, SIZE_MAX), 1) << "size overflows";
    EXPECT_EQ(add(ANDROID_JPEG_ORIENTATION, nullptr, 1), 1) << "no data";
    EXPECT_EQ(add(ANDROID_JPEG_END, two, 1), 1) << "unknown tag";
    EXPECT_EQ(bytesOf(block), before);
    EXPECT_EQ(add(ANDROID_JPEG_GPS_TIMESTAMP, two, 1), 0);
    EXPECT_EQ(add(ANDROID_JPEG_QUALITY, "\x5f", 1), 1) << "no entry left";
    camera_metadata_ro_entry_t entry;
    EXPECT_EQ(get_camera_metadata_ro_entry(block.get(), 2, &entry), 1);
}

TEST(FindEntry, FindsTheFirstOfItsTagSortedOrNot) {
    const Block block(allocate_camera_metadata(4, 16));
    const auto add = [&](uint32_t tag, const int64_t value) {
        ASSERT_EQ(add_camera_metadata_entry(block.get(), tag, &value, 1), 0);
    };
    camera_metadata_ro_entry_t entry;
    const auto find = [&](uint32_t tag) {
        return find_camera_metadata_ro_entry(block.get(), tag, &entry);
    };
    add(ANDROID_JPEG_GPS_TIMESTAMP, 5);
    add(ANDROID_JPEG_ORIENTATION, 90);
    add(ANDROID_JPEG_ORIENTATION, 270);
    for (const uint32_t sorted : {0u, 1u}) {
        memcpy(reinterpret_cast<char*>(block.get()) + 8, &sorted, sizeof(sorted));  // the flags
        ASSERT_EQ(find(ANDROID_JPEG_ORIENTATION), 0);
        EXPECT_EQ(entry.index, 1u);
        EXPECT_EQ(entry.data.i32[0], 90);
        EXPECT_EQ(find(ANDROID_JPEG_QUALITY), -ENOENT);
    }
    add(ANDROID_JPEG_GPS_PROCESSING_METHOD, 'A');  // ends the order
    EXPECT_EQ(find(ANDROID_JPEG_GPS_PROCESSING_METHOD), 0);
}

}  // namespace
