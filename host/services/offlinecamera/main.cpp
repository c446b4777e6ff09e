// The offline camera service as a process of its own.
#include "faults.h"
#include "serve.h"
#include "service.h"

namespace {

// An object that refuses every operation.
ndk::SpAIBinder NewEmptyObject(const char* descriptor) {
    AIBinder_Class* const clazz = AIBinder_Class_define(
            descriptor, [](void* args) { return args; }, [](void*) {},
            [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) -> binder_status_t {
                return STATUS_UNKNOWN_TRANSACTION;
            });
    return ndk::SpAIBinder(AIBinder_new(clazz, nullptr));
}

base::Result<ndk::SpAIBinder> NewObject() {
    if (offlinecamera::faults::Has("wrong-interface")) return NewEmptyObject("another");
    if (offlinecamera::faults::Has("empty-object")) {
        return NewEmptyObject(offlinecamera::IOfflineCameraService::descriptor);
    }
    if (offlinecamera::DeviceMapper() == nullptr) {
        return base::Failure{
                "no graphics mapper: is android.hardware.graphics.mapper@4.0-impl-zel.so in "
                "STANDIN_HAL_PATH?"};
    }
    return offlinecamera::NewService()->asBinder();
}

}  // namespace

int main(int argc, char** argv) {
    return services::Serve(
            {"offlinecameraservice", "Serves offline camera sessions until it is ended.",
             "NAME[=ARG]", offlinecamera::IOfflineCameraService::descriptor, /* threads */ 8,
             &offlinecamera::faults::Set(), NewObject},
            argc, argv);
}
