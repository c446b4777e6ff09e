// The small calls around a run: mode, registration, opening and closing the session.

#include <memory>
#include <string>

#include "gralloc/clientlog.h"
#include "offlinecameracallbacks.h"
#include "vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

void OfflineCameraClient::setOpMode(int32_t opMode) {
    m_opMode = opMode;
    CLIENT_LOGI("[AIDL] setOpMode opMode %d", opMode);
}

void OfflineCameraClient::registerClient(int32_t clientId) {
    {
        const std::shared_ptr<OfflineCameraCallBacks> callback = m_callback;
        m_service->registerClient(clientId, callback);
    }
    CLIENT_LOGI("[AIDL] registerClient clientId %d", clientId);
}

void OfflineCameraClient::OpenOfflineSession(std::string clientName) {
    {
        const std::shared_ptr<OfflineCameraCallBacks> callback = m_callback;
        m_service->openOfflineSession(clientName, callback, &m_offlineSession);
    }
    if (m_offlineSession != nullptr) {
        CLIENT_LOGI("OpenOfflineSession");
    }
}

void OfflineCameraClient::CloseOfflineSession() {
    if (m_offlineSession == nullptr) {
        return;
    }
    m_offlineSession->closeOfflineSession();
    CLIENT_LOGI("CloseOfflineSession");
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
