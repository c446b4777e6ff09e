// The allocator's service object, found by name in this process.
#include "host/services/graphicsallocator/allocator.h"

#include <aidl/android/hardware/graphics/allocator/AllocationError.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <android/binder_manager.h>
#include <gralloctypes/Gralloc4.h>
#include <gtest/gtest.h>

#include <set>

#include "tests/host/graphics/buffers.h"

namespace graphics {
namespace {

using ::aidl::android::hardware::graphics::allocator::AllocationError;
using ::aidl::android::hardware::graphics::allocator::AllocationResult;
using ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo;
using ::aidl::android::hardware::graphics::allocator::IAllocator;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using ::android::hardware::hidl_vec;
using ::android::hardware::graphics::mapper::V4_0::IMapper;

std::shared_ptr<IAllocator> startAllocator() {
    const auto allocator = ::ndk::SharedRefBase::make<Allocator>();
    EXPECT_EQ(AServiceManager_addService(allocator->asBinder().get(), Allocator::kInstance),
              EX_NONE);
    return IAllocator::fromBinder(
            ::ndk::SpAIBinder(AServiceManager_checkService(Allocator::kInstance)));
}

// What a mapper encodes for a 640 x 480 NV12 buffer.
std::vector<uint8_t> descriptor(uint32_t width = 640, int32_t format = kFormatYcbcr420) {
    IMapper::BufferDescriptorInfo info{};
    info.width = width;
    info.height = 480;
    info.layerCount = 1;
    info.format = static_cast<::android::hardware::graphics::common::V1_2::PixelFormat>(format);
    info.usage = 3;
    hidl_vec<uint8_t> bytes;
    EXPECT_EQ(::android::gralloc4::encodeBufferDescriptorInfo(info, &bytes), ::android::NO_ERROR);
    return bytes;
}

BufferDescriptorInfo jpegInfo() {
    BufferDescriptorInfo info;
    info.name.fill(0);
    info.name[0] = 'j';
    info.width = 24'000'000;
    info.height = 1;
    info.layerCount = 1;
    info.format = PixelFormat::BLOB;
    return info;
}

// What an importer makes of one allocated buffer.
BufferError check(const ::aidl::android::hardware::common::NativeHandle& buffer, BufferInfo* info) {
    native_handle_t* raw = ::android::makeFromAidl(buffer);
    const auto copy = DuplicateBuffer(raw);
    if (copy.Ok()) *info = copy.Value().info;
    native_handle_delete(raw);
    return ErrorOf(copy);
}

void expectError(const ::ndk::ScopedAStatus& status, AllocationError error) {
    EXPECT_EQ(status.getExceptionCode(), EX_SERVICE_SPECIFIC);
    EXPECT_EQ(status.getServiceSpecificError(), static_cast<int32_t>(error));
    EXPECT_STRNE(status.getMessage(), "") << "no reason given";
}

TEST(Allocator, AllocatesWhatAMapperDescribes) {
    const auto allocator = startAllocator();
    ASSERT_NE(allocator, nullptr);
    AllocationResult result;
    ASSERT_TRUE(allocator->allocate(descriptor(), 1, &result).isOk());
    EXPECT_EQ(result.stride, 640);
    ASSERT_EQ(result.buffers.size(), 1u);
    BufferInfo info;
    EXPECT_EQ(check(result.buffers[0], &info), BufferError::kNone);
    EXPECT_EQ(info.description.width, 640u);
    EXPECT_EQ(info.layout.size, 491'520u);

    // RAW10 rows are told in bytes: source files are padded to them.
    ASSERT_TRUE(allocator->allocate(descriptor(4096, kFormatRaw10), 1, &result).isOk());
    EXPECT_EQ(result.stride, 5120);
}

TEST(Allocator, AllocatesWhatAClientDescribes) {
    const auto allocator = startAllocator();
    AllocationResult result;
    ASSERT_TRUE(allocator->allocate2(jpegInfo(), 3, &result).isOk());
    ASSERT_EQ(result.buffers.size(), 3u);
    std::set<std::vector<int32_t>> handles;  // with the buffers' ids
    for (const auto& buffer : result.buffers) {
        BufferInfo info;
        EXPECT_EQ(check(buffer, &info), BufferError::kNone);
        EXPECT_EQ(info.description.name, "j");
        EXPECT_EQ(info.layout.size, 24'000'000u);
        handles.insert(buffer.ints);
    }
    EXPECT_EQ(handles.size(), 3u);
    std::string suffix;
    EXPECT_TRUE(allocator->getIMapperLibrarySuffix(&suffix).isOk());
    EXPECT_EQ(suffix, "zel");
}

TEST(Allocator, RefusesBadRequestsWithAReason) {
    const auto allocator = startAllocator();
    AllocationResult result;
    result.stride = 4711;
    std::vector<uint8_t> cut = descriptor();
    cut.pop_back();
    std::vector<uint8_t> longer = descriptor();
    longer.push_back(0);
    for (const std::vector<uint8_t>& bytes :
         {std::vector<uint8_t>(), cut, longer, std::vector<uint8_t>(48, 0xff), descriptor(0)}) {
        expectError(allocator->allocate(bytes, 1, &result), AllocationError::BAD_DESCRIPTOR);
    }
    expectError(allocator->allocate(descriptor(640, 1), 1, &result), AllocationError::UNSUPPORTED);
    expectError(allocator->allocate(descriptor(0xffffff80), 1, &result),
                AllocationError::UNSUPPORTED);
    expectError(allocator->allocate(descriptor(), 0, &result), AllocationError::BAD_DESCRIPTOR);
    expectError(allocator->allocate(descriptor(), -1, &result), AllocationError::BAD_DESCRIPTOR);
    expectError(allocator->allocate(descriptor(), Allocator::kMaxCount + 1, &result),
                AllocationError::NO_RESOURCES);

    BufferDescriptorInfo negative = jpegInfo();
    negative.width = -1;
    expectError(allocator->allocate2(negative, 1, &result), AllocationError::UNSUPPORTED);
    BufferDescriptorInfo named = jpegInfo();
    named.name.fill('n');
    expectError(allocator->allocate2(named, 1, &result), AllocationError::BAD_DESCRIPTOR);
    BufferDescriptorInfo options = jpegInfo();
    options.additionalOptions.resize(1);
    expectError(allocator->allocate2(options, 1, &result), AllocationError::UNSUPPORTED);
    EXPECT_EQ(result.stride, 4711) << "written in spite of an error";
}

}  // namespace
}  // namespace graphics
