// The rules for lengths of arrays.
#include <android/binder_parcel_utils.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

// A parcel that holds a length and then `bytes` bytes.
ndk::ScopedAParcel parcelWithLength(int32_t length, int bytes) {
    ndk::ScopedAParcel parcel(AParcel_create());
    AParcel_writeInt32(parcel.get(), length);
    for (int i = 0; i < bytes; i += 4) AParcel_writeInt32(parcel.get(), 0);
    AParcel_setDataPosition(parcel.get(), 0);
    return parcel;
}

template <typename T>
binder_status_t readWithLength(int32_t length, int bytes) {
    ndk::ScopedAParcel parcel = parcelWithLength(length, bytes);
    std::vector<T> values;
    return ndk::AParcel_readData(parcel.get(), &values);
}

TEST(ArrayLength, IsCheckedBeforeAnythingIsAllocated) {
    constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();
    for (int32_t length : {-2, std::numeric_limits<int32_t>::min()}) {
        EXPECT_EQ(readWithLength<uint8_t>(length, 8), STATUS_BAD_VALUE);
        EXPECT_EQ(readWithLength<int64_t>(length, 8), STATUS_BAD_VALUE);
        EXPECT_EQ(readWithLength<std::string>(length, 8), STATUS_BAD_VALUE);
        EXPECT_EQ(readWithLength<bool>(length, 8), STATUS_BAD_VALUE);
    }
    EXPECT_EQ(readWithLength<uint8_t>(9, 8), STATUS_NO_MEMORY);
    EXPECT_EQ(readWithLength<int64_t>(kLargest, 8), STATUS_NO_MEMORY);
    EXPECT_EQ(readWithLength<std::string>(kLargest, 8), STATUS_NO_MEMORY);
    EXPECT_EQ(readWithLength<ndk::ScopedFileDescriptor>(kLargest, 8), STATUS_NO_MEMORY);
    EXPECT_EQ(readWithLength<int32_t>(3, 8), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(readWithLength<int64_t>(1, 8), STATUS_OK);
    EXPECT_EQ(readWithLength<int64_t>(0, 0), STATUS_OK);
}

TEST(ArrayLength, MustMatchAFixedArray) {
    for (int32_t length : {1, 3}) {
        ndk::ScopedAParcel parcel = parcelWithLength(length, 12);
        std::array<int32_t, 2> values;
        EXPECT_EQ(ndk::AParcel_readData(parcel.get(), &values), STATUS_NO_MEMORY);
    }
}

TEST(ArrayWrite, NeedsDataForElements) {
    ndk::ScopedAParcel parcel(AParcel_create());
    const int32_t one = 1;
    EXPECT_EQ(AParcel_writeInt32Array(parcel.get(), nullptr, 0), STATUS_OK);
    EXPECT_EQ(AParcel_writeInt32Array(parcel.get(), nullptr, -1), STATUS_OK);
    EXPECT_EQ(AParcel_writeInt32Array(parcel.get(), nullptr, 1), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_writeInt32Array(parcel.get(), &one, -2), STATUS_BAD_VALUE);
    EXPECT_EQ(AParcel_getDataSize(parcel.get()), 8);
}

TEST(OutVector, GetsTheCallersSizeWithinBounds) {
    std::vector<int32_t> vector;
    ndk::ScopedAParcel parcel(AParcel_create());
    ASSERT_EQ(ndk::AParcel_writeVectorSize(parcel.get(), std::vector<int32_t>(3)), STATUS_OK);
    AParcel_setDataPosition(parcel.get(), 0);
    EXPECT_EQ(ndk::AParcel_resizeVector(parcel.get(), &vector), STATUS_OK);
    EXPECT_EQ(vector.size(), 3u);
    EXPECT_EQ(ndk::AParcel_resizeVector(parcelWithLength(-1, 0).get(), &vector),
              STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(ndk::AParcel_resizeVector(parcelWithLength(1000001, 0).get(), &vector),
              STATUS_NO_MEMORY);
}

}  // namespace
