// The exact bytes of encoded metadata, and that they decode to what they were.
#include <gtest/gtest.h>

#include "tests/host/libgralloctypes/sample_layouts.h"

namespace {

using namespace ::android::gralloc4;
using namespace std::string_literals;
using ::aidl::android::hardware::graphics::common::BlendMode;
using ::aidl::android::hardware::graphics::common::Dataspace;
using ::aidl::android::hardware::graphics::common::Rect;
using ::android::NO_ERROR;
using ::android::hardware::graphics::common::V1_2::PixelFormat;
using ::android::hardware::graphics::mapper::V4_0::IMapper;

template <typename Encode, typename Value>
Bytes encoded(Encode encode, const Value& value) {
    Bytes bytes = {1, 2, 3};  // replaced
    EXPECT_EQ(encode(value, &bytes), NO_ERROR);
    return bytes;
}

TEST(Encoding, NumbersHaveTheWidthOfTheirType) {
    const auto header = [](int64_t type) { return HandWritten().standardHeader(type); };
    EXPECT_EQ(encoded(encodeAllocationSize, 18874368), header(10).number<uint64_t>(18874368));
    EXPECT_EQ(encoded(encodePixelFormatRequested, PixelFormat::RAW10),
              header(6).number<int32_t>(0x25));
    EXPECT_EQ(encoded(encodePixelFormatFourCC, 0x3231564e), header(7).number<uint32_t>(0x3231564e));
    EXPECT_EQ(encoded(encodeUsage, uint64_t{1} << 63), header(9).number(uint64_t{1} << 63));
    EXPECT_EQ(encoded(encodeDataspace, static_cast<Dataspace>(0x8C20000)),
              header(17).number<int32_t>(0x8C20000));
    EXPECT_EQ(encoded(encodeBlendMode, BlendMode::COVERAGE), header(18).number<int32_t>(3));
}

TEST(Encoding, TextAndExtendableTypes) {
    EXPECT_EQ(encoded(encodeName, "a\0b"s), HandWritten().standardHeader(2).text("a\0b"s));
    EXPECT_EQ(encoded(encodeChromaSiting, ChromaSiting_SitedInterstitial),
              HandWritten()
                      .standardHeader(14)
                      .text("android.hardware.graphics.common.ChromaSiting")
                      .number<int64_t>(2));
}

TEST(Encoding, PlaneLayouts) {
    HandWritten expected;
    const std::string component = "android.hardware.graphics.common.PlaneLayoutComponentType";
    expected.standardHeader(15).number<int64_t>(2);
    expected.number<int64_t>(1).text(component).number<int64_t>(1).number<int64_t>(0);
    expected.number<int64_t>(8);
    for (const int64_t value : {0, 8, 640, 640, 480, 640 * 512, 1, 1}) expected.number(value);
    expected.number<int64_t>(2).text(component).number<int64_t>(2).number<int64_t>(0);
    expected.number<int64_t>(8);
    expected.text(component).number<int64_t>(4).number<int64_t>(8).number<int64_t>(8);
    for (const int64_t value : {640 * 512, 16, 640, 320, 240, 640 * 256, 2, 2}) {
        expected.number(value);
    }

    Bytes bytes = encoded(encodePlaneLayouts, sampleLayouts());
    EXPECT_EQ(bytes, expected);

    std::vector<PlaneLayout> planes;
    ASSERT_EQ(decodePlaneLayouts(bytes, &planes), NO_ERROR);
    EXPECT_EQ(planes, sampleLayouts());

    bytes = encoded(encodePlaneLayouts, std::vector<PlaneLayout>());
    EXPECT_EQ(decodePlaneLayouts(bytes, &planes), NO_ERROR);
    EXPECT_TRUE(planes.empty());
}

TEST(Encoding, Crop) {
    const Rect rect = {-1, 2, 640, 480};
    const Bytes bytes = encoded(encodeCrop, std::vector<Rect>{rect, Rect()});
    HandWritten expected;
    expected.standardHeader(16).number<int64_t>(2);
    for (const int32_t value : {-1, 2, 640, 480, 0, 0, 0, 0}) expected.number(value);
    EXPECT_EQ(bytes, expected);
    std::vector<Rect> crop;
    ASSERT_EQ(decodeCrop(bytes, &crop), NO_ERROR);
    EXPECT_EQ(crop, (std::vector<Rect>{rect, Rect()}));
}

TEST(Encoding, BufferDescriptorInfoHasNoHeader) {
    IMapper::BufferDescriptorInfo info{};
    info.name = "source";
    info.width = 4096;
    info.height = 3072;
    info.layerCount = 1;
    info.format = PixelFormat::RAW10;
    info.usage = 0x33;
    info.reservedSize = 64;
    const Bytes bytes = encoded(encodeBufferDescriptorInfo, info);
    HandWritten expected;
    expected.text("source");
    for (const uint32_t word : {4096, 3072, 1, 37}) expected.number(word);
    for (const uint64_t number : {0x33, 64}) expected.number(number);
    EXPECT_EQ(bytes, expected);
    IMapper::BufferDescriptorInfo decoded{};
    ASSERT_EQ(decodeBufferDescriptorInfo(bytes, &decoded), NO_ERROR);
    EXPECT_EQ(decoded.name, "source");
    EXPECT_EQ(decoded.height, 3072u);
    EXPECT_EQ(decoded.format, PixelFormat::RAW10);
    EXPECT_EQ(decoded.reservedSize, 64u);
}

TEST(Encoding, VendorMetadata) {
    const IMapper::MetadataType type = {"vendor.example", 5};
    Bytes bytes;
    ASSERT_EQ(encodeUint32(type, 7, &bytes), NO_ERROR);
    EXPECT_EQ(bytes, HandWritten().text("vendor.example").number<int64_t>(5).number(uint32_t{7}));
    uint32_t number = 0;
    EXPECT_EQ(decodeUint32(type, bytes, &number), NO_ERROR);
    EXPECT_EQ(number, 7u);
    EXPECT_FALSE(isStandardMetadataType(type));
    EXPECT_TRUE(isStandardMetadataType(MetadataType_Smpte2094_10));
    EXPECT_EQ(MetadataType_Smpte2094_10.value, 22);
}

}  // namespace
