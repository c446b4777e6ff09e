// What comes out of a parcel and what is refused: values, arrays, text, objects, reply headers;
// and the bytes of a request.
#include "host/libbinder_ndk/parcel.h"

#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <limits>

#include "host/libbinder_ndk/wire_format.h"
#include "tests/aidl/hex.h"
#include "tests/host/libbinder_ndk/plain_class.h"

namespace {

constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();

struct Parcel {
    Parcel() = default;
    // Holds these words, and is at its start.
    explicit Parcel(const std::vector<int32_t>& words) {
        for (int32_t word : words) AParcel_writeInt32(get(), word);
        Rewind();
    }
    AParcel* get() const { return parcel.get(); }
    void Rewind() const { AParcel_setDataPosition(get(), 0); }
    int32_t Size() const { return AParcel_getDataSize(get()); }
    ndk::ScopedAParcel parcel{AParcel_create()};
};

enum class Small : int8_t { kLow = -3 };
enum class Large : int64_t { kValue = int64_t{1} << 40 };

struct Pair {
    int32_t number = 0;
    std::string text;
    bool operator==(const Pair& o) const { return number == o.number && text == o.text; }
    binder_status_t writeToParcel(AParcel* parcel) const {
        ndk::AParcel_writeData(parcel, number);
        return ndk::AParcel_writeData(parcel, text);
    }
    binder_status_t readFromParcel(const AParcel* parcel) {
        binder_status_t status = ndk::AParcel_readData(parcel, &number);
        return status == STATUS_OK ? ndk::AParcel_readData(parcel, &text) : status;
    }
};

// Writes, checks the size, reads back all of it; then every shorter parcel must fail to read.
template <typename T>
void ExpectRoundTrip(const T& value, int32_t size) {
    Parcel parcel;
    ASSERT_EQ(ndk::AParcel_writeData(parcel.get(), value), STATUS_OK);
    EXPECT_EQ(parcel.Size(), size);
    parcel.Rewind();
    T back{};
    ASSERT_EQ(ndk::AParcel_readData(parcel.get(), &back), STATUS_OK);
    EXPECT_TRUE(back == value);
    EXPECT_EQ(AParcel_getDataPosition(parcel.get()), size);
    for (int32_t shorter = 0; shorter < size; shorter += 4) {
        Parcel cut;
        ASSERT_EQ(AParcel_appendFrom(parcel.get(), cut.get(), 0, shorter), STATUS_OK);
        cut.Rewind();
        T none{};
        const binder_status_t status = ndk::AParcel_readData(cut.get(), &none);
        EXPECT_TRUE(status == STATUS_NOT_ENOUGH_DATA || status == STATUS_NO_MEMORY)
                << status << " at " << shorter;
    }
}

TEST(ParcelValues, ComeOutAsTheyWentIn) {
    ExpectRoundTrip(true, 4);
    ExpectRoundTrip(-2.25, 8);
    ExpectRoundTrip(Small::kLow, 4);
    ExpectRoundTrip(Large::kValue, 8);
    ExpectRoundTrip(std::vector<uint8_t>{1, 2, 3, 4, 5}, 12);
    ExpectRoundTrip(std::vector<Large>{Large::kValue}, 12);
    ExpectRoundTrip(std::vector<std::string>{"", "abc"}, 4 + 8 + 12);
    ExpectRoundTrip(std::vector<Pair>{{1, "x"}, {2, ""}}, 4 + (4 + 4 + 8) + (4 + 4 + 8));
    ExpectRoundTrip(std::array<int32_t, 3>{{1, 2, 3}}, 16);
}

template <typename T>
binder_status_t Read(const std::vector<int32_t>& words) {
    T value;
    return ndk::AParcel_readData(Parcel(words).get(), &value);
}

TEST(ParcelText, IsUtf8OutsideAndUtf16Inside) {
    ExpectRoundTrip(std::string("ILLEGAL_ARGUMENT"), 40);
    ExpectRoundTrip(std::string("\xe2\x82\xac"), 8);          // 1 unit
    ExpectRoundTrip(std::string("\xf0\x9f\x93\xb7"), 4 + 8);  // 2 units
    ExpectRoundTrip(std::string("a\0b", 3), 12);
    for (const char* cut : {"\xff", "\xc3", "\xe2\x82"}) {
        Parcel parcel;
        EXPECT_EQ(ndk::AParcel_writeData(parcel.get(), std::string(cut)), STATUS_BAD_VALUE) << cut;
        EXPECT_EQ(parcel.Size(), 0);
    }
    std::string text;
    EXPECT_EQ(ndk::AParcel_readData(Parcel({2, 0xd800 | 'x' << 16, 0}).get(), &text), STATUS_OK);
    EXPECT_EQ(text, "x") << "half of a pair is left out";
    EXPECT_EQ(Read<std::string>({1, 0x00410041}), STATUS_BAD_VALUE) << "no NUL at the end";
    EXPECT_EQ(Read<std::string>({-2}), STATUS_BAD_VALUE);
    EXPECT_EQ(Read<std::string>({-1}), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(Read<std::string>({kLargest}), STATUS_NOT_ENOUGH_DATA);
}

TEST(ParcelArray, HasALengthWithinBounds) {
    EXPECT_EQ(Read<std::vector<int64_t>>({-2, 0, 0}), STATUS_BAD_VALUE);
    EXPECT_EQ(Read<std::vector<std::string>>({-2, 0, 0}), STATUS_BAD_VALUE);
    EXPECT_EQ(Read<std::vector<int32_t>>({-1}), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(Read<std::vector<uint8_t>>({9, 0, 0}), STATUS_NO_MEMORY);
    EXPECT_EQ(Read<std::vector<Pair>>({kLargest, 0, 0}), STATUS_NO_MEMORY);
    EXPECT_EQ((Read<std::array<int32_t, 2>>({3, 0, 0, 0})), STATUS_NO_MEMORY);
}

// As many elements as bytes are left, though each takes more than one byte.
TEST(ParcelArray, IsBoundedByItsElementsSizeBeforeMemoryIsTaken) {
    bool asked = false;
    const auto resize = [](void* asked, int32_t) {
        *static_cast<bool*>(asked) = true;
        return false;
    };
    const auto allocate = [](void* asked, int32_t, int64_t**) {
        *static_cast<bool*>(asked) = true;
        return false;
    };
    EXPECT_EQ(AParcel_readInt64Array(Parcel({2, 0, 0}).get(), &asked, allocate),
              STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(AParcel_readParcelableArray(Parcel({3, 0, 0}).get(), &asked, resize, nullptr),
              STATUS_NOT_ENOUGH_DATA);
    EXPECT_FALSE(asked);
}

TEST(ParcelPosition, MayBeBehindTheEndWithoutReadingOrWritingThere) {
    Parcel parcel({0, 2});
    int32_t value = 0;
    AParcel_setDataPosition(parcel.get(), 1000);
    EXPECT_EQ(AParcel_readInt32(parcel.get(), &value), STATUS_NOT_ENOUGH_DATA);
    EXPECT_NE(AParcel_writeInt32(parcel.get(), 3), STATUS_OK);
}

TEST(ParcelObjects, AreKeptUntilTheParcelGoesAndNotTakenForEachOther) {
    bool ended = false;
    ndk::SpAIBinder object(AIBinder_new(NewPlainClass("test.IObject"), &ended));
    ndk::ScopedFileDescriptor file(memfd_create("test", MFD_CLOEXEC));
    Parcel parcel;
    ASSERT_EQ(AParcel_writeStrongBinder(parcel.get(), object.get()), STATUS_OK);
    ASSERT_EQ(ndk::AParcel_writeData(parcel.get(), file), STATUS_OK);
    object = nullptr;
    file.set(-1);
    parcel.Rewind();
    EXPECT_FALSE(ended);
    ASSERT_EQ(ndk::AParcel_readNullableStrongBinder(parcel.get(), &object), STATUS_OK);
    ASSERT_EQ(ndk::AParcel_readData(parcel.get(), &file), STATUS_OK);
    AParcel_setDataPosition(parcel.get(), 28 + 8);
    EXPECT_EQ(ndk::AParcel_readNullableStrongBinder(parcel.get(), &object), STATUS_BAD_TYPE);
    object = nullptr;
    EXPECT_FALSE(ended);
    parcel.parcel.set(nullptr);
    EXPECT_TRUE(ended);
    EXPECT_GE(fcntl(file.get(), F_GETFD), 0) << "what was read is the reader's own";
}

TEST(ParcelObjects, MayBeNullWhereAllowedAndCannotBeForged) {
    Parcel parcel;
    ndk::SpAIBinder binder;
    ndk::ScopedFileDescriptor file;
    EXPECT_EQ(AParcel_writeStrongBinder(parcel.get(), nullptr), STATUS_OK);
    EXPECT_EQ(AParcel_writeParcelFileDescriptor(parcel.get(), -1), STATUS_OK);
    EXPECT_EQ(parcel.Size(), 28 + 4);
    EXPECT_EQ(ndk::AParcel_writeData(parcel.get(), file), STATUS_UNEXPECTED_NULL);
    parcel.Rewind();
    EXPECT_EQ(ndk::AParcel_readNullableStrongBinder(parcel.get(), &binder), STATUS_OK);
    EXPECT_EQ(binder.get(), nullptr);
    EXPECT_EQ(ndk::AParcel_readData(parcel.get(), &file), STATUS_UNEXPECTED_NULL);
    const auto descriptor = static_cast<int32_t>(hostbinder::kDescriptor);
    EXPECT_EQ(Read<ndk::ScopedFileDescriptor>({1, 0, descriptor, 0, 0, 0, 0, 0}), STATUS_BAD_TYPE);
    const auto handle = static_cast<int32_t>(hostbinder::kBinderHandle);
    EXPECT_EQ(ndk::AParcel_readNullableStrongBinder(Parcel({handle, 0, 0, 0, 0, 0, 12}).get(),
                                                    &binder),
              STATUS_BAD_TYPE);
}

TEST(StatusHeader, CarriesExceptionMessageAndCode) {
    Parcel parcel;
    const auto sent = ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(3, "no");
    EXPECT_EQ(AParcel_writeStatusHeader(parcel.get(), sent.get()), STATUS_OK);
    parcel.Rewind();
    ndk::ScopedAStatus back;
    EXPECT_EQ(AParcel_readStatusHeader(parcel.get(), back.getR()), STATUS_OK);
    EXPECT_EQ(back.getDescription(), "Status(-8, EX_SERVICE_SPECIFIC): '3: no'");
    const auto dead = ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    EXPECT_EQ(dead.getDescription(), "Status(-129, EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '");
    EXPECT_EQ(AParcel_writeStatusHeader(Parcel().get(), dead.get()), STATUS_DEAD_OBJECT);
}

TEST(StatusHeader, SkipsWhatItDoesNotUseAndRefusesWhatIsImpossible) {
    const std::vector<std::pair<std::vector<int32_t>, binder_status_t>> headers = {
            {{0}, STATUS_OK},
            {{-128, 12, 1, 2}, STATUS_OK},
            {{-1, 0, 0, 8, 99}, STATUS_OK},  // 8 bytes of stack trace
            {{-12345, 0, 0, 0}, STATUS_OK},
            {{}, STATUS_NOT_ENOUGH_DATA},
            {{-128, 3}, STATUS_BAD_VALUE},
            {{-128, kLargest}, STATUS_NOT_ENOUGH_DATA},
            {{-3, -1}, STATUS_UNEXPECTED_NULL},
            {{-8, 0, 0, 0}, STATUS_NOT_ENOUGH_DATA},
    };
    for (const auto& [words, result] : headers) {
        Parcel parcel(words);
        ndk::ScopedAStatus status;
        EXPECT_EQ(AParcel_readStatusHeader(parcel.get(), status.getR()), result);
        EXPECT_EQ(status.get() != nullptr, result == STATUS_OK);
        if (result == STATUS_OK) EXPECT_EQ(AParcel_getDataPosition(parcel.get()), parcel.Size());
    }
}

// They must stay what they are.
TEST(WireFormat, HasTheseBytesForARequestWithEveryKindOfItem) {
    ndk::SpAIBinder object(AIBinder_new(NewPlainClass("a.IB"), nullptr));
    AIBinder_markVintfStability(object.get());
    ndk::ScopedAParcel parcel;
    ASSERT_EQ(AIBinder_prepareTransaction(object.get(), parcel.getR()), STATUS_OK);
    AParcel* p = parcel.get();
    ndk::AParcel_writeData(p, int8_t{-2});
    ndk::AParcel_writeData(p, int64_t{0x0102030405060708});
    ndk::AParcel_writeData(p, std::string("h\xc3\xa9"));
    AParcel_writeString(p, nullptr, -1);
    ndk::AParcel_writeData(p, std::vector<uint8_t>{1, 2, 3, 4, 5});
    AParcel_writeStrongBinder(p, object.get());
    AParcel_writeStrongBinder(p, nullptr);
    ndk::ScopedFileDescriptor file(memfd_create("test", MFD_CLOEXEC));
    AParcel_writeParcelFileDescriptor(p, file.get());
    AParcel_writeStatusHeader(
            p, ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(1, "A").get());
    EXPECT_EQ(ToHex(Bytes(p->Data(), p->Data() + p->Size())),
              "00000080 ffffffff 54535953 04000000 61002e00 49004200 00000000 "  // "a.IB"
              "feffffff "                                                        // byte
              "08070605 04030201 "                                               // long, at 32
              "02000000 6800e900 00000000 "                                      // String
              "ffffffff "                                                        // null String
              "05000000 01020304 05000000 "                                      // byte[]
              "852a6873 00000000 00000000 00000000 00000000 00000000 3f000000 "  // binder
              "852a6273 00000000 00000000 00000000 00000000 00000000 00000000 "  // null binder
              "01000000 00000000 "                                               // descriptor:
              "852a6466 00000000 00000000 00000000 00000000 00000000 "           // its record
              "f8ffffff 01000000 41000000 00000000 01000000");                   // status header
}

}  // namespace
