// A received call or reply.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "parcel.h"
#include "wire_format.h"

namespace hostbinder {

// A reference to an object of a third process. Getting hold of that object may take a call to its
// process, which the thread that reads a connection never makes.
struct UnresolvedReference {
    size_t objectIndex;  // in the parcel
    std::string owner;
    uint64_t number;
};

struct IncomingMessage {
    FrameHeader header{};
    binder_status_t status = STATUS_OK;  // not OK: the parcel cannot be used
    std::unique_ptr<AParcel> parcel = std::make_unique<AParcel>();
    std::vector<UnresolvedReference> unresolved;  // to be resolved before the parcel is used
};

}  // namespace hostbinder
