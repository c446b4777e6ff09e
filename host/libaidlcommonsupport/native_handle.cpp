// Conversion between native handles and their AIDL form.
#include <aidlcommonsupport/NativeHandle.h>
#include <android/log.h>
#include <fcntl.h>

#include <algorithm>

namespace android {

using AidlHandle = ::aidl::android::hardware::common::NativeHandle;

namespace {

int Borrow(int fd) {
    return fd;
}

int Duplicate(int fd) {
    return fcntl(fd, F_DUPFD_CLOEXEC, 0);
}

AidlHandle ToAidl(const native_handle_t* source, int (*convert)(int fd)) {
    if (source == nullptr) {
        __android_log_assert(nullptr, "libaidlcommonsupport",
                             "a null native handle cannot be converted: check it first");
    }
    AidlHandle handle;
    for (int i = 0; i < source->numFds; ++i) handle.fds.emplace_back(convert(source->data[i]));
    const int* ints = source->data + source->numFds;
    handle.ints.assign(ints, ints + source->numInts);
    return handle;
}

}  // namespace

bool isAidlNativeHandleEmpty(const AidlHandle& handle) {
    return handle.fds.empty() && handle.ints.empty();
}

native_handle_t* makeFromAidl(const AidlHandle& source) {
    const size_t fds = source.fds.size();
    const size_t ints = source.ints.size();
    // Refused here, before the numbers are narrowed to int.
    if (fds > NATIVE_HANDLE_MAX_FDS || ints > NATIVE_HANDLE_MAX_INTS) return nullptr;
    native_handle_t* handle = native_handle_create(static_cast<int>(fds), static_cast<int>(ints));
    if (handle == nullptr) return nullptr;
    for (size_t i = 0; i < fds; ++i) handle->data[i] = source.fds[i].get();
    std::copy(source.ints.begin(), source.ints.end(), handle->data + fds);
    return handle;
}

AidlHandle makeToAidl(const native_handle_t* handle) {
    return ToAidl(handle, Borrow);
}

AidlHandle dupToAidl(const native_handle_t* handle) {
    return ToAidl(handle, Duplicate);
}

}  // namespace android
