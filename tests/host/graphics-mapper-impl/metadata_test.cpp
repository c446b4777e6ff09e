// Metadata: what the platform's decoders make of it, for each format.
#include "host/graphics-mapper-impl/Metadata.h"

#include <gralloctypes/Gralloc4.h>
#include <gtest/gtest.h>

#include <set>

#include "tests/host/graphics-core/buffers.h"

namespace graphics {
namespace {

namespace gralloc4 = ::android::gralloc4;
using ::aidl::android::hardware::graphics::common::ExtendableType;
using ::aidl::android::hardware::graphics::common::PlaneLayout;
using ::aidl::android::hardware::graphics::common::Rect;
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

TEST(Metadata, TellsTheIntegersOfABuffer) {
    const BufferInfo info = infoOf(kFormatYcbcr420, 4000, 3000);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_BufferId, gralloc4::decodeBufferId), 4711u);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_Name, gralloc4::decodeName), "frame");
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_Width, gralloc4::decodeWidth), 4000u);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_Height, gralloc4::decodeHeight), 3000u);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_LayerCount, gralloc4::decodeLayerCount), 1u);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_Usage, gralloc4::decodeUsage), 3u);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_AllocationSize, gralloc4::decodeAllocationSize),
              18'874'368u);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_PixelFormatRequested,
                      gralloc4::decodePixelFormatRequested),
              HidlFormat::YCBCR_420_888);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_PixelFormatFourCC,
                      gralloc4::decodePixelFormatFourCC),
              0x3231564eu);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_ChromaSiting, gralloc4::decodeChromaSiting),
              gralloc4::ChromaSiting_SitedInterstitial);
    EXPECT_EQ(decoded(info, gralloc4::MetadataType_Compression, gralloc4::decodeCompression),
              gralloc4::Compression_None);
    uint32_t stride = 0;
    MetadataBytes bytes;
    ASSERT_TRUE(encodeMetadata(info, true, standardType(23), &bytes).ok());
    EXPECT_EQ(gralloc4::decodeUint32(standardType(23), bytes, &stride), ::android::NO_ERROR);
    EXPECT_EQ(stride, 4096u);
}

TEST(Metadata, TellsThePlanes) {
    const auto planes = decoded(infoOf(kFormatYcbcr420, 4000, 3000),
                                gralloc4::MetadataType_PlaneLayouts, gralloc4::decodePlaneLayouts);
    ASSERT_EQ(planes.size(), 2u);
    EXPECT_EQ(planes[0].components.at(0).type, gralloc4::PlaneLayoutComponentType_Y);
    EXPECT_EQ(planes[0].widthInSamples, 4000);
    EXPECT_EQ(planes[0].heightInSamples, 3000);
    EXPECT_EQ(planes[0].strideInBytes, 4096);
    EXPECT_EQ(planes[0].totalSizeInBytes, 4096 * 3072);
    const PlaneLayout& chroma = planes[1];
    ASSERT_EQ(chroma.components.size(), 2u);
    EXPECT_EQ(chroma.components[0].type, gralloc4::PlaneLayoutComponentType_CB);
    EXPECT_EQ(chroma.components[1].type, gralloc4::PlaneLayoutComponentType_CR);
    EXPECT_EQ(chroma.components[1].offsetInBits, 8);
    EXPECT_EQ(chroma.offsetInBytes, 4096 * 3072);
    EXPECT_EQ(chroma.sampleIncrementInBits, 16);
    EXPECT_EQ(chroma.widthInSamples, 2000);
    EXPECT_EQ(chroma.horizontalSubsampling, 2);
    EXPECT_EQ(chroma.verticalSubsampling, 2);

    const auto raw = decoded(infoOf(kFormatRaw10, 4096, 3072), gralloc4::MetadataType_PlaneLayouts,
                             gralloc4::decodePlaneLayouts);
    ASSERT_EQ(raw.size(), 1u);
    EXPECT_EQ(raw[0].components.at(0).type, gralloc4::PlaneLayoutComponentType_RAW);
    EXPECT_EQ(raw[0].components[0].sizeInBits, 10);
    EXPECT_EQ(raw[0].strideInBytes, 5120);

    EXPECT_TRUE(decoded(infoOf(kFormatBlob, 100, 1), gralloc4::MetadataType_PlaneLayouts,
                        gralloc4::decodePlaneLayouts)
                        .empty());
}

TEST(Metadata, CropIsThePictureInSamplesOfEachPlane) {
    const auto expectSizes = [](const BufferInfo& info, std::vector<std::pair<int, int>> sizes) {
        const std::vector<Rect> rects =
                decoded(info, gralloc4::MetadataType_Crop, gralloc4::decodeCrop);
        ASSERT_EQ(rects.size(), sizes.size());
        for (size_t i = 0; i < sizes.size(); ++i) {
            EXPECT_EQ(rects[i].left, 0);
            EXPECT_EQ(rects[i].top, 0);
            EXPECT_EQ(std::make_pair(rects[i].right, rects[i].bottom), sizes[i]);
        }
    };
    expectSizes(infoOf(kFormatYcbcr420, 641, 480), {{641, 480}, {321, 240}});
    expectSizes(infoOf(kFormatRaw10, 640, 480), {{640, 480}});
    expectSizes(infoOf(kFormatBlob, 24'000'000, 1), {{24'000'000, 1}});
}

TEST(Metadata, EveryListedKindIsEncodedUnderItsOwnHeader) {
    const BufferInfo info = infoOf(kFormatRaw10, 640, 480);
    std::set<int64_t> values;
    for (const MetadataKind& kind : supportedMetadata()) {
        const auto value = static_cast<int64_t>(kind.type);
        EXPECT_TRUE(values.insert(value).second) << value << " is listed twice";
        EXPECT_GT(strlen(kind.description), 0u);
        MetadataBytes bytes;
        ASSERT_TRUE(encodeMetadata(info, true, standardType(value), &bytes).ok()) << value;
        // Bytes of length, then of the name, then the value.
        int64_t header = 0;
        ASSERT_GE(bytes.size(), 69u);
        std::memcpy(&header, bytes.data() + 61, sizeof(header));
        EXPECT_EQ(header, value);
    }
    EXPECT_EQ(values.count(static_cast<int64_t>(gralloc4::MetadataType_AllocationSize.value)), 1u);
}

TEST(Metadata, UnknownTypesAreUnsupported) {
    const BufferInfo info = infoOf(kFormatRaw10, 640, 480);
    MetadataBytes bytes(3);
    MetadataType vendors{};
    vendors.name = "vendor.Type";
    vendors.value = 3;
    for (const MetadataType& type :
         {vendors, MetadataType{}, standardType(0), standardType(24), standardType(-1),
          gralloc4::MetadataType_Smpte2086, gralloc4::MetadataType_Smpte2094_40}) {
        EXPECT_EQ(encodeMetadata(info, true, type, &bytes).error, BufferError::kUnsupported)
                << type.value;
    }
    EXPECT_EQ(encodeMetadata(info, false, gralloc4::MetadataType_BufferId, &bytes).error,
              BufferError::kUnsupported)
            << "what is not allocated has no id";
    EXPECT_EQ(bytes.size(), 3u) << "written in spite of an error";
}

}  // namespace
}  // namespace graphics
