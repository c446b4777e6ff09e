// The offline camera service: the binder object that clients look up.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/IOfflineCameraService.h>

#include <memory>

namespace offlinecamera {

using ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraService;

// Thread-safe; it holds sessions and registrations only as long as their clients do.
std::shared_ptr<IOfflineCameraService> NewService();

}  // namespace offlinecamera
