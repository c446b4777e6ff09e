// Sizes, offsets and values that programs built against a device's own headers rely on.
#include <aidl/android/hardware/camera/device/BufferCache.h>
#include <aidl/android/hardware/camera/device/BufferRequest.h>
#include <aidl/android/hardware/camera/device/CameraBlob.h>
#include <aidl/android/hardware/camera/device/CaptureResult.h>
#include <aidl/android/hardware/camera/device/NotifyMsg.h>
#include <aidl/android/hardware/camera/device/StreamBufferRet.h>
#include <aidl/android/hardware/camera/device/StreamConfiguration.h>
#include <aidl/android/hardware/graphics/allocator/AllocationError.h>
#include <aidl/android/hardware/graphics/allocator/IAllocator.h>
#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <aidl/android/hardware/graphics/common/PlaneLayoutComponentType.h>
#include <aidl/android/hardware/graphics/common/StandardMetadataType.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineBufferRequest.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineCaptureResult.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineRequestInfo.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineSessionConfigureInfo.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineStreamBufferRet.h>
#include <gtest/gtest.h>

namespace {

using namespace aidl::android::hardware::camera::device;
using namespace aidl::android::hardware::camera::metadata;
using namespace aidl::android::hardware::graphics::allocator;
using namespace aidl::android::hardware::graphics::common;
using namespace aidl::vendor::zel::hardware::camera::offlinecamera;
using aidl::android::hardware::common::NativeHandle;

static_assert(sizeof(Stream) == 120 && sizeof(StreamBuffer) == 168 && sizeof(NativeHandle) == 48);
static_assert(sizeof(ErrorMsg) == 12 && sizeof(ShutterMsg) == 24 && sizeof(NotifyMsg) == 32);
static_assert(sizeof(StreamBuffersVal) == 32 && sizeof(BufferRequest) == 8);
static_assert(sizeof(CameraBlob) == 8 && sizeof(CameraMetadata) == 24 && sizeof(BufferCache) == 16);
static_assert(sizeof(AllocationResult) == 32 && sizeof(BufferDescriptorInfo) == 184);
static_assert(sizeof(ExtendableType) == 32);
static_assert(sizeof(OfflineSessionConfigureInfo) == 80 && sizeof(OfflineFrameInfo) == 56);
static_assert(sizeof(OfflineRequestInfo) == 88 && sizeof(OfflineBufferRequest) == 128);
static_assert(sizeof(OfflineStreamBufferRet) == 152);

static_assert(std::is_copy_constructible_v<Stream> && std::is_copy_constructible_v<NotifyMsg> &&
              std::is_copy_constructible_v<BufferDescriptorInfo>);
// Growing a vector of handles moves them.
static_assert(std::is_nothrow_move_constructible_v<NativeHandle> &&
              std::is_nothrow_move_constructible_v<StreamBuffer>);

template <typename Record, typename Field>
size_t Offset(const Record& record, const Field& field) {
    return static_cast<size_t>(reinterpret_cast<const char*>(&field) -
                               reinterpret_cast<const char*>(&record));
}

TEST(LayoutTest, Offsets) {
    const BufferDescriptorInfo d;
    EXPECT_EQ(Offset(d, d.width), 128u);
    EXPECT_EQ(Offset(d, d.format), 140u);
    EXPECT_EQ(Offset(d, d.usage), 144u);
    EXPECT_EQ(Offset(d, d.reservedSize), 152u);
    EXPECT_EQ(Offset(d, d.additionalOptions), 160u);
}

TEST(LayoutTest, Defaults) {
    EXPECT_EQ(static_cast<int64_t>(Stream().dynamicRangeProfile), 0) << "not STANDARD, which is 1";
    EXPECT_EQ(StreamBuffersVal().get<StreamBuffersVal::error>(),
              StreamBufferRequestError::UNKNOWN_ERROR);
    EXPECT_EQ(NotifyMsg().get<NotifyMsg::error>(), ErrorMsg());
    EXPECT_EQ(BufferDescriptorInfo().name, (std::array<uint8_t, 128>{}));
}

static_assert(static_cast<int>(PixelFormat::YV12) == 0x32315659);
static_assert(static_cast<int64_t>(BufferUsage::CPU_WRITE_OFTEN) == 48);
static_assert(static_cast<int64_t>(BufferUsage::FRONT_BUFFER) == 4294967296);
static_assert(static_cast<int64_t>(BufferUsage::VENDOR_MASK) == -268435456);
static_assert(static_cast<int64_t>(BufferUsage::VENDOR_MASK_HI) == -281474976710656);
static_assert(static_cast<int64_t>(PlaneLayoutComponentType::A) == 1 << 30);
static_assert(static_cast<int64_t>(StandardMetadataType::STRIDE) == 23);
static_assert(static_cast<int>(AllocationError::UNSUPPORTED) == 2);

TEST(DataspaceTest, NamedValuesAreMadeOfTheRightParts) {
    const std::pair<Dataspace, int32_t> values[] = {
            {Dataspace::SRGB, 142671872},           {Dataspace::JFIF, 0x8c20000},
            {Dataspace::BT601_625, 281149440},      {Dataspace::DISPLAY_P3, 143261696},
            {Dataspace::BT2020_ITU_HLG, 302383104}, {Dataspace::JPEG_R, 0x1005}};
    for (const auto& [dataspace, value] : values) {
        EXPECT_EQ(static_cast<int32_t>(dataspace), value) << toString(dataspace);
    }
}

static_assert(IAllocator::TRANSACTION_allocate == 1 && IAllocator::TRANSACTION_allocate2 == 2 &&
              IAllocator::TRANSACTION_isSupported == 3 &&
              IAllocator::TRANSACTION_getIMapperLibrarySuffix == 4);

TEST(AllocatorTest, NameVersionHash) {
    EXPECT_STREQ(IAllocator::descriptor, "android.hardware.graphics.allocator.IAllocator");
    EXPECT_EQ(IAllocator::version, 2);
    EXPECT_EQ(IAllocator::hash, "9499fec09c544e9de5be3c87125721600f8ade66");
}

}  // namespace
