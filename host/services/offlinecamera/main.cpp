// The offline camera service as a process of its own.
#include "serve.h"
#include "service.h"

using offlinecamera::ImportedBuffer;
using offlinecamera::OfflineCameraService;

int main(int argc, char** argv) {
    offlinecamera::FaultInjector faults;
    const auto make = [&]() -> base::Result<std::shared_ptr<ndk::ICInterface>> {
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
