// The value types of HIDL interfaces.
#pragma once

#include <cutils/native_handle.h>
#include <hidl/HidlHandle.h>
#include <hidl/HidlInternal.h>
#include <hidl/HidlString.h>
#include <hidl/HidlVec.h>
#include <hidl/Status.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

#include <functional>
#include <type_traits>

namespace android::hardware {

// A set of bits whose names are the enumerators of `Enum`.
template <typename Enum>
using hidl_bitfield = typename std::underlying_type<Enum>::type;

}  // namespace android::hardware
