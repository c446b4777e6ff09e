// The length rules that all arrays in a parcel share.
#pragma once

#include "parcel.h"

namespace hostbinder {

// Writes the length. Null data goes with length -1 (null array) or 0, else STATUS_BAD_VALUE.
binder_status_t writeArrayLength(AParcel* parcel, const void* data, int32_t length);

// Reads a length that the bytes left can hold, so that nobody allocates for elements that cannot
// come. Below -1: STATUS_BAD_VALUE. More elements than bytes left: STATUS_NO_MEMORY.
binder_status_t readArrayLength(const AParcel* parcel, size_t elementSize, int32_t* length);

// The status that an allocator's answer to `length` stands for.
binder_status_t finishAllocation(bool accepted, int32_t length);

}  // namespace hostbinder
