// Records to bytes and back.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_parcel_utils.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

using Bytes = std::vector<uint8_t>;

// The bytes of a record's body, without its presence word.
template <typename Record>
Bytes BytesOf(const Record& record) {
    const ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(record.writeToParcel(parcel.get()), STATUS_OK);
    Bytes bytes(static_cast<size_t>(AParcel_getDataSize(parcel.get())));
    EXPECT_EQ(AParcel_marshal(parcel.get(), bytes.data(), 0, bytes.size()), STATUS_OK);
    return bytes;
}

// A parcel to be read from its start.
inline ndk::ScopedAParcel ParcelOf(const Bytes& bytes) {
    ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(AParcel_unmarshal(parcel.get(), bytes.data(), bytes.size()), STATUS_OK);
    EXPECT_EQ(AParcel_setDataPosition(parcel.get(), 0), STATUS_OK);
    return parcel;
}

template <typename Record>
binder_status_t Read(const Bytes& bytes, Record* record) {
    return record->readFromParcel(ParcelOf(bytes).get());
}

inline Bytes Words(const std::vector<int32_t>& words) {
    const auto* const first = reinterpret_cast<const uint8_t*>(words.data());
    return {first, first + words.size() * sizeof(int32_t)};
}
