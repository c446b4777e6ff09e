// Who owns what a hidl_vec, hidl_string or hidl_handle holds; a failed Return<T> must be looked at.
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <utility>

#include "tests/host/libhidlbase/open_descriptors.h"
#include "tests/support/process_counts.h"

namespace {

using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Status;

TEST(HidlVec, CopiesDoNotShareStorage) {
    hidl_vec<int> first = {1, 2, 3};
    hidl_vec<int> copy = first;
    first[1] = 20;
    EXPECT_EQ(copy, hidl_vec<int>({1, 2, 3}));
    const hidl_vec<int>& alias = copy;
    copy = alias;
    copy.resize(4);
    EXPECT_EQ(std::vector<int>(copy), std::vector<int>({1, 2, 3, 0}));
    // Refused before it is allocated: there is no memory for that.
    EXPECT_DEATH(hidl_vec<char>(size_t{1} << 60), "more than 32 bits");
}

TEST(HidlString, IsNeverNullAndOwnsItsCharacters) {
    EXPECT_STREQ(hidl_string(static_cast<const char*>(nullptr)).c_str(), "");
    char outside[] = "outside";
    hidl_string view;
    view.setToExternal(outside, 7);
    const hidl_string copy = view;
    outside[0] = 'O';
    EXPECT_EQ(view, "Outside");
    EXPECT_EQ(copy, "outside");
    hidl_string assigned = copy;
    assigned = assigned.c_str() + 3;  // its own characters
    EXPECT_EQ(assigned, "side");
    EXPECT_DEATH(view.setToExternal(outside, 3), "followed by a NUL");
}

Return<int> Fails() {
    return Status::fromStatusT(::android::BAD_VALUE);
}

TEST(Return, AnExaminedFailureIsHarmless) {
    EXPECT_EQ(static_cast<int>(Return<int>(5)), 5);
    EXPECT_EQ(Fails().withDefault(7), 7);
    EXPECT_TRUE(Return<void>(Status::fromStatusT(::android::DEAD_OBJECT)).isDeadObject());
    Return<int> first = Fails();
    const Return<int> second = std::move(first);  // and with it the duty to look
    EXPECT_FALSE(second.isOk());
    Return<int> seen = Fails();
    EXPECT_FALSE(seen.isOk());
    const Return<int> handedOn = std::move(seen);  // needs no second look
}

TEST(Return, AnIgnoredOrUsedFailureAborts) {
    EXPECT_DEATH((void)Fails(), "was ignored.*-22");
    EXPECT_DEATH((void)Fails().isDeadObject(), "was ignored");  // it was not dead: still unknown
    EXPECT_DEATH((void)static_cast<int>(Fails()), "value of a failed HIDL call");
    Return<int> overwritten = Fails();
    EXPECT_DEATH(overwritten = Return<int>(1), "was ignored");
    EXPECT_FALSE(overwritten.isOk());
}

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
        EXPECT_EQ(CountsOf(getpid()).descriptors, m_openBefore);
    }

    const size_t m_openBefore = CountsOf(getpid()).descriptors;
    native_handle_t* const m_raw = native_handle_create(1, 1);
};

TEST_F(HidlHandleTest, BorrowsARawPointerAndCopiesOwnClones) {
    hidl_handle borrowed = m_raw;
    EXPECT_EQ(borrowed.getNativeHandle(), m_raw);
    hidl_handle copy = borrowed;
    ASSERT_NE(copy.getNativeHandle(), nullptr);
    EXPECT_NE(copy->data[0], m_raw->data[0]);
    EXPECT_TRUE(IsSameFile(copy->data[0], m_raw->data[0]));
    EXPECT_EQ(copy->data[1], 42);
    hidl_handle assigned = copy;
    assigned = borrowed;  // the first clone goes
    EXPECT_EQ(CountsOf(getpid()).descriptors, m_openBefore + 3);
    const hidl_handle& alias = assigned;
    assigned = alias;
    ASSERT_NE(assigned.getNativeHandle(), nullptr);
    EXPECT_TRUE(IsOpen(assigned->data[0]));
}

TEST_F(HidlHandleTest, ReplacingAnOwnedHandleClosesIt) {
    hidl_handle owner;
    owner.setTo(native_handle_clone(m_raw), true);
    owner.setTo(native_handle_clone(m_raw), true);
    EXPECT_EQ(CountsOf(getpid()).descriptors, m_openBefore + 2);
    owner = m_raw;
    EXPECT_EQ(CountsOf(getpid()).descriptors, m_openBefore + 1);
}

}  // namespace
