// Blocks from outside: every damaged field is found.
#include <gtest/gtest.h>

#include "tests/host/libcamera_metadata/blocks.h"

namespace {

constexpr size_t kFirstEntry = 48;
constexpr size_t kEntrySize = 16;

int Validate(const std::vector<uint8_t>& bytes) {
    const size_t size = bytes.size();
    return validate_camera_metadata_structure(
            reinterpret_cast<const camera_metadata_t*>(bytes.data()), &size);
}

int ValidateWith(std::vector<uint8_t> bytes, size_t offset, uint32_t value) {
    std::memcpy(bytes.data() + offset, &value, sizeof(value));
    return Validate(bytes);
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
            {"entry capacity overflows", 16, 0x10000000 + 10},
            {"entries inside the header", 20, 44},
            {"entries unaligned", 20, 50},
            {"more data than capacity", 24, 88},
            {"next value unaligned", 24, 36},
            {"data capacity overflows", 28, 0xffffffff},
            {"data starts in the entries", 32, 200},
            {"data unaligned", 32, 212},
            {"tag in no section", kFirstEntry, 0x7ff0000},
            {"count overflows", kFirstEntry + 4, 0x20000000},
            {"empty with data", kFirstEntry + kEntrySize + 4, 0},
            {"offset overflows", kFirstEntry + 2 * kEntrySize + 8, 0xfffffff8},
            {"type not its tags", kFirstEntry + kEntrySize + 12, TYPE_FLOAT},
            {"type unknown", kFirstEntry + kEntrySize + 12, NUM_TYPES},
    };
    const std::vector<uint8_t> sound = bytesOf(makeSampleBlock());
    ASSERT_EQ(Validate(sound), 0);
    for (const auto& damage : cases) {
        ASSERT_NE(fieldAt(sound, damage.offset), damage.value) << damage.what;
        EXPECT_EQ(ValidateWith(sound, damage.offset, damage.value), 1) << damage.what;
    }
}

TEST(Validate, AcceptsWhatADeviceMayHaveMade) {
    const std::vector<uint8_t> sound = bytesOf(makeSampleBlock());
    // Tags that are in no table here may have any type: a vendor's, and most of the platform's.
    for (const uint32_t tag : {0x80000001u, 0x7000au, 0x10000u}) {
        EXPECT_EQ(ValidateWith(sound, kFirstEntry, tag), 0) << std::hex << tag;
    }
    EXPECT_EQ(ValidateWith(sound, kFirstEntry + 2 * kEntrySize + 8, 72), 0) << "data not in use";
    std::vector<uint8_t> bytes = sound;
    bytes.resize(bytes.size() + 100);
    EXPECT_EQ(Validate(bytes), 0) << "bytes behind the block";

    std::vector<uint8_t> shifted(4);
    shifted.insert(shifted.end(), sound.begin(), sound.end());
    const auto* block = reinterpret_cast<const camera_metadata_t*>(shifted.data() + 4);
    EXPECT_EQ(validate_camera_metadata_structure(block, nullptr),
              CAMERA_METADATA_VALIDATION_SHIFTED);
}

}  // namespace
