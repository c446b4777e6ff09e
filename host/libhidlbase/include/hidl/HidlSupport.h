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

namespace android {

namespace hidl {
namespace base {
namespace V1_0 {
struct IBase;
}  // namespace V1_0
}  // namespace base
}  // namespace hidl

namespace hardware {

// A set of bits whose names are the enumerators of `Enum`.
template <typename Enum>
using hidl_bitfield = typename std::underlying_type<Enum>::type;

// A fixed-size array.
template <typename T, size_t Size>
struct hidl_array {
    T* data() { return mBuffer; }
    const T* data() const { return mBuffer; }
    T& operator[](size_t index) { return mBuffer[index]; }
    const T& operator[](size_t index) const { return mBuffer[index]; }
    static constexpr size_t size() { return Size; }

  private:
    T mBuffer[Size] = {};
};

// Told when the process of a remote interface ends. Local interfaces never call it.
struct hidl_death_recipient : public virtual ::android::RefBase {
    virtual void serviceDied(uint64_t cookie,
                             const ::android::wp<::android::hidl::base::V1_0::IBase>& who) = 0;
};

}  // namespace hardware
}  // namespace android
