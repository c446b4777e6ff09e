// Conversion between native handles and their AIDL form.
#include <aidlcommonsupport/NativeHandle.h>
#include <android/log.h>
#include <fcntl.h>

namespace android {

using AidlHandle = ::aidl::android::hardware::common::NativeHandle;

namespace {

int borrow(int fd) {
    return fd;
}

int duplicate(int fd) {
    return fcntl(fd, F_DUPFD_CLOEXEC, 0);
}

native_handle_t* fromAidl(const AidlHandle& source, int (*convert)(int fd)) {
    const size_t fdCount = source.fds.size();
    const size_t intCount = source.ints.size();
    // Refused here, before the numbers are narrowed to int.
    if (fdCount > NATIVE_HANDLE_MAX_FDS || intCount > NATIVE_HANDLE_MAX_INTS) return nullptr;
    native_handle_t* handle =
            native_handle_create(static_cast<int>(fdCount), static_cast<int>(intCount));
    if (handle == nullptr) return nullptr;
    for (size_t i = 0; i < fdCount; ++i) handle->data[i] = convert(source.fds[i].get());
    for (size_t i = 0; i < intCount; ++i) handle->data[fdCount + i] = source.ints[i];
    return handle;
}

AidlHandle toAidl(const native_handle_t* source, int (*convert)(int fd)) {
    if (source == nullptr) {
        __android_log_assert(nullptr, "libaidlcommonsupport",
                             "a null native handle cannot be converted: check it first");
    }
    AidlHandle handle;
    for (int i = 0; i < source->numFds; ++i) {
        handle.fds.emplace_back(convert(source->data[i]));
    }
    const int* ints = source->data + source->numFds;
    handle.ints.assign(ints, ints + source->numInts);
    return handle;
}

}  // namespace

bool isAidlNativeHandleEmpty(const AidlHandle& handle) {
    return handle.fds.empty() && handle.ints.empty();
}

native_handle_t* makeFromAidl(const AidlHandle& handle) {
    return fromAidl(handle, borrow);
}

native_handle_t* dupFromAidl(const AidlHandle& handle) {
    return fromAidl(handle, duplicate);
}

AidlHandle makeToAidl(const native_handle_t* handle) {
    return toAidl(handle, borrow);
}

AidlHandle dupToAidl(const native_handle_t* handle) {
    return toAidl(handle, duplicate);
}

}  // namespace android
