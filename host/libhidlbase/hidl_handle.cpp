// hidl_handle: cloning, closing and borrowing of native handles.
#include <hidl/HidlHandle.h>

namespace android {
namespace hardware {

hidl_handle::hidl_handle(const native_handle_t* handle) : mHandle(handle) {}

hidl_handle::hidl_handle(const hidl_handle& other) {
    if (other.mHandle == nullptr) return;
    mHandle = native_handle_clone(other.mHandle);
    if (mHandle == nullptr) {
        details::fatal("hidl_handle: cloning failed (out of descriptors, or a closed one)");
    }
    mOwnsHandle = true;
}

hidl_handle::hidl_handle(hidl_handle&& other) noexcept
    : mHandle(other.mHandle), mOwnsHandle(other.mOwnsHandle) {
    other.mHandle = nullptr;
    other.mOwnsHandle = false;
}

hidl_handle::~hidl_handle() {
    release();
}

hidl_handle& hidl_handle::operator=(const hidl_handle& other) {
    if (this == &other) return *this;
    return *this = hidl_handle(other);
}

hidl_handle& hidl_handle::operator=(hidl_handle&& other) noexcept {
    if (this == &other) return *this;
    release();
    mHandle = other.mHandle;
    mOwnsHandle = other.mOwnsHandle;
    other.mHandle = nullptr;
    other.mOwnsHandle = false;
    return *this;
}

hidl_handle& hidl_handle::operator=(const native_handle_t* handle) {
    release();
    mHandle = handle;
    return *this;
}

void hidl_handle::setTo(native_handle_t* handle, bool shouldOwn) {
    release();
    mHandle = handle;
    mOwnsHandle = shouldOwn;
}

// Closes what is owned; afterwards this object holds nothing.
void hidl_handle::release() {
    if (mOwnsHandle && mHandle != nullptr) {
        native_handle_close(mHandle);
        native_handle_delete(
                const_cast<native_handle_t*>(static_cast<const native_handle_t*>(mHandle)));
    }
    mHandle = nullptr;
    mOwnsHandle = false;
}

}  // namespace hardware
}  // namespace android
