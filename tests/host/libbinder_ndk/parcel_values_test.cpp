// Values that come out of a parcel as they went in, and what happens at its end.
#include <android/binder_parcel_platform.h>
#include <android/binder_parcel_utils.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

struct Parcel {
    AParcel* get() const { return parcel.get(); }
    void rewind() const { AParcel_setDataPosition(get(), 0); }
    int32_t size() const { return AParcel_getDataSize(get()); }
    ndk::ScopedAParcel parcel{AParcel_create()};
};

enum class Small : int8_t { kLow = -3, kHigh = 7 };
enum class Large : int64_t { kValue = int64_t{1} << 40 };

struct Pair {
    int32_t number = 0;
    std::string text;
    bool operator==(const Pair& o) const { return number == o.number && text == o.text; }
    binder_status_t writeToParcel(AParcel* parcel) const {
        binder_status_t status = ndk::AParcel_writeData(parcel, number);
        return status == STATUS_OK ? ndk::AParcel_writeData(parcel, text) : status;
    }
    binder_status_t readFromParcel(const AParcel* parcel) {
        binder_status_t status = ndk::AParcel_readData(parcel, &number);
        return status == STATUS_OK ? ndk::AParcel_readData(parcel, &text) : status;
    }
};

// Writes, checks the size, reads back all of it; then every shorter parcel must fail to read.
template <typename T>
void expectRoundTrip(const T& value, int32_t size) {
    Parcel parcel;
    ASSERT_EQ(ndk::AParcel_writeNullableData(parcel.get(), value), STATUS_OK);
    EXPECT_EQ(parcel.size(), size);
    parcel.rewind();
    T back{};
    ASSERT_EQ(ndk::AParcel_readNullableData(parcel.get(), &back), STATUS_OK);
    EXPECT_TRUE(back == value);
    EXPECT_EQ(AParcel_getDataPosition(parcel.get()), size);
    for (int32_t shorter = 0; shorter < size; shorter += 4) {
        Parcel cut;
        ASSERT_EQ(AParcel_appendFrom(parcel.get(), cut.get(), 0, shorter), STATUS_OK);
        cut.rewind();
        T none{};
        const binder_status_t status = ndk::AParcel_readNullableData(cut.get(), &none);
        EXPECT_TRUE(status == STATUS_NOT_ENOUGH_DATA || status == STATUS_NO_MEMORY)
                << status << " at " << shorter;
    }
}

TEST(ParcelValues, ArraysCountTheirElements) {
    expectRoundTrip(std::vector<uint8_t>{1, 2, 3, 4, 5}, 12);
    expectRoundTrip(std::vector<int8_t>{}, 4);
    expectRoundTrip(std::vector<int32_t>{1, -1}, 12);
    expectRoundTrip(std::vector<int64_t>{1, -1}, 20);
    expectRoundTrip(std::vector<float>{1, 2}, 12);
    expectRoundTrip(std::vector<double>{1, 2}, 20);
    expectRoundTrip(std::vector<bool>{true, false, true}, 16);
    expectRoundTrip(std::vector<char16_t>{u'a', u'\u20ac'}, 12);
    expectRoundTrip(std::vector<Small>{Small::kHigh, Small::kLow}, 8);
    expectRoundTrip(std::vector<Large>{Large::kValue}, 12);
    expectRoundTrip(std::vector<std::string>{"", "abc"}, 4 + 8 + 12);
    expectRoundTrip(std::vector<Pair>{{1, "x"}, {2, ""}}, 4 + (4 + 4 + 8) + (4 + 4 + 8));
    expectRoundTrip(std::array<int32_t, 3>{{1, 2, 3}}, 16);
    expectRoundTrip(std::array<std::array<uint8_t, 2>, 2>{{{{1, 2}}, {{3, 4}}}}, 20);
}

TEST(ParcelValues, AbsentIsRefusedWhereAValueIsRequired) {
    Parcel parcel;
    AParcel_writeInt32(parcel.get(), 0);
    parcel.rewind();
    Pair pair;
    EXPECT_EQ(ndk::AParcel_readData(parcel.get(), &pair), STATUS_UNEXPECTED_NULL);
    Parcel minusOne;
    AParcel_writeInt32(minusOne.get(), -1);
    std::string text;
    std::vector<int32_t> numbers;
    std::vector<Pair> pairs;
    std::array<int32_t, 2> fixed;
    for (auto read : std::vector<std::function<binder_status_t()>>{
                 [&]() { return ndk::AParcel_readData(minusOne.get(), &text); },
                 [&]() { return ndk::AParcel_readData(minusOne.get(), &numbers); },
                 [&]() { return ndk::AParcel_readData(minusOne.get(), &pairs); },
                 [&]() { return ndk::AParcel_readData(minusOne.get(), &fixed); }}) {
        minusOne.rewind();
        EXPECT_EQ(read(), STATUS_UNEXPECTED_NULL);
    }
    EXPECT_EQ(ndk::AParcel_writeData(parcel.get(), ndk::ScopedFileDescriptor()),
              STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(ndk::AParcel_writeData(parcel.get(), ndk::SpAIBinder()), STATUS_UNEXPECTED_NULL);
}

TEST(ParcelValues, TextIsUtf8OutsideAndUtf16Inside) {
    expectRoundTrip(std::string("ILLEGAL_ARGUMENT"), 40);
    expectRoundTrip(std::string("\xc3\xa9"), 8);              // 1 unit
    expectRoundTrip(std::string("\xe2\x82\xac"), 8);          // 1 unit
    expectRoundTrip(std::string("\xf0\x9f\x93\xb7"), 4 + 8);  // 2 units
    expectRoundTrip(std::string("a\0b", 3), 12);
    Parcel parcel;
    for (const char* bad : {"\xff", "\xc3", "\xc0\x80", "\xe2\x82", "\xf5\x80\x80\x80", "a\x80"}) {
        EXPECT_EQ(ndk::AParcel_writeData(parcel.get(), std::string(bad)), STATUS_BAD_VALUE) << bad;
    }
    EXPECT_EQ(parcel.size(), 0);
    EXPECT_EQ(AParcel_writeString(parcel.get(), nullptr, 0), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_writeString(parcel.get(), "x", -1), STATUS_BAD_VALUE);
}

TEST(ParcelValues, TextWithoutItsEndIsRefused) {
    Parcel parcel;
    AParcel_writeInt32(parcel.get(), 1);           // one unit
    AParcel_writeInt32(parcel.get(), 0x00410041);  // and a second one in place of the NUL
    std::string text;
    parcel.rewind();
    EXPECT_EQ(ndk::AParcel_readData(parcel.get(), &text), STATUS_BAD_VALUE);
    for (int32_t length : {-2, std::numeric_limits<int32_t>::min()}) {
        Parcel negative;
        AParcel_writeInt32(negative.get(), length);
        negative.rewind();
        EXPECT_EQ(ndk::AParcel_readData(negative.get(), &text), STATUS_BAD_VALUE);
    }
    Parcel large;
    AParcel_writeInt32(large.get(), std::numeric_limits<int32_t>::max());
    large.rewind();
    EXPECT_EQ(ndk::AParcel_readData(large.get(), &text), STATUS_NOT_ENOUGH_DATA);
}

TEST(ParcelPosition, MovesAnywhereButWritesOnlyInsideOrAtTheEnd) {
    Parcel parcel;
    AParcel_writeInt32(parcel.get(), 0);
    AParcel_writeInt32(parcel.get(), 2);
    parcel.rewind();
    AParcel_writeInt32(parcel.get(), 1);  // as a parcelable writes its size at last
    EXPECT_EQ(parcel.size(), 8);
    int32_t value = 0;
    EXPECT_EQ(AParcel_readInt32(parcel.get(), &value), STATUS_OK);
    EXPECT_EQ(value, 2);
    EXPECT_EQ(AParcel_setDataPosition(parcel.get(), -1), STATUS_BAD_VALUE);
    ASSERT_EQ(AParcel_setDataPosition(parcel.get(), 1000), STATUS_OK);
    EXPECT_EQ(AParcel_readInt32(parcel.get(), &value), STATUS_NOT_ENOUGH_DATA);
    EXPECT_NE(AParcel_writeInt32(parcel.get(), 3), STATUS_OK);
    EXPECT_EQ(parcel.size(), 8);
}

TEST(ParcelValues, ScalarsTakeFourOrEightBytes) {
    expectRoundTrip(true, 4);
    expectRoundTrip(int8_t{-128}, 4);
    expectRoundTrip(uint8_t{255}, 4);
    expectRoundTrip(u'\uffff', 4);
    expectRoundTrip(std::numeric_limits<int32_t>::min(), 4);
    expectRoundTrip(std::numeric_limits<uint32_t>::max(), 4);
    expectRoundTrip(std::numeric_limits<int64_t>::min(), 8);
    expectRoundTrip(std::numeric_limits<uint64_t>::max(), 8);
    expectRoundTrip(1.5f, 4);
    expectRoundTrip(-2.25, 8);
    expectRoundTrip(Small::kLow, 4);
    expectRoundTrip(Large::kValue, 8);
}

TEST(ParcelValues, NullableValuesMayBeAbsent) {
    expectRoundTrip(std::optional<std::string>(), 4);
    expectRoundTrip(std::optional<std::string>("ab"), 12);
    expectRoundTrip(std::optional<Pair>(), 4);
    expectRoundTrip(std::optional<Pair>(Pair{3, "y"}), 16);
    expectRoundTrip(std::optional<std::vector<int32_t>>(), 4);
    expectRoundTrip(std::optional<std::vector<int32_t>>({{7}}), 8);
    expectRoundTrip(std::optional<std::vector<std::optional<std::string>>>({{std::nullopt, "z"}}),
                    4 + 4 + 8);
    expectRoundTrip(std::optional<std::vector<std::optional<Pair>>>({{Pair{1, ""}, std::nullopt}}),
                    4 + 16 + 4);
    expectRoundTrip(std::optional<std::array<int32_t, 2>>(), 4);
}

}  // namespace
