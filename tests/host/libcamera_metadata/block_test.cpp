// The packed layout of metadata blocks, their sizes and copies.
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

TEST(Block, PlacementNeedsRoomAndAlignment) {
    alignas(8) uint8_t storage[96 + 1];
    EXPECT_NE(place_camera_metadata(storage, 96, 2, 16), nullptr);
    EXPECT_EQ(place_camera_metadata(storage, 95, 2, 16), nullptr);
    EXPECT_EQ(place_camera_metadata(storage + 1, 96, 2, 16), nullptr);
}

TEST(Block, ClonesAreCompactAndIndependent) {
    Block block = makeSampleBlock();
    const Block clone(clone_camera_metadata(block.get()));
    ASSERT_NE(clone, nullptr);
    EXPECT_EQ(get_camera_metadata_size(clone.get()), 48u + 3 * 16 + 32);
    EXPECT_EQ(get_camera_metadata_size(clone.get()), get_camera_metadata_compact_size(block.get()));
    EXPECT_EQ(validate_camera_metadata_structure(clone.get(), nullptr), 0);
    block.reset();
    camera_metadata_ro_entry_t entry;
    ASSERT_EQ(find_camera_metadata_ro_entry(clone.get(), ANDROID_JPEG_GPS_TIMESTAMP, &entry), 0);
    EXPECT_EQ(entry.data.i64[0], 1234567890123);
}

TEST(Block, CheckedCopiesTakeUnalignedBytesAndRefuseBadOnes) {
    std::vector<uint8_t> bytes = bytesOf(makeSampleBlock());
    std::vector<uint8_t> shifted(1);
    shifted.insert(shifted.end(), bytes.begin(), bytes.end());
    const auto* source = reinterpret_cast<const camera_metadata_t*>(shifted.data() + 1);
    const Block copy(allocate_copy_camera_metadata_checked(source, bytes.size()));
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(bytesOf(copy), bytes);
    for (size_t size = 0; size < bytes.size(); ++size) {
        // A copy of exactly that many bytes, so that reading more is seen by a sanitizer.
        const std::vector<uint8_t> cut(bytes.begin(), bytes.begin() + static_cast<long>(size));
        EXPECT_EQ(allocate_copy_camera_metadata_checked(
                          reinterpret_cast<const camera_metadata_t*>(cut.data()), size),
                  nullptr)
                << size;
    }
}

}  // namespace
