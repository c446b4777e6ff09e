// Start-up of the two graphics back-ends: the buffer wrapper and the interface record.
#pragma once

#include <aidl/android/hardware/graphics/allocator/IAllocator.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <utils/StrongPointer.h>

#include <memory>

#include "offlinecameragrallocwrapper.h"
#include "offlinecamerazelinterface.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

// What the platform offers at start-up; each may be null.
struct GraphicsServices {
    ::android::sp<::android::hardware::graphics::mapper::V4_0::IMapper> mapper;
    std::shared_ptr<::aidl::android::hardware::graphics::allocator::IAllocator> allocator;
};

// Looks both services up without waiting for the allocator.
GraphicsServices ConnectGraphicsServices();

// The buffer wrapper over both services; null, without a log line, when either is missing.
std::unique_ptr<OfflineCameraGralloc> StartGrallocWrapper(const GraphicsServices& services);

// Fills a new record: the allocator, and the mapper of the library that the allocator names. After
// a failure, which is logged, both are null.
void StartZelInterface(
        const std::shared_ptr<::aidl::android::hardware::graphics::allocator::IAllocator>&
                allocator,
        OfflineCameraZelInterface* record);

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
