// The standard types and how they are told from others.
#include <gtest/gtest.h>

#include "tests/host/libgralloctypes/sample_layouts.h"

namespace {

using namespace ::android::gralloc4;
using ::aidl::android::hardware::graphics::common::ExtendableType;
using ::aidl::android::hardware::graphics::common::StandardMetadataType;

TEST(Constants, StandardMetadataTypes) {
    EXPECT_EQ(MetadataType_Smpte2094_10.value, 22);
    EXPECT_TRUE(isStandardMetadataType(MetadataType_Crop));
    EXPECT_EQ(getStandardMetadataTypeValue(MetadataType_Crop), StandardMetadataType::CROP);
    EXPECT_FALSE(isStandardMetadataType({"vendor.example", 16}));
}

TEST(Constants, ExtendableTypes) {
    EXPECT_TRUE(isStandardPlaneLayoutComponentType(PlaneLayoutComponentType_CB));
    EXPECT_FALSE(isStandardCompression(PlaneLayoutComponentType_CB));
    EXPECT_EQ(getPlaneLayoutComponentTypeName(PlaneLayoutComponentType_CB), "CB");
    EXPECT_EQ(getCompressionName(Compression_DisplayStreamCompression),
              "DISPLAY_STREAM_COMPRESSION");
    ExtendableType vendors;
    vendors.name = "vendor.example";
    vendors.value = 3;
    EXPECT_EQ(getChromaSitingName(vendors), "vendor.example 3");
}

}  // namespace
