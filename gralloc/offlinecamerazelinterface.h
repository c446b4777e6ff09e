// The record of the vendor's graphics interfaces, and the plane-layout query that it gates.
#pragma once

#include <aidl/android/hardware/graphics/allocator/IAllocator.h>
#include <aidl/android/hardware/graphics/common/BufferUsage.h>
#include <aidl/android/hardware/graphics/common/PixelFormat.h>
#include <android/hardware/graphics/mapper/IMapper.h>
#include <android/hidl/base/1.0/IBase.h>
#include <utils/StrongPointer.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

// Filled by start-up (graphicsstartup.h). No buffer operation goes through it: it is a readiness
// gate. Members are destroyed last field first, so the allocator goes before the interfaces.
struct OfflineCameraZelInterface {
    using PixelFormat = ::aidl::android::hardware::graphics::common::PixelFormat;
    using BufferUsage = ::aidl::android::hardware::graphics::common::BufferUsage;

    // This program never sets the three interfaces; the first gates GetPlaneLayout.
    ::android::sp<::android::hidl::base::V1_0::IBase> m_planeLayoutInterface;
    ::android::sp<::android::hidl::base::V1_0::IBase> m_unusedInterface2;
    ::android::sp<::android::hidl::base::V1_0::IBase> m_unusedInterface3;

    std::shared_ptr<::aidl::android::hardware::graphics::allocator::IAllocator> m_allocator;

    // Not owned: its library stays loaded for the life of the process.
    AIMapper* m_aiMapper = nullptr;

    // Asks the vendor's display mapper how a buffer of width x height samples is laid out, logs
    // its first four planes, and writes the rows allocated for the luma or raw plane to
    // *scanlines. Leaves *scanlines alone when there is none, and when the record is not ready.
    // Keeps no state; any thread.
    void GetPlaneLayout(PixelFormat format, BufferUsage usage, uint32_t width, uint32_t height,
                        int32_t* scanlines) const;
};

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
