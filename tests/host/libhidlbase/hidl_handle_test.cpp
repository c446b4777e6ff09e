// Who owns the descriptors of a hidl_handle.
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <sys/mman.h>

#include <utility>

#include "tests/host/libhidlbase/open_descriptors.h"

namespace {

using ::android::hardware::hidl_handle;

class HidlHandleTest : public ::testing::Test {
  protected:
    HidlHandleTest() {
        m_raw->data[0] = memfd_create("handle", MFD_CLOEXEC);
        m_raw->data[1] = 42;
    }
    // What a test made is gone; nothing else is open, or closed.
    ~HidlHandleTest() override {
        EXPECT_EQ(native_handle_close(m_raw), 0);
        native_handle_delete(m_raw);
        EXPECT_EQ(countOpenDescriptors(), m_openBefore);
    }

    const int m_openBefore = countOpenDescriptors();
    native_handle_t* const m_raw = native_handle_create(1, 1);
};

TEST_F(HidlHandleTest, BorrowsARawPointerAndCopiesOwnClones) {
    hidl_handle borrowed = m_raw;
    EXPECT_EQ(borrowed.getNativeHandle(), m_raw);
    hidl_handle copy = borrowed;
    ASSERT_NE(copy.getNativeHandle(), nullptr);
    EXPECT_NE(copy->data[0], m_raw->data[0]);
    EXPECT_TRUE(isSameFile(copy->data[0], m_raw->data[0]));
    EXPECT_EQ(copy->data[1], 42);
    hidl_handle assigned = copy;
    assigned = borrowed;  // the first clone goes
    EXPECT_EQ(countOpenDescriptors(), m_openBefore + 3);
    const hidl_handle& alias = assigned;
    assigned = alias;
    ASSERT_NE(assigned.getNativeHandle(), nullptr);
    EXPECT_TRUE(isOpen(assigned->data[0]));
}

TEST_F(HidlHandleTest, ReplacingAnOwnedHandleClosesIt) {
    hidl_handle first;
    first.setTo(native_handle_clone(m_raw), true);
    hidl_handle owner = std::move(first);
    EXPECT_EQ(first.getNativeHandle(), nullptr);
    owner.setTo(native_handle_clone(m_raw), true);
    EXPECT_EQ(countOpenDescriptors(), m_openBefore + 2);
    owner = m_raw;
    EXPECT_EQ(countOpenDescriptors(), m_openBefore + 1);
}

}  // namespace
