// Blocks from outside: every damaged field is found.
#include <gtest/gtest.h>

#include "tests/host/libcamera_metadata/blocks.h"

namespace {

constexpr size_t kFirstEntry = 48;
constexpr size_t kEntrySize = 16;

// The result for bytes that lie at an address that is a multiple of 8.
int validate(const std::vector<uint8_t>& bytes) {
    const size_t size = bytes.size();
    return validate_camera_metadata_structure(
            reinterpret_cast<const camera_metadata_t*>(bytes.data()), &size);
}

// The sample has 3 of 10 entries from 48 to 208, and 32 of 80 bytes of data from 208 to 288.
TEST(Validate, FindsEveryDamagedField) {
    const struct {
        const char* what;
        size_t offset;
        uint32_t value;
    } cases[] = {
            {"size less than a header", 0, 47},
            {"size too large", 0, 289},
            {"more entries than capacity", 12, 11},
            {"entry capacity reaches the data", 16, 11},
            {"entry capacity overflows", 16, 0x10000000 + 10},
            {"entries inside the header", 20, 44},
            {"entries unaligned", 20, 50},
            {"entries start overflows", 20, 0xfffffff0},
            {"more data than capacity", 24, 88},
            {"next value unaligned", 24, 36},
            {"data capacity too large", 28, 81},
            {"data capacity overflows", 28, 0xffffffff},
            {"data starts in the entries", 32, 200},
            {"data unaligned", 32, 212},
            {"tag in no section", kFirstEntry, 0x7ff0000},
            {"count too large", kFirstEntry + 4, 11},
            {"count overflows", kFirstEntry + 4, 0xffffffff},
            {"empty with data", kFirstEntry + kEntrySize + 4, 0},
            {"offset behind the data", kFirstEntry + 2 * kEntrySize + 8, 80},
            {"offset overflows", kFirstEntry + 2 * kEntrySize + 8, 0xfffffff8},
            {"type not its tags", kFirstEntry + kEntrySize + 12, TYPE_FLOAT},
            {"type unknown", kFirstEntry + kEntrySize + 12, NUM_TYPES},
    };
    const std::vector<uint8_t> sound = bytesOf(makeSampleBlock());
    ASSERT_EQ(validate(sound), 0);
    for (const auto& damage : cases) {
        std::vector<uint8_t> bytes = sound;
        ASSERT_NE(fieldAt(bytes, damage.offset), damage.value) << damage.what;
        setField(bytes, damage.offset, damage.value);
        EXPECT_EQ(validate(bytes), CAMERA_METADATA_VALIDATION_ERROR) << damage.what;
    }
}

TEST(Validate, AcceptsShiftedBlocksAsSuch) {
    const std::vector<uint8_t> bytes = bytesOf(makeSampleBlock());
    std::vector<uint8_t> shifted(4);
    shifted.insert(shifted.end(), bytes.begin(), bytes.end());
    const auto* block = reinterpret_cast<const camera_metadata_t*>(shifted.data() + 4);
    const size_t size = bytes.size();
    EXPECT_EQ(validate_camera_metadata_structure(block, &size), CAMERA_METADATA_VALIDATION_SHIFTED);
}

TEST(Validate, AcceptsVendorTagsSpareDataAndBytesBehindTheBlock) {
    std::vector<uint8_t> bytes = bytesOf(makeSampleBlock());
    // Tags that are in no table here may have any type: a vendor's, and most of the platform's.
    for (const uint32_t tag : {0x80000001u, 0x7000au, 0x10000u}) {
        setField<uint32_t>(bytes, kFirstEntry, tag);
        EXPECT_EQ(validate(bytes), 0) << std::hex << tag;
    }
    // A value may lie in data that the header does not count as used.
    setField<uint32_t>(bytes, kFirstEntry + 2 * kEntrySize + 8, 72);
    EXPECT_EQ(validate(bytes), 0);
    // Bytes behind the block are no fault.
    bytes.resize(bytes.size() + 100);
    EXPECT_EQ(validate(bytes), 0);
}

TEST(Validate, AnyDamagedByteNeverLeadsOutOfTheBlock) {
    const std::vector<uint8_t> sound = bytesOf(makeSampleBlock());
    int accepted = 0;
    for (size_t i = 0; i < sound.size(); ++i) {
        for (const uint8_t value : {0x00, 0x01, 0x7f, 0x80, 0xff}) {
            std::vector<uint8_t> bytes = sound;
            bytes[i] = value;
            const auto* block = reinterpret_cast<const camera_metadata_t*>(bytes.data());
            if (validate(bytes) != 0) continue;
            ++accepted;
            // Whatever passes can be walked; a sanitizer sees a read outside.
            for (size_t e = 0; e < get_camera_metadata_entry_count(block); ++e) {
                camera_metadata_ro_entry_t entry;
                ASSERT_EQ(get_camera_metadata_ro_entry(block, e, &entry), 0);
                const size_t size = entry.count * camera_metadata_type_size[entry.type];
                const std::vector<uint8_t> value(entry.data.u8, entry.data.u8 + size);
                EXPECT_EQ(value.size(), size);
            }
        }
    }
    EXPECT_GT(accepted, 0);
}

}  // namespace
