// The allocator's service object.
#include "host/services/graphicsallocator/allocator.h"

#include <aidl/android/hardware/graphics/allocator/AllocationError.h>
#include <gralloctypes/Gralloc4.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace graphics {
namespace {

using ::aidl::android::hardware::graphics::allocator::AllocationError;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using ::android::hardware::graphics::mapper::V4_0::IMapper;
using Result = Allocator::AllocationResult;
using Info = Allocator::BufferDescriptorInfo;

// A buffer of `width` x 480.
Info Describe(int32_t width, PixelFormat format) {
    Info info;
    info.name.fill(0);
    info.width = width;
    info.height = 480;
    info.layerCount = 1;
    info.format = format;
    return info;
}

// Asks an allocator that has this fault, if any. Returns the error's code, 0 for none.
int32_t Allocate(const Info& info, int32_t count, Result* result, const char* fault = nullptr) {
    services::FaultSet faults = Allocator::Faults();
    if (fault != nullptr) EXPECT_TRUE(faults.Add(fault).Ok()) << fault;
    const auto status =
            ::ndk::SharedRefBase::make<Allocator>(faults)->allocate2(info, count, result);
    EXPECT_EQ(status.isOk(), std::string(status.getMessage()).empty()) << "the reason";
    return status.getServiceSpecificError();
}

int32_t Code(AllocationError error) {
    return static_cast<int32_t>(error);
}

off_t SizeOf(const ::aidl::android::hardware::common::NativeHandle& buffer) {
    struct stat file = {};
    EXPECT_EQ(fstat(buffer.fds[0].get(), &file), 0);
    return file.st_size;
}

const Info kNv12 = Describe(640, PixelFormat::YCBCR_420_888);

TEST(Allocator, AllocatesWhatAClientDescribes) {
    Result result;
    ASSERT_EQ(Allocate(kNv12, 3, &result), 0);
    EXPECT_EQ(result.stride, 640);
    ASSERT_EQ(result.buffers.size(), 3u);
    EXPECT_EQ(SizeOf(result.buffers[2]), 491'520);
    EXPECT_NE(result.buffers[0].ints, result.buffers[1].ints) << "each has an id of its own";
    // RAW10 rows are told in bytes: source files are padded to them.
    ASSERT_EQ(Allocate(Describe(4096, PixelFormat::RAW10), 1, &result), 0);
    EXPECT_EQ(result.stride, 5120);
}

TEST(Allocator, AllocatesWhatAMapperEncodes) {
    IMapper::BufferDescriptorInfo info{};
    info.width = 24'000'000;
    info.height = 1;
    info.layerCount = 1;
    info.format = ::android::hardware::graphics::common::V1_2::PixelFormat::BLOB;
    ::android::hardware::hidl_vec<uint8_t> encoded;
    ASSERT_EQ(::android::gralloc4::encodeBufferDescriptorInfo(info, &encoded), 0);
    std::vector<uint8_t> bytes = encoded;
    const auto allocator = ::ndk::SharedRefBase::make<Allocator>();
    Result result;
    ASSERT_TRUE(allocator->allocate(bytes, 1, &result).isOk());
    EXPECT_EQ(SizeOf(result.buffers[0]), 24'000'000);
    bytes.pop_back();
    EXPECT_EQ(allocator->allocate(bytes, 1, &result).getServiceSpecificError(),
              Code(AllocationError::BAD_DESCRIPTOR));
}

TEST(Allocator, RefusesBadRequestsWithAReason) {
    Result result;
    result.stride = 4711;
    Info options = kNv12;
    options.additionalOptions.resize(1);
    const Info empty = Describe(0, PixelFormat::YCBCR_420_888);
    const Info rgb = Describe(640, PixelFormat::RGBA_8888);
    EXPECT_EQ(Allocate(empty, 1, &result), Code(AllocationError::BAD_DESCRIPTOR));
    EXPECT_EQ(Allocate(rgb, 1, &result), Code(AllocationError::UNSUPPORTED));
    EXPECT_EQ(Allocate(options, 1, &result), Code(AllocationError::UNSUPPORTED));
    EXPECT_EQ(Allocate(kNv12, 0, &result), Code(AllocationError::BAD_DESCRIPTOR));
    EXPECT_EQ(Allocate(kNv12, 65, &result), Code(AllocationError::NO_RESOURCES));
    EXPECT_EQ(result.stride, 4711) << "written in spite of an error";
}

TEST(Allocator, MisbehavesOnDemand) {
    Result result;
    EXPECT_EQ(Allocate(kNv12, 1, &result, "allocate-error"), Code(AllocationError::NO_RESOURCES));
    EXPECT_EQ(Allocate(kNv12, 1, &result, "allocate-none"), 0);
    EXPECT_EQ(result.buffers.size(), 0u);
    EXPECT_EQ(Allocate(kNv12, 1, &result, "allocate-two"), 0);
    EXPECT_EQ(result.buffers.size(), 2u);
    EXPECT_EQ(Allocate(kNv12, 1, &result, "bad-handle"), 0);
    EXPECT_EQ(result.buffers[0].ints[2], 960) << "the height";
}

}  // namespace
}  // namespace graphics
