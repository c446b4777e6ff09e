// Conversion between native handles and their AIDL form, with or without duplicating descriptors.
#pragma once

#include <aidl/android/hardware/common/NativeHandle.h>
#include <cutils/native_handle.h>

namespace android {

// No function takes a null handle: that ends the process with a message.

// True without descriptors and integers.
bool isAidlNativeHandleEmpty(const ::aidl::android::hardware::common::NativeHandle& handle);

// Returns a handle that borrows the descriptors of `handle`, which must outlive it. Free it with
// native_handle_delete() only. Null with more than 1024 descriptors or integers.
native_handle_t* makeFromAidl(const ::aidl::android::hardware::common::NativeHandle& handle);

// The result takes over the descriptors of `handle`, but not its structure: free that with
// native_handle_delete() only.
::aidl::android::hardware::common::NativeHandle makeToAidl(const native_handle_t* handle);

// The result owns duplicates (close-on-exec); `handle` is unchanged. A descriptor that cannot be
// duplicated becomes -1.
::aidl::android::hardware::common::NativeHandle dupToAidl(const native_handle_t* handle);

}  // namespace android
