// Updating, deleting and joining entries keeps the data of the others.
#include <gtest/gtest.h>

#include "tests/host/libcamera_metadata/blocks.h"

namespace {

void expectSampleTimestamp(const Block& block) {
    camera_metadata_ro_entry_t entry;
    ASSERT_EQ(find_camera_metadata_ro_entry(block.get(), ANDROID_JPEG_GPS_TIMESTAMP, &entry), 0);
    EXPECT_EQ(entry.data.i64[0], 1234567890123);
    EXPECT_EQ(validate_camera_metadata_structure(block.get(), nullptr), 0);
}

TEST(UpdateEntry, ShrinksAndGrows) {
    const Block block = makeSampleBlock();
    const double two[2] = {1.5, 2.5};
    camera_metadata_entry_t entry;
    ASSERT_EQ(update_camera_metadata_entry(block.get(), 0, two, 2, &entry), 0);
    EXPECT_EQ(entry.count, 2u);
    EXPECT_EQ(entry.data.d[1], 2.5);
    EXPECT_EQ(get_camera_metadata_data_count(block.get()), 24u);
    expectSampleTimestamp(block);

    const double nine[9] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    ASSERT_EQ(update_camera_metadata_entry(block.get(), 0, nine, 9, &entry), 0);
    EXPECT_EQ(entry.data.d[8], 9.0);
    EXPECT_EQ(get_camera_metadata_data_count(block.get()), 80u);
    expectSampleTimestamp(block);

    const int32_t sizes[3] = {1, 2, 3};  // from inline to outside and back
    ASSERT_EQ(update_camera_metadata_entry(block.get(), 0, nullptr, 0, nullptr), 0);
    ASSERT_EQ(update_camera_metadata_entry(block.get(), 1, sizes, 3, &entry), 0);
    EXPECT_EQ(entry.data.i32[2], 3);
    ASSERT_EQ(update_camera_metadata_entry(block.get(), 1, sizes + 2, 1, &entry), 0);
    EXPECT_EQ(entry.data.i32[0], 3);
    EXPECT_EQ(get_camera_metadata_data_count(block.get()), 8u);
    expectSampleTimestamp(block);
}

TEST(UpdateEntry, FailuresLeaveTheBlockAsItWas) {
    const Block block = makeSampleBlock();
    const std::vector<uint8_t> before = bytesOf(block);
    const double ten[10] = {};
    EXPECT_EQ(update_camera_metadata_entry(block.get(), 0, ten, 10, nullptr), 1) << "no room";
    EXPECT_EQ(update_camera_metadata_entry(block.get(), 3, ten, 1, nullptr), 1) << "no such entry";
    EXPECT_EQ(update_camera_metadata_entry(block.get(), 0, nullptr, 1, nullptr), 1) << "no data";
    EXPECT_EQ(update_camera_metadata_entry(block.get(), 0, ten, SIZE_MAX, nullptr), 1);
    EXPECT_EQ(bytesOf(block), before);
}

TEST(DeleteEntry, LaterEntriesMoveDown) {
    const Block block = makeSampleBlock();
    ASSERT_EQ(delete_camera_metadata_entry(block.get(), 0), 0);
    EXPECT_EQ(get_camera_metadata_entry_count(block.get()), 2u);
    EXPECT_EQ(get_camera_metadata_data_count(block.get()), 8u);
    expectSampleTimestamp(block);
    EXPECT_EQ(delete_camera_metadata_entry(block.get(), 2), 1) << "no such entry";
}

TEST(DeleteEntry, EntriesThatShareDataDoNotReachOutside) {
    const Block block = makeBlock(4, 16);
    const int64_t value = 5;
    ASSERT_EQ(add_camera_metadata_entry(block.get(), ANDROID_JPEG_GPS_TIMESTAMP, &value, 1), 0);
    ASSERT_EQ(add_camera_metadata_entry(block.get(), ANDROID_JPEG_GPS_TIMESTAMP, &value, 1), 0);
    std::vector<uint8_t> bytes = bytesOf(block);
    setField<uint32_t>(bytes, 48 + 16 + 8, 0);  // the second entry's data is the first one's
    setField<uint32_t>(bytes, 24, 8);
    const Block shared(allocate_copy_camera_metadata_checked(
            reinterpret_cast<const camera_metadata_t*>(bytes.data()), bytes.size()));
    ASSERT_NE(shared, nullptr);
    ASSERT_EQ(delete_camera_metadata_entry(shared.get(), 0), 0);
    camera_metadata_ro_entry_t entry;
    EXPECT_EQ(get_camera_metadata_ro_entry(shared.get(), 0, &entry), 1);
    EXPECT_EQ(update_camera_metadata_entry(shared.get(), 0, nullptr, 0, nullptr), 1);
    EXPECT_EQ(delete_camera_metadata_entry(shared.get(), 0), 1);
}

TEST(Append, AddsEntriesWithTheirData) {
    const Block block = makeSampleBlock();
    const Block more = makeSampleBlock();
    ASSERT_EQ(append_camera_metadata(block.get(), more.get()), 0);
    EXPECT_EQ(get_camera_metadata_entry_count(block.get()), 6u);
    camera_metadata_ro_entry_t entry;
    ASSERT_EQ(get_camera_metadata_ro_entry(block.get(), 5, &entry), 0);
    EXPECT_EQ(entry.data.i64[0], 1234567890123);
    EXPECT_EQ(validate_camera_metadata_structure(block.get(), nullptr), 0);

    EXPECT_EQ(append_camera_metadata(block.get(), more.get()), 1) << "no room for the data";
    const Block narrow = makeBlock(2, 80);
    EXPECT_EQ(append_camera_metadata(narrow.get(), more.get()), 1) << "no room for the entries";
}

}  // namespace
