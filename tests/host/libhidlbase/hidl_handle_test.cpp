// Who owns the descriptors of a hidl_handle.
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <sys/mman.h>
#include <unistd.h>

#include "tests/host/libhidlbase/open_descriptors.h"

namespace {

using ::android::hardware::hidl_handle;

// A handle with one descriptor and the integer 42.
native_handle_t* makeHandle() {
    native_handle_t* handle = native_handle_create(1, 1);
    handle->data[0] = memfd_create("handle", MFD_CLOEXEC);
    handle->data[1] = 42;
    return handle;
}

class HidlHandleTest : public ::testing::Test {
  protected:
    const int mOpenBefore = countOpenDescriptors();
    native_handle_t* mRaw = makeHandle();

    // What the test made is gone; nothing else is open, or closed.
    void expectNothingLeaked() {
        native_handle_close(mRaw);
        native_handle_delete(mRaw);
        EXPECT_EQ(countOpenDescriptors(), mOpenBefore);
    }
};

TEST_F(HidlHandleTest, BorrowsFromARawPointer) {
    {
        hidl_handle handle = mRaw;
        hidl_handle assigned;
        assigned = mRaw;
        EXPECT_EQ(handle.getNativeHandle(), mRaw);
        EXPECT_EQ(assigned->data[1], 42);
        EXPECT_EQ(countOpenDescriptors(), mOpenBefore + 1);
    }
    EXPECT_TRUE(isOpen(mRaw->data[0]));
    expectNothingLeaked();
}

TEST_F(HidlHandleTest, CopiesOwnClones) {
    {
        hidl_handle borrowed = mRaw;
        hidl_handle copy = borrowed;
        ASSERT_NE(copy.getNativeHandle(), nullptr);
        EXPECT_NE(copy.getNativeHandle(), mRaw);
        EXPECT_NE(copy->data[0], mRaw->data[0]);
        EXPECT_TRUE(isSameFile(copy->data[0], mRaw->data[0]));
        EXPECT_EQ(copy->data[1], 42);

        hidl_handle assigned = copy;
        assigned = borrowed;  // the first clone goes
        EXPECT_EQ(countOpenDescriptors(), mOpenBefore + 3);
    }
    expectNothingLeaked();
}

TEST_F(HidlHandleTest, SelfAssignmentKeepsAnOwnedHandle) {
    {
        hidl_handle copy = hidl_handle(mRaw);
        hidl_handle owner = copy;
        hidl_handle& alias = owner;
        owner = alias;
        owner = std::move(alias);
        ASSERT_NE(owner.getNativeHandle(), nullptr);
        EXPECT_TRUE(isOpen(owner->data[0]));
    }
    expectNothingLeaked();
}

TEST_F(HidlHandleTest, ReplacingAnOwnedHandleClosesIt) {
    hidl_handle first;
    first.setTo(native_handle_clone(mRaw), true);
    hidl_handle owner = std::move(first);
    EXPECT_EQ(first.getNativeHandle(), nullptr);
    owner.setTo(native_handle_clone(mRaw), true);
    EXPECT_EQ(countOpenDescriptors(), mOpenBefore + 2);
    first.setTo(native_handle_clone(mRaw), true);
    owner = std::move(first);
    EXPECT_EQ(countOpenDescriptors(), mOpenBefore + 2);
    owner = mRaw;
    EXPECT_EQ(countOpenDescriptors(), mOpenBefore + 1);
    owner = hidl_handle();
    EXPECT_EQ(owner.getNativeHandle(), nullptr) << "a copy of a null handle";
    expectNothingLeaked();
}

TEST_F(HidlHandleTest, CopyingAHandleWithAClosedDescriptorAborts) {
    close(mRaw->data[0]);
    hidl_handle borrowed = mRaw;
    EXPECT_DEATH({ hidl_handle copy = borrowed; }, "cloning failed");
    mRaw->numFds = 0;
    expectNothingLeaked();
}

}  // namespace
