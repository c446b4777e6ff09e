// Construction and destruction of the one client instance.

#include <android/binder_auto_utils.h>
#include <android/binder_interface_utils.h>
#include <android/binder_manager.h>

#include <memory>

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

// Logs failures and goes on.
OfflineCameraClient::OfflineCameraClient() {
    const GraphicsServices graphics = ConnectGraphicsServices();
    m_grallocWrapper = StartGrallocWrapper(graphics);

    {
        // Does not wait for a service that is not there yet.
        const ::ndk::SpAIBinder binder(AServiceManager_checkService(kServiceInstance));
        m_service = IOfflineCameraService::fromBinder(binder);
    }
    m_callback = ::ndk::SharedRefBase::make<OfflineCameraCallBacks>(this);
    if (m_service == nullptr) {
        CLIENT_LOGE("getService is NULL for offlinecameraservice");
    }

    m_zelInterface = std::make_unique<OfflineCameraZelInterface>();
    StartZelInterface(graphics.allocator, m_zelInterface.get());
    m_reservedList.reserve(kReservedBytes / sizeof(ReservedRecord));
    CLIENT_LOGI("[AIDL] OfflineCameraClient constructor called");
}

// Runs in an exit handler, while pool threads still exist, and takes no lock: no callback may
// arrive after the run has ended.
OfflineCameraClient::~OfflineCameraClient() {
    // The dump has freed those of the output streams. Kept: one that was not dumped is not freed.
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
