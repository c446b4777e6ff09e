// The graphics allocator as a process of its own.
#include "allocator.h"
#include "serve.h"

int main(int argc, char** argv) {
    services::FaultSet faults = graphics::Allocator::Faults();
    const auto make = [&]() -> base::Result<std::shared_ptr<ndk::ICInterface>> {
        return {ndk::SharedRefBase::make<graphics::Allocator>(faults)};
    };
    return services::Serve({"graphicsallocator",
                            "Allocates graphics buffers for other processes until it is ended.",
                            "NAME", graphics::Allocator::kInstance, /* threads */ 3, &faults, make},
                           argc, argv);
}
