// Values of the platform's types that programs built for a device rely on.
#include <aidl/android/hardware/camera/device/Stream.h>
#include <aidl/android/hardware/camera/device/StreamBuffersVal.h>
#include <aidl/android/hardware/graphics/allocator/AllocationError.h>
#include <aidl/android/hardware/graphics/allocator/IAllocator.h>
#include <aidl/android/hardware/graphics/common/Dataspace.h>
#include <aidl/android/hardware/graphics/common/PlaneLayoutComponentType.h>
#include <aidl/android/hardware/graphics/common/StandardMetadataType.h>
#include <gtest/gtest.h>

namespace {

using namespace aidl::android::hardware::camera::device;
using namespace aidl::android::hardware::graphics::allocator;
using namespace aidl::android::hardware::graphics::common;

static_assert(static_cast<int>(PixelFormat::YV12) == 0x32315659);
static_assert(static_cast<int64_t>(BufferUsage::CPU_WRITE_OFTEN) == 48);
static_assert(static_cast<int64_t>(BufferUsage::FRONT_BUFFER) == 4294967296);
static_assert(static_cast<int64_t>(BufferUsage::VENDOR_MASK) == -268435456);
static_assert(static_cast<int64_t>(BufferUsage::VENDOR_MASK_HI) == -281474976710656);
static_assert(static_cast<int64_t>(PlaneLayoutComponentType::A) == 1 << 30);
static_assert(static_cast<int64_t>(StandardMetadataType::STRIDE) == 23);
static_assert(static_cast<int>(AllocationError::UNSUPPORTED) == 2);

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
}

TEST(PlatformTypesTest, FieldsStartAsOnADevice) {
    EXPECT_EQ(static_cast<int64_t>(Stream().dynamicRangeProfile), 0) << "not STANDARD, which is 1";
    EXPECT_EQ(StreamBuffersVal().get<StreamBuffersVal::error>(),
              StreamBufferRequestError::UNKNOWN_ERROR);
    EXPECT_EQ(sizeof(BufferDescriptorInfo().name), 128u);
}

TEST(PlatformTypesTest, AllocatorHasTheDevicesNameVersionHash) {
    EXPECT_STREQ(IAllocator::descriptor, "android.hardware.graphics.allocator.IAllocator");
    EXPECT_EQ(IAllocator::version, 2);
    EXPECT_EQ(IAllocator::hash, "9499fec09c544e9de5be3c87125721600f8ade66");
}

}  // namespace
