// hidl_handle: a native handle (descriptors and integers) that is either owned or borrowed.
#pragma once

#include <cutils/native_handle.h>
#include <hidl/HidlInternal.h>

namespace android::hardware {

// From a native_handle_t pointer it borrows: the caller keeps the handle alive and closes it.
// Copies clone the handle, descriptors included, and own the clone; when that fails the process
// ends. Moves transfer. An owned handle is closed and deleted with the object.
struct hidl_handle {
    hidl_handle() = default;
    hidl_handle(const native_handle_t* handle) : m_handle(handle) {}
    hidl_handle(const hidl_handle& other);
    hidl_handle(hidl_handle&& other) noexcept { swap(other); }
    hidl_handle& operator=(hidl_handle other) noexcept {
        swap(other);
        return *this;
    }
    ~hidl_handle() { setTo(nullptr); }

    // Holds `handle` from now on; with `shouldOwn` this object closes and deletes it.
    void setTo(native_handle_t* handle, bool shouldOwn = false);

    const native_handle_t* operator->() const { return m_handle; }
    operator const native_handle_t*() const { return m_handle; }
    const native_handle_t* getNativeHandle() const { return m_handle; }

  private:
    const native_handle_t* m_handle = nullptr;
    bool m_owns = false;

    void swap(hidl_handle& other) noexcept;
};
static_assert(sizeof(hidl_handle) == 16, "wrong size");

}  // namespace android::hardware
