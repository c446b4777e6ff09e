// Allocates buffers, or misbehaves as it was told to.
#include "allocator.h"

#include <aidl/android/hardware/graphics/allocator/AllocationError.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <android/log.h>
#include <gralloctypes/Gralloc4.h>
#include <graphics_core/from_aidl.h>
#include <graphics_core/from_hidl.h>

namespace graphics {

namespace {

using ::aidl::android::hardware::graphics::allocator::AllocationError;
using ::android::hardware::graphics::mapper::V4_0::IMapper;
using ::ndk::ScopedAStatus;

AllocationError ToAllocationError(BufferError error) {
    if (error == BufferError::kNoResources) return AllocationError::NO_RESOURCES;
    if (error == BufferError::kUnsupported) return AllocationError::UNSUPPORTED;
    return AllocationError::BAD_DESCRIPTOR;
}

ScopedAStatus Refuse(const Outcome& outcome) {
    __android_log_print(ANDROID_LOG_ERROR, "GraphicsAllocator", "allocate: %s",
                        outcome.reason.c_str());
    return ScopedAStatus::fromServiceSpecificErrorWithMessage(
            static_cast<int32_t>(ToAllocationError(outcome.error)), outcome.reason.c_str());
}

Outcome CheckCount(int32_t count) {
    if (count < 1) {
        return failure(BufferError::kBadDescriptor,
                       std::to_string(count) + " buffers: ask for at least one");
    }
    if (count > Allocator::kMaxCount) {
        return failure(BufferError::kNoResources,
                       std::to_string(count) + " buffers: ask for at most " +
                               std::to_string(Allocator::kMaxCount) + " at a time");
    }
    return {};
}

// The fault bad-handle: twice as many rows as there are.
void DoubleTheSize(native_handle_t* handle) {
    HandleIntegers integers;
    if (!readIntegers(handle, &integers)) return;
    integers.height *= 2;
    integers.size *= 2;
    writeIntegers(integers, handle);
}

}  // namespace

services::FaultSet Allocator::Faults() {
    return {"Faults of the graphics allocator:\n",
            {{"allocate-error", "every allocation fails with \"no resources\""},
             {"allocate-none", "an allocation succeeds but brings no buffer"},
             {"allocate-two", "an allocation brings two buffers, whatever was asked for"},
             {"bad-handle", "the integers of a new buffer's handle state twice its size"}}};
}

ScopedAStatus Allocator::allocate(const std::vector<uint8_t>& descriptor, int32_t count,
                                  AllocationResult* result) {
    IMapper::BufferDescriptorInfo info{};
    if (::android::gralloc4::decodeBufferDescriptorInfo(descriptor, &info) != ::android::NO_ERROR) {
        return Refuse(failure(BufferError::kBadDescriptor,
                              "the descriptor of " + std::to_string(descriptor.size()) +
                                      " bytes is not one that this device's mapper makes"));
    }
    return AllocateBuffers(fromHidl(info), count, result);
}

ScopedAStatus Allocator::allocate2(const BufferDescriptorInfo& descriptor, int32_t count,
                                   AllocationResult* result) {
    if (!descriptor.additionalOptions.empty()) {
        return Refuse(failure(BufferError::kUnsupported,
                              "there are no additional options, such as " +
                                      descriptor.additionalOptions.front().name));
    }
    return AllocateBuffers(fromAidl(descriptor), count, result);
}

ScopedAStatus Allocator::isSupported(const BufferDescriptorInfo& descriptor, bool* supported) {
    BufferLayout layout;
    *supported = descriptor.additionalOptions.empty() && layOut(fromAidl(descriptor), &layout).ok();
    return ScopedAStatus::ok();
}

ScopedAStatus Allocator::getIMapperLibrarySuffix(std::string* suffix) {
    *suffix = "zel";
    return ScopedAStatus::ok();
}

ScopedAStatus Allocator::AllocateBuffers(const BufferDescription& description, int32_t count,
                                         AllocationResult* result) const {
    if (m_faults.Has("allocate-error")) {
        return Refuse(failure(BufferError::kNoResources, "fault allocate-error is switched on"));
    }
    if (const Outcome checked = CheckCount(count); !checked.ok()) return Refuse(checked);
    BufferLayout layout;
    if (const Outcome laidOut = layOut(description, &layout); !laidOut.ok()) {
        return Refuse(laidOut);
    }
    if (m_faults.Has("allocate-none")) count = 0;
    if (m_faults.Has("allocate-two")) count = 2;

    AllocationResult made;
    made.stride = static_cast<int32_t>(layout.stride);
    for (int32_t i = 0; i < count; ++i) {
        UniqueHandle handle;
        if (const Outcome created = createBuffer(description, &handle); !created.ok()) {
            return Refuse(created);
        }
        if (m_faults.Has("bad-handle")) DoubleTheSize(handle.get());
        made.buffers.push_back(::android::makeToAidl(handle.get()));
        native_handle_delete(handle.release());  // its descriptor has gone to `made`
    }
    *result = std::move(made);
    return ScopedAStatus::ok();
}

}  // namespace graphics
