// Construction and destruction of the one client instance.

#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <android/binder_manager.h>

#include <string>

#include "gralloc/clientlog.h"
#include "gralloc/graphicsstartup.h"
#include "offlinecameracallbacks.h"
#include "vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

namespace {

constexpr char kServiceInstance[] =
        "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default";
constexpr size_t kReservedBytes = 80;

}  // namespace

OfflineCameraClient& OfflineCameraClient::GetInstance() {
    static OfflineCameraClient instance;
    return instance;
}

// Failures are only logged: construction always completes.
OfflineCameraClient::OfflineCameraClient() {
    const GraphicsServices graphics = ConnectGraphicsServices();
    m_grallocWrapper = StartGrallocWrapper(graphics);

    {
        // Non-blocking: a service that is not there now is not waited for.
        const ::ndk::SpAIBinder binder(AServiceManager_checkService(kServiceInstance));
        m_service = IOfflineCameraService::fromBinder(binder);
    }
    m_callback = ::ndk::SharedRefBase::make<OfflineCameraCallBacks>(this);
    if (m_service == nullptr) {
        CLIENT_LOGE("getService is NULL for offlinecameraservice");
    }

    m_zelInterface = StartZelInterface(graphics.allocator);
    m_reservedList.reserve(kReservedBytes / sizeof(ReservedRecord));
    CLIENT_LOGI("[AIDL] OfflineCameraClient constructor called");
}

// Runs from the exit handlers while pool threads may still exist, and takes no lock: it relies on
// no callback arriving after the run has ended.
OfflineCameraClient::~OfflineCameraClient() {
    // Buffers of output streams are freed by the dump; one that was never dumped is kept.
    for (const Stream& stream : m_inputStreams) {
        for (const ClientCaptureBuffer& buffer :
             m_captureRequests[static_cast<uint32_t>(stream.id)].buffers) {
            freeBuffer(buffer.importedBuf);
        }
    }
    m_frameInfos.clear();
    m_resultFrameInfos.clear();
    m_captureRequests.clear();
    m_allocatedHandles.clear();
    if (m_zelInterface != nullptr) {
        m_zelInterface->m_aiMapper = nullptr;
        m_zelInterface->m_allocator.reset();
    }
    CLIENT_LOGI("[AIDL] OfflineCameraClient destructor called");
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation
