// The packed layout of metadata blocks and their sizes.
#include <gtest/gtest.h>

#include "tests/host/libcamera_metadata/blocks.h"

extern "C" int addOrientationFromC(camera_metadata_t* block, int32_t degrees);

namespace {

TEST(Block, LayoutOfInlineEntriesAndOfDataOutside) {
    const Block block = makeBlock(10, 80);
    ASSERT_EQ(addOrientationFromC(block.get(), 90), 0);
    ASSERT_EQ(get_camera_metadata_size(block.get()), 288u);
    const std::vector<uint8_t> bytes = bytesOf(block);
    // size, version, flags, entry count, capacity and start, data count, capacity and start
    const uint32_t header[] = {288, 1, 0, 1, 10, 48, 0, 80, 208};
    for (size_t i = 0; i < 9; ++i) EXPECT_EQ(fieldAt(bytes, 4 * i), header[i]) << "field " << i;
    EXPECT_EQ(fieldAt<uint64_t>(bytes, 40), UINT64_MAX);
    EXPECT_EQ(fieldAt(bytes, 48), 0x70003u);
    EXPECT_EQ(fieldAt(bytes, 52), 1u);
    EXPECT_EQ(fieldAt<int32_t>(bytes, 56), 90);
    EXPECT_EQ(fieldAt(bytes, 60), uint32_t{TYPE_INT32});

    const std::vector<uint8_t> outside = bytesOf(makeSampleBlock());
    EXPECT_EQ(fieldAt(outside, 48 + 2 * 16 + 8), 24u);  // the third entry's offset
    EXPECT_EQ(fieldAt<int64_t>(outside, 208 + 24), 1234567890123);
}

TEST(Block, SizesAreRoundedUpAndNeverWrap) {
    EXPECT_EQ(calculate_camera_metadata_size(1, 1), 72u);
    EXPECT_EQ(calculate_camera_metadata_size(SIZE_MAX / 16, 0), SIZE_MAX);
    EXPECT_EQ(calculate_camera_metadata_size(1, SIZE_MAX - 8), SIZE_MAX);
    EXPECT_EQ(calculate_camera_metadata_entry_data_size(TYPE_BYTE, 4), 0u);
    EXPECT_EQ(calculate_camera_metadata_entry_data_size(TYPE_BYTE, 5), 8u);
    EXPECT_EQ(calculate_camera_metadata_entry_data_size(TYPE_DOUBLE, SIZE_MAX / 4), SIZE_MAX);
    EXPECT_EQ(allocate_camera_metadata(SIZE_MAX, 0), nullptr);
    EXPECT_EQ(allocate_camera_metadata(0, size_t{1} << 32), nullptr);
}

}  // namespace
