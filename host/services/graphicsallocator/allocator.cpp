// Allocates buffers, or misbehaves as it was told to.
#include "allocator.h"

#include <aidl/android/hardware/graphics/allocator/AllocationError.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <android/log.h>
#include <gralloctypes/Gralloc4.h>
#include <graphics/from_aidl.h>

namespace graphics {

namespace {

using ::aidl::android::hardware::graphics::allocator::AllocationError;
using ::android::hardware::graphics::mapper::V4_0::IMapper;
using ::ndk::ScopedAStatus;

AllocationError ToAllocationError(int error) {
    if (error == static_cast<int>(BufferError::kNoResources)) return AllocationError::NO_RESOURCES;
    if (error == static_cast<int>(BufferError::kUnsupported)) return AllocationError::UNSUPPORTED;
    return AllocationError::BAD_DESCRIPTOR;
}

// Hands `made` over, or logs why there is nothing.
ScopedAStatus Answer(base::Result<Allocator::AllocationResult> made,
                     Allocator::AllocationResult* result) {
    if (made.Ok()) {
        *result = std::move(made).Value();
        return ScopedAStatus::ok();
    }
    const char* const problem = made.Error().c_str();
    __android_log_print(ANDROID_LOG_ERROR, "GraphicsAllocator", "allocate: %s", problem);
    return ScopedAStatus::fromServiceSpecificErrorWithMessage(
            static_cast<int32_t>(ToAllocationError(made.GetFailure().code)), problem);
}

// The fault bad-handle: twice as many rows as there are.
void DoubleTheSize(native_handle_t* handle) {
    HandleIntegers integers;
    if (!ReadIntegers(handle, &integers)) return;
    integers.height *= 2;
    integers.size *= 2;
    WriteIntegers(integers, handle);
}

}  // namespace

services::FaultSet Allocator::Faults() {
    return {"Faults of the graphics allocator:\n",
            {{"allocate-error", "every allocation fails with \"no resources\""},
             {"allocate-none", "an allocation succeeds but brings no buffer"},
             {"allocate-two", "an allocation brings two buffers, whatever was asked for"},
             {"bad-handle", "the integers of a new buffer's handle state twice its size"}},
            true};
}

ScopedAStatus Allocator::allocate(const std::vector<uint8_t>& descriptor, int32_t count,
                                  AllocationResult* result) {
    IMapper::BufferDescriptorInfo info{};
    if (::android::gralloc4::decodeBufferDescriptorInfo(descriptor, &info) != ::android::NO_ERROR) {
        return Answer(Failed(BufferError::kBadDescriptor,
                             "the descriptor of " + std::to_string(descriptor.size()) +
                                     " bytes is not one that this device's mapper makes"),
                      result);
    }
    return Answer(Allocate({info.name, info.width, info.height, info.layerCount,
                            static_cast<int32_t>(info.format), info.usage, info.reservedSize},
                           count),
                  result);
}

ScopedAStatus Allocator::allocate2(const BufferDescriptorInfo& descriptor, int32_t count,
                                   AllocationResult* result) {
    if (!descriptor.additionalOptions.empty()) {
        return Answer(Failed(BufferError::kUnsupported,
                             "there are no additional options, such as " +
                                     descriptor.additionalOptions.front().name),
                      result);
    }
    return Answer(Allocate(FromAidl(descriptor), count), result);
}

ScopedAStatus Allocator::isSupported(const BufferDescriptorInfo& descriptor, bool* supported) {
    *supported = descriptor.additionalOptions.empty() && LayOut(FromAidl(descriptor)).Ok();
    return ScopedAStatus::ok();
}

ScopedAStatus Allocator::getIMapperLibrarySuffix(std::string* suffix) {
    *suffix = "zel";
    return ScopedAStatus::ok();
}

base::Result<Allocator::AllocationResult> Allocator::Allocate(const BufferDescription& description,
                                                              int32_t count) const {
    if (m_faults.Has("allocate-error")) {
        return Failed(BufferError::kNoResources, "fault allocate-error is switched on");
    }
    if (count < 1) {
        return Failed(BufferError::kBadDescriptor,
                      std::to_string(count) + " buffers: ask for at least one");
    }
    if (count > kMaxCount) {
        return Failed(BufferError::kNoResources, std::to_string(count) +
                                                         " buffers: ask for at most " +
                                                         std::to_string(kMaxCount) + " at a time");
    }
    const base::Result<BufferLayout> layout = LayOut(description);
    if (!layout.Ok()) return layout.GetFailure();
    if (m_faults.Has("allocate-none")) count = 0;
    if (m_faults.Has("allocate-two")) count = 2;

    AllocationResult made;
    made.stride = static_cast<int32_t>(layout.Value().stride);
    for (int32_t i = 0; i < count; ++i) {
        base::Result<UniqueHandle> created = CreateBuffer(description);
        if (!created.Ok()) return created.GetFailure();
        UniqueHandle handle = std::move(created).Value();
        if (m_faults.Has("bad-handle")) DoubleTheSize(handle.get());
        made.buffers.push_back(::android::makeToAidl(handle.get()));
        native_handle_delete(handle.release());  // its descriptor has gone to `made`
    }
    return made;
}

}  // namespace graphics
