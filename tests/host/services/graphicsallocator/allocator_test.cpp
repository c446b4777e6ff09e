// The allocator's service object.
#include "host/services/graphicsallocator/allocator.h"

#include <aidl/android/hardware/graphics/allocator/AllocationError.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace graphics {
namespace {

using ::aidl::android::hardware::graphics::allocator::AllocationError;
using ::aidl::android::hardware::graphics::common::PixelFormat;
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
    const auto allocator = ::ndk::SharedRefBase::make<Allocator>(faults);
    const auto status = allocator->allocate2(info, count, result);
    EXPECT_EQ(status.isOk(), std::string(status.getMessage()).empty()) << "the reason";
    return status.getServiceSpecificError();
}

const Info kNv12 = Describe(640, PixelFormat::YCBCR_420_888);

TEST(Allocator, AllocatesWhatAClientDescribes) {
    Result result;
    ASSERT_EQ(Allocate(kNv12, 3, &result), 0);
    EXPECT_EQ(result.stride, 640);
    ASSERT_EQ(result.buffers.size(), 3u);
    struct stat file = {};
    EXPECT_EQ(fstat(result.buffers[2].fds[0].get(), &file), 0);
    EXPECT_EQ(file.st_size, 491'520);
    EXPECT_NE(result.buffers[0].ints, result.buffers[1].ints) << "each has an id of its own";
    // RAW10 rows are told in bytes: source files are padded to them.
    ASSERT_EQ(Allocate(Describe(4096, PixelFormat::RAW10), 1, &result), 0);
    EXPECT_EQ(result.stride, 5120);
    EXPECT_EQ(Allocate(kNv12, 1, &result, "allocate-none"), 0);
    EXPECT_EQ(result.buffers.size(), 0u);
    EXPECT_EQ(Allocate(kNv12, 1, &result, "allocate-two"), 0);
    EXPECT_EQ(result.buffers.size(), 2u);
}

TEST(Allocator, RefusesBadRequestsWithAReason) {
    Info options = kNv12;
    options.additionalOptions.resize(1);
    const Info empty = Describe(0, PixelFormat::YCBCR_420_888);
    const Info rgb = Describe(640, PixelFormat::RGBA_8888);
    const struct {
        const Info& info;
        int32_t count;
        const char* fault;
        AllocationError error;
    } cases[] = {{empty, 1, nullptr, AllocationError::BAD_DESCRIPTOR},
                 {rgb, 1, nullptr, AllocationError::UNSUPPORTED},
                 {options, 1, nullptr, AllocationError::UNSUPPORTED},
                 {kNv12, 0, nullptr, AllocationError::BAD_DESCRIPTOR},
                 {kNv12, 65, nullptr, AllocationError::NO_RESOURCES},
                 {kNv12, 1, "allocate-error", AllocationError::NO_RESOURCES}};
    for (const auto& [info, count, fault, error] : cases) {
        Result result;
        EXPECT_EQ(Allocate(info, count, &result, fault), static_cast<int32_t>(error));
        EXPECT_EQ(result.buffers.size(), 0u);
    }
    Result result;
    const auto status = ::ndk::SharedRefBase::make<Allocator>()->allocate({1, 2, 3}, 1, &result);
    EXPECT_EQ(status.getServiceSpecificError(),
              static_cast<int32_t>(AllocationError::BAD_DESCRIPTOR));
}

}  // namespace
}  // namespace graphics
