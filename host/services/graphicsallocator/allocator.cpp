// Allocates buffers, or misbehaves as it was told to.
#include "allocator.h"

#include <aidl/android/hardware/graphics/allocator/AllocationError.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <gralloctypes/Gralloc4.h>
#include <graphics/from_aidl.h>
#include <graphics/from_hidl.h>
#include <log_throttle.h>

namespace graphics {

namespace {

using ::aidl::android::hardware::graphics::allocator::AllocationError;
using ::android::hardware::graphics::mapper::V4_0::IMapper;
using ::ndk::ScopedAStatus;

AllocationError toAllocationError(int error) {
    if (error == static_cast<int>(BufferError::kNoResources)) return AllocationError::NO_RESOURCES;
    if (error == static_cast<int>(BufferError::kUnsupported)) return AllocationError::UNSUPPORTED;
    return AllocationError::BAD_DESCRIPTOR;
}

ScopedAStatus refuse(const base::Failure& failure) {
    static auto* const throttle = new standin_log::LogThrottle;
    if (throttle->mayWrite("GraphicsAllocator")) {
        __android_log_print(ANDROID_LOG_ERROR, "GraphicsAllocator", "allocate: %s",
                            failure.text.c_str());
    }
    return ScopedAStatus::fromServiceSpecificErrorWithMessage(
            static_cast<int32_t>(toAllocationError(failure.code)), failure.text.c_str());
}

base::Result<base::Done> checkCount(int32_t count) {
    if (count < 1) {
        return Failed(BufferError::kBadDescriptor,
                      std::to_string(count) + " buffers: ask for at least one");
    }
    if (count > Allocator::kMaxCount) {
        return Failed(BufferError::kNoResources,
                      std::to_string(count) + " buffers: ask for at most " +
                              std::to_string(Allocator::kMaxCount) + " at a time");
    }
    return base::Done{};
}

// Twice as many rows as there are.
void lie(native_handle_t* handle) {
    HandleIntegers integers;
    if (!ReadIntegers(handle, &integers)) return;
    integers.height *= 2;
    integers.size *= 2;
    WriteIntegers(integers, handle);
}

}  // namespace

ScopedAStatus Allocator::allocate(const std::vector<uint8_t>& descriptor, int32_t count,
                                  AllocationResult* result) {
    IMapper::BufferDescriptorInfo info{};
    if (::android::gralloc4::decodeBufferDescriptorInfo(descriptor, &info) != ::android::NO_ERROR) {
        return refuse(Failed(BufferError::kBadDescriptor,
                             "the descriptor of " + std::to_string(descriptor.size()) +
                                     " bytes is not one that this device's mapper makes"));
    }
    return allocateBuffers(FromHidl(info), count, result);
}

ScopedAStatus Allocator::allocate2(const BufferDescriptorInfo& descriptor, int32_t count,
                                   AllocationResult* result) {
    if (!descriptor.additionalOptions.empty()) {
        return refuse(Failed(BufferError::kUnsupported,
                             "there are no additional options, such as " +
                                     descriptor.additionalOptions.front().name));
    }
    return allocateBuffers(FromAidl(descriptor), count, result);
}

ScopedAStatus Allocator::isSupported(const BufferDescriptorInfo& descriptor, bool* supported) {
    *supported = descriptor.additionalOptions.empty() && LayOut(FromAidl(descriptor)).Ok();
    return ScopedAStatus::ok();
}

ScopedAStatus Allocator::getIMapperLibrarySuffix(std::string* suffix) {
    *suffix = "zel";
    return ScopedAStatus::ok();
}

ScopedAStatus Allocator::allocateBuffers(const BufferDescription& description, int32_t count,
                                         AllocationResult* result) const {
    if (mFault == AllocatorFault::kAllocateError) {
        return refuse(Failed(BufferError::kNoResources, "fault allocate-error is switched on"));
    }
    if (const auto checked = checkCount(count); !checked.Ok()) {
        return refuse(checked.GetFailure());
    }
    const base::Result<BufferLayout> layout = LayOut(description);
    if (!layout.Ok()) return refuse(layout.GetFailure());
    if (mFault == AllocatorFault::kAllocateNone) count = 0;
    if (mFault == AllocatorFault::kAllocateTwo) count = 2;

    AllocationResult made;
    made.stride = static_cast<int32_t>(layout.Value().stride);
    for (int32_t i = 0; i < count; ++i) {
        base::Result<UniqueHandle> created = CreateBuffer(description);
        if (!created.Ok()) return refuse(created.GetFailure());
        UniqueHandle handle = std::move(created).Value();
        if (mFault == AllocatorFault::kBadHandle) lie(handle.get());
        made.buffers.push_back(::android::makeToAidl(handle.get()));
        native_handle_delete(handle.release());  // its descriptor has gone to `made`
    }
    *result = std::move(made);
    return ScopedAStatus::ok();
}

}  // namespace graphics
