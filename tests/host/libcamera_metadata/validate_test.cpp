// Blocks from outside: every damaged field is found.
#include <gtest/gtest.h>

#include <string>

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

struct Damage {
    const char* what;
    size_t offset;
    uint32_t value;
};

class ValidateTest : public ::testing::TestWithParam<Damage> {};

TEST_P(ValidateTest, FindsTheDamage) {
    std::vector<uint8_t> bytes = bytesOf(makeSampleBlock());
    ASSERT_EQ(validate(bytes), 0);
    ASSERT_NE(fieldAt(bytes, GetParam().offset), GetParam().value);
    setField(bytes, GetParam().offset, GetParam().value);
    EXPECT_EQ(validate(bytes), CAMERA_METADATA_VALIDATION_ERROR);
}

// The sample has 3 of 10 entries from 48 to 208, and 32 of 80 bytes of data from 208 to 288.
INSTANTIATE_TEST_SUITE_P(
        Fields, ValidateTest,
        ::testing::Values(
                Damage{"size_less_than_a_header", 0, 47}, Damage{"size_too_large", 0, 289},
                Damage{"more_entries_than_capacity", 12, 11},
                Damage{"entry_capacity_reaches_the_data", 16, 11},
                Damage{"entry_capacity_overflows", 16, 0x10000000 + 10},
                Damage{"entries_inside_the_header", 20, 44}, Damage{"entries_unaligned", 20, 50},
                Damage{"entries_start_overflows", 20, 0xfffffff0},
                Damage{"more_data_than_capacity", 24, 88}, Damage{"next_value_unaligned", 24, 36},
                Damage{"data_capacity_too_large", 28, 81},
                Damage{"data_capacity_overflows", 28, 0xffffffff},
                Damage{"data_starts_in_the_entries", 32, 200}, Damage{"data_unaligned", 32, 212},
                Damage{"tag_in_no_section", kFirstEntry, 0x7ff0000},
                Damage{"count_too_large", kFirstEntry + 4, 11},
                Damage{"count_overflows", kFirstEntry + 4, 0xffffffff},
                Damage{"empty_with_data", kFirstEntry + kEntrySize + 4, 0},
                Damage{"offset_behind_the_data", kFirstEntry + 2 * kEntrySize + 8, 80},
                Damage{"offset_overflows", kFirstEntry + 2 * kEntrySize + 8, 0xfffffff8},
                Damage{"type_not_its_tags", kFirstEntry + kEntrySize + 12, TYPE_FLOAT},
                Damage{"type_unknown", kFirstEntry + kEntrySize + 12, NUM_TYPES}),
        [](const auto& info) { return std::string(info.param.what); });

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
