// Provides plane layouts to the tool on a workstation.
//
// The tool's plane-layout query is gated by an interface that its start-up never sets; on a device
// something outside the program would. Here it is set between the client's construction and its
// first step, which is where the driver starts the thread pool: the linker sends that call here.

#include <android/binder_process.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include "client/vexofflinecameraclient.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

struct OfflineCameraClientAccess {
    static void OpenPlaneLayoutGate(OfflineCameraClient& client) {
        using ::android::hardware::graphics::mapper::V4_0::IMapper;
        // Only looked at, never called: any interface that is there will do.
        client.m_zelInterface->m_planeLayoutInterface = IMapper::getService("default", false);
    }
};

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation

extern "C" void __real_ABinderProcess_startThreadPool(void);

extern "C" void __wrap_ABinderProcess_startThreadPool(void) {
    using namespace ::vendor::zel::hardware::camera::offlinecamera::implementation;
    OfflineCameraClientAccess::OpenPlaneLayoutGate(OfflineCameraClient::GetInstance());
    __real_ABinderProcess_startThreadPool();
}
