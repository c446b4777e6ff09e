// The offline camera service as a process of its own.
#include "serve.h"
#include "service.h"

using offlinecamera::ImportedBuffer;
using offlinecamera::OfflineCameraService;

namespace {

// An object that refuses every operation.
class NoService : public ndk::ICInterface {
  public:
    explicit NoService(const char* descriptor) {
        AIBinder_Class* const clazz = AIBinder_Class_define(
                descriptor, [](void* args) { return args; }, [](void*) {},
                [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) -> binder_status_t {
                    return STATUS_UNKNOWN_TRANSACTION;
                });
        m_binder.set(AIBinder_new(clazz, nullptr));
    }
    ndk::SpAIBinder asBinder() override { return m_binder; }
    bool isRemote() override { return false; }

  private:
    ndk::SpAIBinder m_binder;
};

}  // namespace

int main(int argc, char** argv) {
    offlinecamera::FaultInjector faults;
    const auto make = [&]() -> base::Result<std::shared_ptr<ndk::ICInterface>> {
        if (faults.Has("wrong-interface")) return {ndk::SharedRefBase::make<NoService>("another")};
        if (faults.Has("empty-object")) {
            return {ndk::SharedRefBase::make<NoService>(OfflineCameraService::descriptor)};
        }
        const auto mapper = ImportedBuffer::IMapper::getService();
        if (mapper != nullptr)
            return {ndk::SharedRefBase::make<OfflineCameraService>(mapper, faults)};
        return base::Failure{
                "no graphics mapper: is android.hardware.graphics.mapper@4.0-impl-zel.so in "
                "STANDIN_HAL_PATH?"};
    };
    return services::Serve(
            {"offlinecameraservice", "Serves offline camera sessions until it is ended.",
             "NAME[=ARG]", OfflineCameraService::kInstance, /* threads */ 8, &faults, make},
            argc, argv);
}
