// The record of the vendor's graphics interfaces, and the plane-layout query that it gates.
#pragma once

#include <aidl/android/hardware/graphics/allocator/IAllocator.h>
#include <aidl/android/hardware/graphics/common/BufferUsage.h>
#include <aidl/android/hardware/graphics/common/PixelFormat.h>
#include <android/hardware/graphics/mapper/IMapper.h>
#include <android/hidl/base/1.0/IBase.h>
#include <utils/StrongPointer.h>

#include <cstdint>
#include <memory>

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

// Filled by start-up (graphicsstartup.h). Buffers do not go through it: it only tells
// GetPlaneLayout whether the query is ready. Destroyed last field first: the allocator, then the
// interfaces.
struct OfflineCameraZelInterface {
    using PixelFormat = ::aidl::android::hardware::graphics::common::PixelFormat;
    using BufferUsage = ::aidl::android::hardware::graphics::common::BufferUsage;

    // The program sets none of the three. The first one must be set for GetPlaneLayout to ask.
    ::android::sp<::android::hidl::base::V1_0::IBase> m_planeLayoutInterface;
    ::android::sp<::android::hidl::base::V1_0::IBase> m_unusedInterface2;
    ::android::sp<::android::hidl::base::V1_0::IBase> m_unusedInterface3;

    std::shared_ptr<::aidl::android::hardware::graphics::allocator::IAllocator> m_allocator;

    // Not owned; its library stays loaded until the process ends.
    AIMapper* m_aiMapper = nullptr;

    // Asks the vendor's display mapper how a buffer of width x height samples is laid out, logs
    // its first four planes, and writes the number of rows of the luma or raw plane to *scanlines.
    // Leaves *scanlines alone when there is no such plane, and when the query is not ready. Any
    // thread.
    void GetPlaneLayout(PixelFormat format, BufferUsage usage, uint32_t width, uint32_t height,
                        int32_t* scanlines) const;
};

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
