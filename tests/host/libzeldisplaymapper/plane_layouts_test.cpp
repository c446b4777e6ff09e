// The plane-layout record, byte by byte where its reader depends on it.
#include <gtest/gtest.h>

#include <cstring>

#include "gralloc/zeldisplaymapper.h"

namespace mapper {
namespace {

using ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo;
using ::aidl::android::hardware::graphics::common::PixelFormat;

constexpr auto kPlanes = VENDOR_ZEL_METADATA_PLANE_LAYOUTS;

BufferDescriptorInfo describe(PixelFormat format, int32_t width, int32_t height) {
    BufferDescriptorInfo info;
    info.name.fill(0);
    info.width = width;
    info.height = height;
    info.layerCount = 1;
    info.format = format;
    return info;
}

PlaneLayoutRecord query(PixelFormat format, int32_t width, int32_t height) {
    PlaneLayoutRecord record;
    std::memset(&record, 0xee, sizeof(record));
    EXPECT_EQ(GetFromBufferDescriptor(describe(format, width, height), kPlanes, &record, false), 0);
    return record;
}

template <typename T>
T at(const PlaneLayoutRecord& record, size_t offset) {
    T value;
    std::memcpy(&value, reinterpret_cast<const char*>(&record) + offset, sizeof(value));
    return value;
}

TEST(DisplayMapper, RawPlane) {
    const PlaneLayoutRecord record = query(PixelFormat::RAW10, 4096, 3072);
    EXPECT_EQ(at<int32_t>(record, 736), 1);            // planes
    EXPECT_EQ(at<uint32_t>(record, 0), 0u);            // offset
    EXPECT_EQ(at<int32_t>(record, 4), 10);             // bits per sample
    EXPECT_EQ(at<uint32_t>(record, 8), 0x100000u);     // its component
    EXPECT_EQ(at<int32_t>(record, 68), 1);             // components
    EXPECT_EQ(at<int32_t>(record, 72), 5120);          // stride
    EXPECT_EQ(at<int32_t>(record, 76), 3072);          // scan lines
    EXPECT_EQ(at<uint32_t>(record, 80), 15'728'640u);  // bytes
    EXPECT_EQ(at<uint32_t>(record, 84), 1u);           // subsampling
    EXPECT_EQ(at<uint32_t>(record, 88), 1u);
    EXPECT_EQ(at<uint64_t>(record, 92), 0u) << "entries that are not used are zero";
}

TEST(DisplayMapper, LumaAndChromaPlanes) {
    const PlaneLayoutRecord record = query(PixelFormat::YCBCR_420_888, 4000, 3000);
    ASSERT_EQ(record.numPlanes, 2);
    EXPECT_EQ(record.planes[0].components[0].type, 1u);
    EXPECT_EQ(record.planes[0].scanlines, 3072);
    const PlaneEntry& chroma = record.planes[1];
    EXPECT_EQ(chroma.offset, 4096u * 3072u);
    EXPECT_EQ(chroma.numComponents, 2);
    EXPECT_EQ(chroma.components[0].type | chroma.components[1].type, 6u);
    EXPECT_EQ(chroma.sampleIncrementBits, 16);
    EXPECT_EQ(chroma.scanlines, 1536);
    EXPECT_EQ(chroma.horizontalSubsampling, 2u);
}

TEST(DisplayMapper, ErrorsLeaveTheRecordAlone) {
    PlaneLayoutRecord untouched;
    std::memset(&untouched, 0xee, sizeof(untouched));
    PlaneLayoutRecord record = untouched;
    const BufferDescriptorInfo good = describe(PixelFormat::RAW10, 4096, 3072);
    for (const int type : {0, 1, 14}) {
        EXPECT_NE(GetFromBufferDescriptor(
                          good, static_cast<vendor_zel_hardware_display_common_MetadataType>(type),
                          &record, false),
                  0);
    }
    for (const BufferDescriptorInfo& bad :
         {describe(PixelFormat::RAW_OPAQUE, 4096, 3072), describe(PixelFormat::RAW12, 4096, 3072),
          describe(PixelFormat::BLOB, 100, 1), describe(PixelFormat::RAW10, 0, 3072),
          describe(PixelFormat::RAW10, -4, 3072), describe(PixelFormat::RAW10, 4096, 1 << 30)}) {
        EXPECT_NE(GetFromBufferDescriptor(bad, kPlanes, &record, false), 0);
    }
    EXPECT_EQ(std::memcmp(&record, &untouched, sizeof(record)), 0);
    EXPECT_NE(GetFromBufferDescriptor(good, kPlanes, nullptr, false), 0);
}

}  // namespace
}  // namespace mapper
