// hidl_vec and hidl_string: ownership, copies and moves.
#include <android/hidl/base/1.0/IBase.h>
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>

#include <cstdint>
#include <list>
#include <numeric>
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

TEST(HidlVec, OwnsExternalStorageWhenAsked) {
    hidl_vec<std::string> owner;
    owner.setToExternal(new std::string[2]{"a", "b"}, 2, true);
    hidl_vec<std::string> moved = std::move(owner);
    EXPECT_EQ(owner.size(), 0u);
    EXPECT_EQ(moved[1], "b");
    moved.setToExternal(nullptr, 0);  // a leak or a double delete ends a sanitized run
    EXPECT_EQ(moved.size(), 0u);
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

    hidl_vec<int> owner = {5};
    int* const data = owner.data();
    EXPECT_EQ(owner.releaseData(), data);
    EXPECT_EQ(owner.size(), 0u);
    delete[] data;
}

TEST(HidlVec, ResizeKeepsElementsAndZeroesNewOnes) {
    hidl_vec<int> numbers = {1, 2, 3};
    numbers.resize(5);
    EXPECT_EQ(numbers, hidl_vec<int>({1, 2, 3, 0, 0}));
    numbers.resize(2);
    EXPECT_EQ(numbers, hidl_vec<int>({1, 2}));
    numbers.resize(0);
    EXPECT_EQ(numbers.begin(), numbers.end());
    EXPECT_EQ(hidl_vec<int>(size_t{3}), hidl_vec<int>({0, 0, 0}));
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
    EXPECT_EQ(numbers.size(), 3u);
}

TEST(HidlVec, ConvertsFromAndToOtherContainers) {
    const std::vector<uint8_t> bytes = {1, 2, 3};
    hidl_vec<uint8_t> converted = bytes;
    converted = bytes;
    const std::vector<uint8_t> back = converted;
    EXPECT_EQ(back, bytes);
    const std::list<int> list = {4, 5};
    const hidl_vec<int> fromIterators(list.begin(), list.end());
    EXPECT_TRUE(fromIterators.contains(5));
    EXPECT_FALSE(fromIterators.contains(6));
    EXPECT_EQ(fromIterators.find(6), fromIterators.end());
    EXPECT_EQ(std::accumulate(fromIterators.begin(), fromIterators.end(), 0), 9);
    EXPECT_EQ(std::vector<int>(hidl_vec<int>()), std::vector<int>());
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
    EXPECT_TRUE(text.empty());
    EXPECT_STREQ(moved.c_str(), "abc");
    moved.clear();
    EXPECT_EQ(moved.size(), 0u);
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

TEST(HidlString, ConvertsAndCompares) {
    const std::string text("a\0b", 3);
    const hidl_string converted = text;
    EXPECT_EQ(converted.size(), 3u);
    EXPECT_EQ(std::string(converted), text);
    EXPECT_TRUE(hidl_string("a") < hidl_string("b"));
    EXPECT_TRUE("b" >= hidl_string("a"));
    EXPECT_TRUE(hidl_string("a") != "b");
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
    EXPECT_FALSE(local->linkToDeath(nullptr, 0).withDefault(true));
    EXPECT_FALSE(local->getHashChain([](const auto&) { FAIL(); }).isOk());
}

}  // namespace
