// One client's session: the binder object behind IOfflineCameraSession.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/IOfflineCameraSession.h>

#include <memory>
#include <string>

#include "borrowed_buffers.h"

namespace offlinecamera {

using ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraSession;

// Thread-safe. A session ends with closeOfflineSession, with the client's death, or with its last
// reference; then queued requests are dropped, their buffers freed, and nothing is delivered.
// Null if the client is dead already.
std::shared_ptr<IOfflineCameraSession> OpenSession(const std::string& clientName,
                                                   const Client& client);

}  // namespace offlinecamera
