// hidl_handle: a native handle (descriptors and integers) that is either owned or borrowed.
#pragma once

#include <cutils/native_handle.h>
#include <hidl/HidlInternal.h>

namespace android {
namespace hardware {

// From a native_handle_t pointer it borrows: the caller keeps the handle alive and closes it.
// Copies clone the handle, descriptors included, and own the clone; when that fails the process
// ends. Moves transfer. An owned handle is closed and deleted with the object.
struct hidl_handle {
    hidl_handle() = default;
    hidl_handle(const native_handle_t* handle);
    hidl_handle(const hidl_handle& other);
    hidl_handle(hidl_handle&& other) noexcept;
    ~hidl_handle();

    hidl_handle& operator=(const hidl_handle& other);
    hidl_handle& operator=(hidl_handle&& other) noexcept;
    hidl_handle& operator=(const native_handle_t* handle);

    // Holds `handle` from now on; with `shouldOwn` this object closes and deletes it.
    void setTo(native_handle_t* handle, bool shouldOwn = false);

    const native_handle_t* operator->() const { return mHandle; }
    operator const native_handle_t*() const { return mHandle; }
    const native_handle_t* getNativeHandle() const { return mHandle; }

  private:
    details::hidl_pointer<const native_handle_t> mHandle;
    bool mOwnsHandle = false;

    void release();
};
static_assert(sizeof(hidl_handle) == 16, "wrong size");

}  // namespace hardware
}  // namespace android
