// Who owns the descriptors after a conversion between native and AIDL handles.
#include <aidlcommonsupport/NativeHandle.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include "tests/host/libhidlbase/open_descriptors.h"

namespace {

using AidlHandle = ::aidl::android::hardware::common::NativeHandle;

// One descriptor, which is not close-on-exec, and the integers -1 and 7.
native_handle_t* MakeNative() {
    native_handle_t* handle = native_handle_create(1, 2);
    handle->data[0] = memfd_create("handle", 0);
    handle->data[1] = -1;
    handle->data[2] = 7;
    return handle;
}

TEST(NativeHandle, DupToAidlOwnsDuplicates) {
    native_handle_t* native = MakeNative();
    const int fd = native->data[0];
    int duplicate = -1;
    {
        const AidlHandle aidl = android::dupToAidl(native);
        duplicate = aidl.fds[0].get();
        EXPECT_NE(duplicate, fd);
        EXPECT_TRUE(IsSameFile(duplicate, fd));
        EXPECT_TRUE((fcntl(duplicate, F_GETFD) & FD_CLOEXEC) != 0);
        EXPECT_EQ(aidl.ints, (std::vector<int32_t>{-1, 7}));
    }
    EXPECT_FALSE(IsOpen(duplicate));
    native_handle_close(native);
    EXPECT_EQ(android::dupToAidl(native).fds[0].get(), -1) << "of a closed descriptor";
    native_handle_delete(native);
}

TEST(NativeHandle, MakeToAidlTakesTheDescriptorsAndMakeFromAidlBorrows) {
    native_handle_t* native = MakeNative();
    const int fd = native->data[0];
    {
        const AidlHandle aidl = android::makeToAidl(native);
        native_handle_delete(native);
        EXPECT_EQ(aidl.fds[0].get(), fd);
        native = android::makeFromAidl(aidl);
        ASSERT_NE(native, nullptr);
        EXPECT_EQ(native->data[0], fd);
        EXPECT_EQ(native->data[2], 7);
        native_handle_delete(native);
        EXPECT_TRUE(IsOpen(fd));
    }
    EXPECT_FALSE(IsOpen(fd));
}

TEST(NativeHandle, EmptyAndOversizedHandles) {
    EXPECT_TRUE(android::isAidlNativeHandleEmpty({}));
    AidlHandle aidl;
    aidl.ints.resize(1024);
    native_handle_delete(android::makeFromAidl(aidl));
    aidl.ints.resize(1025);
    EXPECT_EQ(android::makeFromAidl(aidl), nullptr);
}

}  // namespace
