// Metadata blocks: layout, adding and finding entries, and what is found in damaged ones.
#include <gtest/gtest.h>
#include <system/camera_metadata.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

namespace {

struct FreeBlock {
    void operator()(camera_metadata_t* block) const { free_camera_metadata(block); }
};
using Block = std::unique_ptr<camera_metadata_t, FreeBlock>;

int AddOrientation(const Block& block, int32_t degrees) {
    return add_camera_metadata_entry(block.get(), ANDROID_JPEG_ORIENTATION, &degrees, 1);
}

// GPS coordinates (24 bytes of data), orientation (inline) and a timestamp (8 bytes of data).
Block MakeSampleBlock() {
    Block block(allocate_camera_metadata(10, 80));
    const double coordinates[3] = {47.5, 8.25, 400.0};
    const int64_t timestamp = 1234567890123;
    add_camera_metadata_entry(block.get(), ANDROID_JPEG_GPS_COORDINATES, coordinates, 3);
    AddOrientation(block, 90);
    add_camera_metadata_entry(block.get(), ANDROID_JPEG_GPS_TIMESTAMP, &timestamp, 1);
    return block;
}

std::vector<uint8_t> BytesOf(const Block& block) {
    const auto* first = reinterpret_cast<const uint8_t*>(block.get());
    return std::vector<uint8_t>(first, first + get_camera_metadata_size(block.get()));
}

template <typename T = uint32_t>
T FieldAt(const std::vector<uint8_t>& bytes, size_t offset) {
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof(value));
    return value;
}

TEST(Block, LayoutOfInlineEntriesAndOfDataOutside) {
    const Block block(allocate_camera_metadata(10, 80));
    ASSERT_EQ(AddOrientation(block, 90), 0);
    const std::vector<uint8_t> bytes = BytesOf(block);
    // size, version, flags, entry count, capacity and start, data count, capacity and start
    const uint32_t header[] = {288, 1, 0, 1, 10, 48, 0, 80, 208};
    for (size_t i = 0; i < 9; ++i) EXPECT_EQ(FieldAt(bytes, 4 * i), header[i]) << "field " << i;
    EXPECT_EQ(FieldAt<uint64_t>(bytes, 40), UINT64_MAX);
    // tag, count, value, type
    const uint32_t entry[] = {0x70003, 1, 90, TYPE_INT32};
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(FieldAt(bytes, 48 + 4 * i), entry[i]) << "word " << i;

    const std::vector<uint8_t> outside = BytesOf(MakeSampleBlock());
    EXPECT_EQ(FieldAt(outside, 48 + 2 * 16 + 8), 24u);  // the third entry's offset
    EXPECT_EQ(FieldAt<int64_t>(outside, 208 + 24), 1234567890123);
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
    const std::vector<uint8_t> before = BytesOf(block);
    EXPECT_EQ(add(ANDROID_JPEG_GPS_TIMESTAMP, two, 2), 1) << "no room for the data";
    EXPECT_EQ(add(ANDROID_JPEG_GPS_TIMESTAMP, two, SIZE_MAX), 1) << "size overflows";
    EXPECT_EQ(add(ANDROID_JPEG_ORIENTATION, nullptr, 1), 1) << "no data";
    EXPECT_EQ(add(ANDROID_JPEG_END, two, 1), 1) << "unknown tag";
    EXPECT_EQ(BytesOf(block), before);
    EXPECT_EQ(add(ANDROID_JPEG_GPS_TIMESTAMP, two, 1), 0);
    EXPECT_EQ(add(ANDROID_JPEG_QUALITY, "\x5f", 1), 1) << "no entry left";
    camera_metadata_ro_entry_t entry;
    EXPECT_EQ(get_camera_metadata_ro_entry(block.get(), 2, &entry), 1);
}

static_assert(ANDROID_JPEG_ORIENTATION == 0x70003 && ANDROID_JPEG_END == 0x7000a);
static_assert(ANDROID_SECTION_COUNT == 34);

TEST(AddEntry, GivesEachTagItsType) {
    const std::pair<uint32_t, uint8_t> types[] = {
            {ANDROID_COLOR_CORRECTION_MODE, TYPE_BYTE},  // the first tag, and the last one
            {ANDROID_JPEGR_AVAILABLE_JPEG_R_STALL_DURATIONS_MAXIMUM_RESOLUTION, TYPE_INT64},
            {ANDROID_SENSOR_SENSITIVITY, TYPE_INT32},
            {ANDROID_CONTROL_ZOOM_RATIO, TYPE_FLOAT},
            {ANDROID_JPEG_GPS_COORDINATES, TYPE_DOUBLE},
            {ANDROID_CONTROL_AE_COMPENSATION_STEP, TYPE_RATIONAL},
    };
    for (const auto& [tag, type] : types) {
        const Block block(allocate_camera_metadata(1, 8));
        ASSERT_EQ(add_camera_metadata_entry(block.get(), tag, "1234567", 1), 0) << std::hex << tag;
        camera_metadata_ro_entry_t entry;
        ASSERT_EQ(get_camera_metadata_ro_entry(block.get(), 0, &entry), 0);
        EXPECT_EQ(entry.type, type) << std::hex << tag;
    }
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

constexpr size_t kFirstEntry = 48;
constexpr size_t kEntrySize = 16;

int Validate(const uint8_t* bytes, size_t size) {
    return validate_camera_metadata_structure(reinterpret_cast<const camera_metadata_t*>(bytes),
                                              &size);
}

// The sample has 3 of 10 entries from 48 to 208, and 32 of 80 bytes of data from 208 to 288.
TEST(Validate, SaysOfEachDamageWhatADeviceSays) {
    const struct {
        const char* what;
        size_t offset;
        uint32_t value;
        int verdict;
    } cases[] = {
            {"size less than a header", 0, 47, 1},
            {"size too large", 0, 289, 1},
            {"more entries than capacity", 12, 11, 1},
            {"entry capacity overflows", 16, 0x10000000 + 10, 1},
            {"entry capacity within the data, as one byte each", 16, 160, 0},
            {"entries unaligned", 20, 50, 1},
            {"more data than capacity", 24, 88, 1},
            {"data in use that is no multiple of 8", 24, 36, 0},
            {"data capacity overflows", 28, 0xffffffff, 1},
            {"data starts in the entries", 32, 56, 1},
            {"data unaligned", 32, 212, 1},
            {"tag of another type", kFirstEntry, ANDROID_SENSOR_FRAME_DURATION, 1},
            {"tag that there is not", kFirstEntry, ANDROID_JPEG_END, 1},
            {"vendor's tag of any type", kFirstEntry, 0x80000001, 0},
            {"count overflows", kFirstEntry + 4, 0x20000000, 1},
            {"empty with data", kFirstEntry + kEntrySize + 4, 0, 1},
            {"offset overflows", kFirstEntry + 2 * kEntrySize + 8, 0xfffffff8, 1},
            {"data not in use", kFirstEntry + 2 * kEntrySize + 8, 72, 0},
            {"type not its tags", kFirstEntry + kEntrySize + 12, TYPE_FLOAT, 1},
            {"type unknown", kFirstEntry + kEntrySize + 12, NUM_TYPES, 1},
    };
    const std::vector<uint8_t> sound = BytesOf(MakeSampleBlock());
    for (const auto& damage : cases) {
        std::vector<uint8_t> bytes = sound;
        ASSERT_NE(FieldAt(bytes, damage.offset), damage.value) << damage.what;
        std::memcpy(bytes.data() + damage.offset, &damage.value, sizeof(damage.value));
        EXPECT_EQ(Validate(bytes.data(), bytes.size()), damage.verdict) << damage.what;
    }
    std::vector<uint8_t> shifted(1);
    shifted.insert(shifted.end(), sound.begin(), sound.end());
    EXPECT_EQ(Validate(shifted.data() + 1, sound.size()), CAMERA_METADATA_VALIDATION_SHIFTED);

    const Block block = MakeSampleBlock();
    const uint32_t capacity = 160;
    std::memcpy(reinterpret_cast<char*>(block.get()) + 16, &capacity, sizeof(capacity));
    for (int i = 3; i < 10; ++i) EXPECT_EQ(AddOrientation(block, i), 0);
    EXPECT_EQ(AddOrientation(block, 10), 1) << "room that is not there is not used";
}

}  // namespace
