// The stability of parcelables, which generated code states.
#pragma once

#include <android/binder_parcel_utils.h>

#include <cstdint>

namespace ndk {

typedef int32_t parcelable_stability_t;
enum {
    STABILITY_LOCAL = 0,
    STABILITY_VINTF = 1,
};

}  // namespace ndk
