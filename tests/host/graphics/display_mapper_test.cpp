// The plane-layout record of a buffer description.
#include <gtest/gtest.h>

#include <cstring>

#include "gralloc/zeldisplaymapper.h"

namespace mapper {
namespace {

using ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using MetadataType = vendor_zel_hardware_display_common_MetadataType;

constexpr auto kPlanes = VENDOR_ZEL_METADATA_PLANE_LAYOUTS;

BufferDescriptorInfo Describe(PixelFormat format, int32_t width, int32_t height) {
    BufferDescriptorInfo info;
    info.name.fill(0);
    info.width = width;
    info.height = height;
    info.layerCount = 1;
    info.format = format;
    return info;
}

TEST(DisplayMapper, TellsThePlanesOfABuffer) {
    PlaneLayoutRecord record;
    std::memset(&record, 0xee, sizeof(record));
    const BufferDescriptorInfo raw = Describe(PixelFormat::RAW10, 4096, 3072);
    ASSERT_EQ(GetFromBufferDescriptor(raw, kPlanes, &record, false), 0);
    EXPECT_EQ(record.numPlanes, 1);
    EXPECT_EQ(record.planes[0].components[0].type, 0x100000u);
    EXPECT_EQ(record.planes[0].numComponents, 1);
    EXPECT_EQ(record.planes[0].sampleIncrementBits, 10);
    EXPECT_EQ(record.planes[0].strideBytes, 5120);
    EXPECT_EQ(record.planes[1].strideBytes, 0) << "the rest is cleared";
    const BufferDescriptorInfo nv12 = Describe(PixelFormat::YCBCR_420_888, 4000, 3000);
    ASSERT_EQ(GetFromBufferDescriptor(nv12, kPlanes, &record, false), 0);
    EXPECT_EQ(record.planes[1].offset, 4096u * 3072u);
    EXPECT_EQ(record.planes[1].components[1].type, 4u);
}

TEST(DisplayMapper, ErrorsLeaveTheRecordAlone) {
    PlaneLayoutRecord untouched;
    std::memset(&untouched, 0xee, sizeof(untouched));
    PlaneLayoutRecord record = untouched;
    const auto error = [&](const BufferDescriptorInfo& info, int type) {
        return GetFromBufferDescriptor(info, static_cast<MetadataType>(type), &record, false);
    };
    const BufferDescriptorInfo good = Describe(PixelFormat::RAW10, 4096, 3072);
    EXPECT_EQ(error(good, 14), 7);
    EXPECT_EQ(error(Describe(PixelFormat::BLOB, 100, 1), kPlanes), 7);
    EXPECT_EQ(error(Describe(PixelFormat::RAW10, -4, 3072), kPlanes), 7);
    EXPECT_EQ(std::memcmp(&record, &untouched, sizeof(record)), 0);
    EXPECT_EQ(GetFromBufferDescriptor(good, kPlanes, nullptr, false), 3);
}

}  // namespace
}  // namespace mapper
