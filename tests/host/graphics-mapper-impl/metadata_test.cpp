// Metadata: what the platform's decoders make of it.
#include "host/graphics-mapper-impl/metadata.h"

#include <gralloctypes/Gralloc4.h>
#include <gtest/gtest.h>

#include <cstring>

#include "tests/host/graphics-core/buffers.h"

namespace graphics {
namespace {

namespace gralloc4 = ::android::gralloc4;
using HidlFormat = ::android::hardware::graphics::common::V1_2::PixelFormat;

BufferInfo infoOf(int32_t format, uint32_t width, uint32_t height) {
    BufferInfo info;
    info.description = describe(format, width, height);
    info.description.name = "frame";
    info.id = 4711;
    EXPECT_TRUE(layOut(info.description, &info.layout).ok());
    return info;
}

template <typename T>
T decoded(const BufferInfo& info, const MetadataType& type,
          ::android::status_t (*decode)(const MetadataBytes&, T*)) {
    MetadataBytes bytes;
    T value{};
    const Outcome outcome = encodeMetadata(info, true, type, &bytes);
    EXPECT_TRUE(outcome.ok()) << outcome.reason;
    EXPECT_EQ(decode(bytes, &value), ::android::NO_ERROR);
    return value;
}

TEST(Metadata, TellsWhatABufferIs) {
    const BufferInfo info = infoOf(kFormatYcbcr420, 4000, 3000);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_BufferId, gralloc4::decodeBufferId), 4711u);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_Width, gralloc4::decodeWidth), 4000u);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_AllocationSize, gralloc4::decodeAllocationSize),
              18'874'368u);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_PixelFormatRequested,
                      gralloc4::decodePixelFormatRequested),
              HidlFormat::YCBCR_420_888);
    const auto crop = decoded(info, gralloc4::MetadataType_Crop, gralloc4::decodeCrop);
    ASSERT_EQ(crop.size(), 2u);
    EXPECT_EQ(crop[0].right, 4000);
    EXPECT_EQ(crop[1].bottom, 1500) << "in samples of the chroma plane";
}

TEST(Metadata, TellsThePlanes) {
    const auto planes = decoded(infoOf(kFormatYcbcr420, 4000, 3000),
                                gralloc4::MetadataType_PlaneLayouts, gralloc4::decodePlaneLayouts);
    ASSERT_EQ(planes.size(), 2u);
    EXPECT_EQ(planes[0].components.at(0).type, gralloc4::PlaneLayoutComponentType_Y);
    EXPECT_EQ(planes[0].strideInBytes, 4096);
    ASSERT_EQ(planes[1].components.size(), 2u);
    EXPECT_EQ(planes[1].components[1].offsetInBits, 8);
    EXPECT_EQ(planes[1].offsetInBytes, 4096 * 3072);

    const auto raw = decoded(infoOf(kFormatRaw10, 4096, 3072), gralloc4::MetadataType_PlaneLayouts,
                             gralloc4::decodePlaneLayouts);
    ASSERT_EQ(raw.size(), 1u);
    EXPECT_EQ(raw[0].components.at(0).type, gralloc4::PlaneLayoutComponentType_RAW);
    EXPECT_EQ(raw[0].sampleIncrementInBits, 10);
    EXPECT_TRUE(decoded(infoOf(kFormatBlob, 100, 1), gralloc4::MetadataType_PlaneLayouts,
                        gralloc4::decodePlaneLayouts)
                        .empty());
}

TEST(Metadata, EveryListedKindIsEncodedUnderItsOwnHeader) {
    for (const MetadataKind& kind : supportedMetadata()) {
        const auto value = static_cast<int64_t>(kind.type);
        MetadataBytes bytes;
        const BufferInfo info = infoOf(kFormatRaw10, 640, 480);
        ASSERT_TRUE(encodeMetadata(info, true, standardType(value), &bytes).ok()) << value;
        int64_t header = 0;
        ASSERT_GT(bytes.size(), 69u);
        std::memcpy(&header, bytes.data() + 61, sizeof(header));  // behind the name and its length
        EXPECT_EQ(header, value);
    }
}

TEST(Metadata, UnknownTypesAreUnsupported) {
    const BufferInfo info = infoOf(kFormatRaw10, 640, 480);
    MetadataBytes bytes;
    MetadataType vendors{};
    vendors.name = "vendor.Type";
    vendors.value = 3;
    for (const MetadataType& type : {vendors, MetadataType{}, standardType(0), standardType(24),
                                     gralloc4::MetadataType_Smpte2086}) {
        EXPECT_EQ(encodeMetadata(info, true, type, &bytes).error, BufferError::kUnsupported);
    }
    EXPECT_EQ(encodeMetadata(info, false, gralloc4::MetadataType_BufferId, &bytes).error,
              BufferError::kUnsupported)
            << "what is not allocated has no id";
    EXPECT_EQ(bytes.size(), 0u);
}

}  // namespace
}  // namespace graphics
