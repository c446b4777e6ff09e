// Decoding of bytes that nobody encoded: never a read outside, never a huge allocation.
#include <gtest/gtest.h>

#include "tests/host/libgralloctypes/sample_layouts.h"

namespace {

using namespace ::android::gralloc4;
using ::android::BAD_VALUE;
using ::android::NO_ERROR;
using ::android::hardware::graphics::mapper::V4_0::IMapper;

// The first `size` bytes, in storage of exactly that size: a sanitizer sees any read behind it.
Bytes firstBytes(const Bytes& bytes, size_t size) {
    return Bytes(bytes.begin(), bytes.begin() + size);
}

Bytes withTrailingByte(const Bytes& bytes) {
    Bytes longer = bytes;
    longer.resize(bytes.size() + 1);
    return longer;
}

TEST(Decode, EveryTruncationIsRefusedAndWritesNothing) {
    Bytes bytes;
    ASSERT_EQ(encodePlaneLayouts(sampleLayouts(), &bytes), NO_ERROR);
    for (size_t size = 0; size < bytes.size(); ++size) {
        std::vector<PlaneLayout> planes(7);
        ASSERT_EQ(decodePlaneLayouts(firstBytes(bytes, size), &planes), BAD_VALUE) << size;
        ASSERT_EQ(planes.size(), 7u) << size;
    }
    IMapper::BufferDescriptorInfo info{};
    info.name = "name";
    ASSERT_EQ(encodeBufferDescriptorInfo(info, &bytes), NO_ERROR);
    for (size_t size = 0; size < bytes.size(); ++size) {
        IMapper::BufferDescriptorInfo out{};
        out.width = 7;
        ASSERT_EQ(decodeBufferDescriptorInfo(firstBytes(bytes, size), &out), BAD_VALUE) << size;
        ASSERT_EQ(out.width, 7u) << size;
    }
}

TEST(Decode, TrailingBytesAreRefusedAfterTheValueWasWritten) {
    Bytes bytes;
    uint64_t width = 0;
    ASSERT_EQ(encodeWidth(640, &bytes), NO_ERROR);
    EXPECT_EQ(decodeWidth(withTrailingByte(bytes), &width), BAD_VALUE);
    EXPECT_EQ(width, 640u);
    IMapper::BufferDescriptorInfo info{};
    info.width = 9;
    IMapper::BufferDescriptorInfo out{};
    ASSERT_EQ(encodeBufferDescriptorInfo(info, &bytes), NO_ERROR);
    EXPECT_EQ(decodeBufferDescriptorInfo(withTrailingByte(bytes), &out), BAD_VALUE);
    EXPECT_EQ(out.width, 9u);
}

TEST(Decode, AnotherTypeIsRefused) {
    Bytes bytes;
    uint64_t value = 1;
    ASSERT_EQ(encodeWidth(640, &bytes), NO_ERROR);
    EXPECT_EQ(decodeHeight(bytes, &value), BAD_VALUE);
    bytes[8] = 'A';  // the first letter of the type's name
    EXPECT_EQ(decodeWidth(bytes, &value), BAD_VALUE);
    EXPECT_EQ(value, 1u);
    // A name that only starts like the right one.
    const Bytes longerName = HandWritten()
                                     .text("android.hardware.graphics.common.StandardMetadataType2")
                                     .number<int64_t>(3)
                                     .number<uint64_t>(640);
    EXPECT_EQ(decodeWidth(longerName, &value), BAD_VALUE);
}

TEST(Decode, ImpossibleCountsAreRefusedBeforeAnyAllocation) {
    const int64_t counts[] = {-1, INT64_MIN, INT64_MAX, int64_t{1} << 40, INT64_MAX / 72 + 1, 2};
    for (const int64_t count : counts) {
        HandWritten planes;
        planes.standardHeader(15).number(count);
        for (int i = 0; i < 9; ++i) planes.number<int64_t>(0);  // one plane without components
        std::vector<PlaneLayout> out;
        EXPECT_EQ(decodePlaneLayouts(planes, &out), BAD_VALUE) << count;

        HandWritten components;
        components.standardHeader(15).number<int64_t>(1).number(count);
        for (int i = 0; i < 8; ++i) components.number<int64_t>(0);
        EXPECT_EQ(decodePlaneLayouts(components, &out), BAD_VALUE) << count;

        HandWritten name;
        name.standardHeader(2).number(count).number<uint8_t>('a');
        std::string text;
        EXPECT_EQ(decodeName(name, &text), BAD_VALUE) << count;
    }
}

TEST(Decode, AnyDamagedByteIsHarmless) {
    Bytes sound;
    ASSERT_EQ(encodePlaneLayouts(sampleLayouts(), &sound), NO_ERROR);
    for (size_t i = 0; i < sound.size(); ++i) {
        Bytes damaged = sound;
        damaged[i] ^= 0xff;
        std::vector<PlaneLayout> planes;
        if (decodePlaneLayouts(damaged, &planes) != NO_ERROR) continue;
        // What is accepted says all that the bytes say.
        Bytes again;
        ASSERT_EQ(encodePlaneLayouts(planes, &again), NO_ERROR);
        ASSERT_EQ(again, damaged) << "byte " << i;
    }
}

}  // namespace
