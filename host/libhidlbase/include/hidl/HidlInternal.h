// Building blocks of the HIDL value types: the fixed-size pointer and the fatal error exit.
#pragma once

#include <cstddef>
#include <cstdint>

namespace android {
namespace hardware {
namespace details {

// A pointer that takes 8 bytes whatever the word size, so that HIDL types have one layout.
template <typename T>
struct hidl_pointer {
    hidl_pointer() : _pad(0) {}
    hidl_pointer(T* pointer) : _pad(0) { mPointer = pointer; }
    hidl_pointer& operator=(T* pointer) {
        mPointer = pointer;
        return *this;
    }
    operator T*() const { return mPointer; }
    T* operator->() const { return mPointer; }

  private:
    union {
        T* mPointer;
        uint64_t _pad;
    };
};
static_assert(sizeof(hidl_pointer<void>) == 8, "wrong size");

// Logs `message` (tag HidlSupport, priority FATAL) and aborts the process.
[[noreturn]] void fatal(const char* message);

// Returns `size` as the 32 bits that HIDL containers keep; larger sizes end the process.
uint32_t checkedSize(size_t size);

}  // namespace details
}  // namespace hardware
}  // namespace android
