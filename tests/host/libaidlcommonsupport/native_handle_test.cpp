// Who owns the descriptors after a conversion between native and AIDL handles.
#include <aidlcommonsupport/NativeHandle.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include "tests/host/libhidlbase/open_descriptors.h"

namespace {

using AidlHandle = ::aidl::android::hardware::common::NativeHandle;

int makeDescriptor() {
    return memfd_create("handle", 0);  // not close-on-exec: duplicates must be
}

// Two descriptors and the integers -1 and 7.
native_handle_t* makeNative() {
    native_handle_t* handle = native_handle_create(2, 2);
    handle->data[0] = makeDescriptor();
    handle->data[1] = makeDescriptor();
    handle->data[2] = -1;
    handle->data[3] = 7;
    return handle;
}

AidlHandle makeAidl() {
    AidlHandle handle;
    handle.fds.emplace_back(makeDescriptor());
    handle.fds.emplace_back(makeDescriptor());
    handle.ints = {-1, 7};
    return handle;
}

class NativeHandleTest : public ::testing::Test {
  protected:
    const int mOpenBefore = countOpenDescriptors();

    void TearDown() override { EXPECT_EQ(countOpenDescriptors(), mOpenBefore); }
};

TEST_F(NativeHandleTest, DupToAidlOwnsDuplicates) {
    native_handle_t* native = makeNative();
    {
        const AidlHandle aidl = android::dupToAidl(native);
        ASSERT_EQ(aidl.fds.size(), 2u);
        EXPECT_NE(aidl.fds[1].get(), native->data[1]);
        EXPECT_TRUE(isSameFile(aidl.fds[1].get(), native->data[1]));
        EXPECT_TRUE(isCloseOnExec(aidl.fds[0].get()));
        EXPECT_EQ(aidl.ints, (std::vector<int32_t>{-1, 7}));
        EXPECT_EQ(countOpenDescriptors(), mOpenBefore + 4);
    }
    EXPECT_TRUE(isOpen(native->data[0]));
    native_handle_close(native);
    native_handle_delete(native);
}

TEST_F(NativeHandleTest, MakeToAidlTakesTheDescriptors) {
    native_handle_t* native = makeNative();
    const int fd = native->data[0];
    {
        const AidlHandle aidl = android::makeToAidl(native);
        EXPECT_EQ(aidl.fds[0].get(), fd);
        native_handle_delete(native);
        EXPECT_TRUE(isOpen(fd));
    }
    EXPECT_FALSE(isOpen(fd));
}

TEST_F(NativeHandleTest, MakeFromAidlBorrows) {
    const AidlHandle aidl = makeAidl();
    native_handle_t* native = android::makeFromAidl(aidl);
    ASSERT_NE(native, nullptr);
    EXPECT_EQ(native->data[0], aidl.fds[0].get());
    EXPECT_EQ(native->data[3], 7);
    native_handle_delete(native);
    EXPECT_TRUE(isOpen(aidl.fds[0].get()));
}

TEST_F(NativeHandleTest, DupFromAidlOwnsDuplicates) {
    native_handle_t* native = nullptr;
    {
        const AidlHandle aidl = makeAidl();
        native = android::dupFromAidl(aidl);
        ASSERT_NE(native, nullptr);
        EXPECT_TRUE(isSameFile(native->data[1], aidl.fds[1].get()));
        EXPECT_TRUE(isCloseOnExec(native->data[1]));
    }
    EXPECT_TRUE(isOpen(native->data[0]));
    EXPECT_EQ(native->data[2], -1);
    native_handle_close(native);
    native_handle_delete(native);
}

TEST_F(NativeHandleTest, EmptyAndOversizedHandles) {
    AidlHandle aidl;
    EXPECT_TRUE(android::isAidlNativeHandleEmpty(aidl));
    native_handle_t* native = android::dupFromAidl(aidl);
    ASSERT_NE(native, nullptr);
    EXPECT_EQ(native->numFds + native->numInts, 0);
    EXPECT_TRUE(android::isAidlNativeHandleEmpty(android::dupToAidl(native)));
    native_handle_delete(native);

    aidl.ints.resize(1024);
    EXPECT_FALSE(android::isAidlNativeHandleEmpty(aidl));
    native = android::makeFromAidl(aidl);
    EXPECT_NE(native, nullptr);
    native_handle_delete(native);
    aidl.ints.resize(1025);
    EXPECT_EQ(android::makeFromAidl(aidl), nullptr);
    EXPECT_EQ(android::dupFromAidl(aidl), nullptr);
}

TEST_F(NativeHandleTest, AClosedDescriptorBecomesMinusOne) {
    native_handle_t* native = native_handle_create(1, 0);
    native->data[0] = makeDescriptor();
    close(native->data[0]);
    const AidlHandle aidl = android::dupToAidl(native);
    ASSERT_EQ(aidl.fds.size(), 1u);
    EXPECT_EQ(aidl.fds[0].get(), -1);
    native_handle_delete(native);
}

}  // namespace
