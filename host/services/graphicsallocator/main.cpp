// The graphics allocator as a process of its own.
#include "allocator.h"
#include "serve.h"

int main(int argc, char** argv) {
    services::FaultSet faults = graphics::Allocator::Faults();
    const auto make = [&]() -> base::Result<ndk::SpAIBinder> {
        return ndk::SharedRefBase::make<graphics::Allocator>(faults)->asBinder();
    };
    return services::Serve(
            {"graphicsallocator",
             "Allocates graphics buffers for other processes until it is ended.", "NAME",
             graphics::Allocator::descriptor, /* threads */ 3, &faults, make},
            argc, argv);
}
