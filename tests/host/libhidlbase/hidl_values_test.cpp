// hidl_vec and hidl_string: ownership, copies and moves.
#include <android/hidl/base/1.0/IBase.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

using ::android::hardware::hidl_string;
using ::android::hardware::hidl_vec;

static_assert(sizeof(hidl_vec<uint64_t>) == 16 && sizeof(hidl_string) == 16);

TEST(HidlVec, CopiesDoNotShareStorage) {
    int outside[] = {1, 2, 3};
    hidl_vec<int> view;
    view.setToExternal(outside, 3);
    hidl_vec<int> copy = view;
    hidl_vec<int> assigned;
    assigned = view;
    outside[1] = 20;
    EXPECT_EQ(view[1], 20);
    EXPECT_EQ(copy, hidl_vec<int>({1, 2, 3}));
    EXPECT_EQ(assigned, copy);
    EXPECT_NE(view, copy);
}

TEST(HidlVec, ReleasedDataIsTheCallers) {
    int outside[] = {7, 8};
    hidl_vec<int> view;
    view.setToExternal(outside, 2);
    int* released = view.releaseData();
    EXPECT_NE(released, outside);
    EXPECT_EQ(released[1], 8);
    EXPECT_EQ(view.data(), nullptr);
    delete[] released;

    hidl_vec<int> owner;
    int* const data = new int[1]{5};
    owner.setToExternal(data, 1, true);
    EXPECT_EQ(owner.releaseData(), data);
    EXPECT_EQ(owner.size(), 0u);
    delete[] data;
}

TEST(HidlVec, AssignmentFromAViewOfItself) {
    hidl_vec<int> numbers = {1, 2, 3, 4};
    hidl_vec<int> tail;
    tail.setToExternal(numbers.data() + 1, 3);
    numbers = tail;
    EXPECT_EQ(numbers, hidl_vec<int>({2, 3, 4}));
    hidl_vec<int>& alias = numbers;
    numbers = alias;
    numbers = std::move(alias);
    numbers.resize(4);
    EXPECT_EQ(std::vector<int>(numbers), std::vector<int>({2, 3, 4, 0}));
}

TEST(HidlVec, MoreThan32BitsOfSizeAborts) {
    char byte = 0;
    hidl_vec<char> bytes;
    EXPECT_DEATH(bytes.setToExternal(&byte, size_t{1} << 32), "more than 32 bits");
}

TEST(HidlString, IsNeverNull) {
    hidl_string empty;
    EXPECT_STREQ(empty.c_str(), "");
    hidl_string text = "abc";
    hidl_string moved = std::move(text);
    EXPECT_STREQ(text.c_str(), "");
    EXPECT_STREQ(moved.c_str(), "abc");
    const std::string zero("a\0b", 3);
    EXPECT_EQ(std::string(hidl_string(zero)), zero);
    EXPECT_STREQ(hidl_string(static_cast<const char*>(nullptr)).c_str(), "");
}

TEST(HidlString, OwnsItsCharacters) {
    char outside[] = "outside";
    hidl_string view;
    view.setToExternal(outside, 7);
    const hidl_string copy = view;
    hidl_string assigned;
    assigned = view;
    outside[0] = 'O';
    EXPECT_EQ(view, "Outside");
    EXPECT_EQ(copy, "outside");
    EXPECT_EQ(assigned, copy);
    assigned = assigned.c_str() + 3;  // its own characters
    EXPECT_EQ(assigned, "side");
    EXPECT_EQ(hidl_string("cut off", 3), "cut");
    EXPECT_DEATH(view.setToExternal(outside, 3), "followed by a NUL");
}

TEST(IBase, AnswersForALocalObject) {
    struct Local : public ::android::hidl::base::V1_0::IBase {};
    const ::android::sp<Local> local = new Local;
    EXPECT_FALSE(local->isRemote());
    EXPECT_TRUE(local->ping().isOk());
    std::vector<std::string> chain;
    EXPECT_TRUE(local->interfaceChain([&](const hidl_vec<hidl_string>& descriptors) {
                         chain.assign(descriptors.begin(), descriptors.end());
                     }).isOk());
    EXPECT_EQ(chain, std::vector<std::string>{"android.hidl.base@1.0::IBase"});
}

}  // namespace
