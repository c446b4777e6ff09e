// The platform's types: values that programs built for a device rely on; with them, how enums and
// unions behave.
#include <aidl/android/hardware/camera/device/NotifyMsg.h>
#include <aidl/android/hardware/camera/device/Stream.h>
#include <aidl/android/hardware/graphics/allocator/IAllocator.h>
#include <aidl/android/hardware/graphics/common/Dataspace.h>
#include <gtest/gtest.h>

#include "tests/host/aidlc/parcels.h"

namespace {

using namespace aidl::android::hardware::camera::device;
using namespace aidl::android::hardware::graphics::allocator;
using namespace aidl::android::hardware::graphics::common;

static_assert(static_cast<int64_t>(BufferUsage::VENDOR_MASK) == -268435456);
static_assert(static_cast<int64_t>(BufferUsage::VENDOR_MASK_HI) == -281474976710656);

static_assert(IAllocator::TRANSACTION_allocate2 == 2 && IAllocator::TRANSACTION_isSupported == 3 &&
              IAllocator::TRANSACTION_getIMapperLibrarySuffix == 4);

TEST(PlatformTypesTest, DataspacesAreMadeOfTheRightParts) {
    const std::pair<Dataspace, int32_t> values[] = {
            {Dataspace::SRGB, 142671872},           {Dataspace::JFIF, 0x8c20000},
            {Dataspace::BT601_625, 281149440},      {Dataspace::DISPLAY_P3, 143261696},
            {Dataspace::BT2020_ITU_HLG, 302383104}, {Dataspace::JPEG_R, 0x1005}};
    for (const auto& [dataspace, value] : values) {
        EXPECT_EQ(static_cast<int32_t>(dataspace), value) << toString(dataspace);
    }
    EXPECT_EQ(toString(Dataspace::DISPLAY_P3_LINEAR), "DCI_P3_LINEAR")
            << "of equal values the first name counts";
}

TEST(PlatformTypesTest, UnionsHoldOneMember) {
    const ShutterMsg shutter{0, 3, 0};
    NotifyMsg message = shutter;
    EXPECT_EQ(message.getTag(), NotifyMsg::shutter);
    EXPECT_EQ(message.toString(),
              "NotifyMsg{shutter: ShutterMsg{frameNumber: 0, timestamp: 3, readoutTimestamp: 0}}");
    EXPECT_LT(NotifyMsg(), message) << "members compare by tag first";
    EXPECT_EQ(Read(Words({2, 0}), &message), STATUS_BAD_VALUE);
    EXPECT_EQ(Read(Words({0, 0}), &message), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(message.get<NotifyMsg::shutter>(), shutter) << "a failed read leaves it as it was";
}

TEST(PlatformTypesTest, FieldsAndNamesAreTheDevices) {
    EXPECT_EQ(static_cast<int64_t>(Stream().dynamicRangeProfile), 0) << "not STANDARD, which is 1";
    EXPECT_STREQ(IAllocator::descriptor, "android.hardware.graphics.allocator.IAllocator");
    EXPECT_EQ(IAllocator::hash, "9499fec09c544e9de5be3c87125721600f8ade66");
}

}  // namespace
