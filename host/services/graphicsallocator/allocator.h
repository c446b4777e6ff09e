// The graphics allocator's service object.
#pragma once

#include <aidl/android/hardware/graphics/allocator/BnAllocator.h>
#include <graphics/buffer_handle.h>

#include <string>
#include <vector>

#include "fault_set.h"

namespace graphics {

// Makes buffers of graphics_core and keeps none: the caller owns what it gets. Errors are
// AllocationError codes with a reason: BAD_DESCRIPTOR for a malformed or contradictory request,
// UNSUPPORTED for one that cannot be served, NO_RESOURCES. Any thread.
class Allocator : public ::aidl::android::hardware::graphics::allocator::BnAllocator {
  public:
    using AllocationResult = ::aidl::android::hardware::graphics::allocator::AllocationResult;
    using BufferDescriptorInfo =
            ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo;

    // Buffers per call: their descriptors travel in one message.
    static constexpr int32_t kMaxCount = 64;

    // Ways in which it can misbehave on demand, all switched off.
    static services::FaultSet Faults();

    explicit Allocator(services::FaultSet faults = Faults()) : m_faults(std::move(faults)) {}

    // `descriptor`: what a mapper 4.0 of this device encodes.
    ::ndk::ScopedAStatus allocate(const std::vector<uint8_t>& descriptor, int32_t count,
                                  AllocationResult* result) override;
    ::ndk::ScopedAStatus allocate2(const BufferDescriptorInfo& descriptor, int32_t count,
                                   AllocationResult* result) override;
    ::ndk::ScopedAStatus isSupported(const BufferDescriptorInfo& descriptor,
                                     bool* supported) override;
    // "zel": clients open mapper.zel.so.
    ::ndk::ScopedAStatus getIMapperLibrarySuffix(std::string* suffix) override;

  private:
    base::Result<AllocationResult> Allocate(const BufferDescription& description,
                                            int32_t count) const;

    const services::FaultSet m_faults;
};

}  // namespace graphics
