// hidl_handle: cloning and closing of native handles.
#include <hidl/HidlHandle.h>

#include <utility>

namespace android::hardware {

hidl_handle::hidl_handle(const hidl_handle& other) {
    if (other.m_handle == nullptr) return;
    m_handle = native_handle_clone(other.m_handle);
    if (m_handle == nullptr) {
        details::fatal("hidl_handle: cloning failed (out of descriptors, or a closed one)");
    }
    m_owns = true;
}

void hidl_handle::setTo(native_handle_t* handle, bool shouldOwn) {
    if (m_owns && m_handle != nullptr) {
        native_handle_close(m_handle);
        native_handle_delete(const_cast<native_handle_t*>(m_handle));
    }
    m_handle = handle;
    m_owns = shouldOwn;
}

void hidl_handle::swap(hidl_handle& other) noexcept {
    std::swap(m_handle, other.m_handle);
    std::swap(m_owns, other.m_owns);
}

}  // namespace android::hardware
