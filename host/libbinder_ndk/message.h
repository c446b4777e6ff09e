// A received call or reply.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "parcel.h"
#include "wire_format.h"

namespace hostbinder {

struct IncomingMessage {
    FrameHeader header{};
    binder_status_t status = STATUS_OK;  // not OK: the parcel cannot be used
    std::unique_ptr<AParcel> parcel = std::make_unique<AParcel>();
    // References to objects of third processes, and their indices among the parcel's objects. To be
    // resolved before the parcel is used, which may take a call: not on a reader's thread.
    std::vector<std::pair<size_t, ReferenceRecord>> unresolved;
};

}  // namespace hostbinder
