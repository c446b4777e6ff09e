// The allocator as a process: buffers that travel, and what it keeps of them.
#include <aidl/android/hardware/graphics/allocator/IAllocator.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <android/binder_manager.h>
#include <graphics_core/buffer_handle.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>

#include "tests/host/libbinder_ndk/test_bus.h"

namespace graphics {
namespace {

using ::aidl::android::hardware::graphics::allocator::AllocationResult;
using ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo;
using ::aidl::android::hardware::graphics::allocator::IAllocator;
using ::aidl::android::hardware::graphics::common::PixelFormat;

constexpr char kInstance[] = "android.hardware.graphics.allocator.IAllocator/default";

TEST(AllocatorProcess, BuffersTravelAndItKeepsNone) {
    busFolder();
    const Child process({ALLOCATOR_PROGRAM});
    const auto descriptors = [&] {
        const std::filesystem::directory_iterator folder("/proc/" + std::to_string(process.pid()) +
                                                         "/fd");
        return std::distance(begin(folder), end(folder));
    };
    std::shared_ptr<IAllocator> allocator;
    ASSERT_TRUE(eventually([&] {
        allocator =
                IAllocator::fromBinder(::ndk::SpAIBinder(AServiceManager_checkService(kInstance)));
        return allocator != nullptr;
    }));
    BufferDescriptorInfo info;
    info.name.fill(0);
    info.width = 640;
    info.height = 480;
    info.layerCount = 1;
    info.format = PixelFormat::YCBCR_420_888;
    AllocationResult result;
    ASSERT_TRUE(allocator->allocate2(info, 1, &result).isOk());
    // The reply may overtake the closing of what was sent.
    auto before = descriptors();
    ASSERT_TRUE(eventually([&] {
        const auto last = std::exchange(before, descriptors());
        return last == before;
    }));
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(allocator->allocate2(info, 64, &result).isOk());
        ASSERT_EQ(result.buffers.size(), 64u);
    }
    EXPECT_TRUE(eventually([&] { return descriptors() <= before; }))
            << descriptors() << " descriptors, " << before << " before";

    native_handle_t* raw = ::android::makeFromAidl(result.buffers[63]);
    UniqueHandle handle;
    BufferInfo imported;
    EXPECT_TRUE(duplicateBuffer(raw, &handle, &imported).ok());
    native_handle_delete(raw);
}

}  // namespace
}  // namespace graphics
