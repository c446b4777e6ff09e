// What comes out of a parcel and what is refused: values, arrays, text, objects, reply headers; the
// bytes of a request; and objects of the process itself.
#include "host/libbinder_ndk/parcel.h"

#include <android/binder_ibinder_platform.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <sys/mman.h>

#include <limits>

#include "host/libbinder_ndk/wire_format.h"
#include "tests/aidl/hex.h"
#include "tests/host/aidlc/parcels.h"
#include "tests/host/libbinder_ndk/plain_class.h"

namespace {

constexpr int32_t kLargest = std::numeric_limits<int32_t>::max();

// A parcel of these words, at its start.
ndk::ScopedAParcel Parcel(const std::vector<int32_t>& words) {
    return ParcelOf(Words(words));
}

template <typename T>
binder_status_t Read(const std::vector<int32_t>& words) {
    T value;
    return ndk::AParcel_readData(Parcel(words).get(), &value);
}

constexpr auto kHandle = static_cast<int32_t>(hostbinder::kBinderHandle);
constexpr auto kFile = static_cast<int32_t>(hostbinder::kDescriptor);

struct MalformedCase {
    const char* what;
    binder_status_t (*read)(const std::vector<int32_t>& words);
    std::vector<int32_t> words;
    binder_status_t status;
};

binder_status_t ReadBinder(const std::vector<int32_t>& words) {
    ndk::SpAIBinder binder;
    return ndk::AParcel_readNullableStrongBinder(Parcel(words).get(), &binder);
}

// Each as a device has it.
TEST(MalformedParcel, IsRefusedWithTheStatusOfItsKind) {
    using File = ndk::ScopedFileDescriptor;
    using Texts = std::vector<std::string>;
    for (const MalformedCase& c : std::vector<MalformedCase>{
                 {"number that is cut off", Read<int64_t>, {1}, STATUS_NOT_ENOUGH_DATA},
                 {"string that is null", Read<std::string>, {-1}, STATUS_UNEXPECTED_NULL},
                 {"string below null", Read<std::string>, {-2}, STATUS_UNEXPECTED_NULL},
                 {"string without a length", Read<std::string>, {}, STATUS_UNEXPECTED_NULL},
                 {"string that is cut off", Read<std::string>, {2, 'x'}, STATUS_UNEXPECTED_NULL},
                 {"string of any length", Read<std::string>, {kLargest}, STATUS_UNEXPECTED_NULL},
                 {"string with no end", Read<std::string>, {1, 0x410041}, STATUS_UNEXPECTED_NULL},
                 {"array below null", Read<std::vector<int64_t>>, {-2, 0, 0}, STATUS_BAD_VALUE},
                 {"array of text below null", Read<Texts>, {-2, 0}, STATUS_BAD_VALUE},
                 {"array that is null", Read<std::vector<int32_t>>, {-1}, STATUS_NO_MEMORY},
                 {"array that is cut off", Read<std::vector<uint8_t>>, {9, 0, 0}, STATUS_NO_MEMORY},
                 {"array of any length", Read<Texts>, {kLargest}, STATUS_NO_MEMORY},
                 {"text in one", Read<Texts>, {1, 5}, STATUS_UNEXPECTED_NULL},
                 {"fixed array", Read<std::array<int32_t, 2>>, {3, 0, 0, 0}, STATUS_NO_MEMORY},
                 {"no object", ReadBinder, {}, STATUS_BAD_TYPE},
                 {"object that is cut off", ReadBinder, {kHandle, 0, 0, 0, 0}, STATUS_BAD_TYPE},
                 {"forged object", ReadBinder, {kHandle, 0, 0, 0, 0, 0, 12}, STATUS_BAD_TYPE},
                 {"no descriptor", Read<File>, {}, STATUS_NOT_ENOUGH_DATA},
                 {"descriptor that is null", Read<File>, {0}, STATUS_UNEXPECTED_NULL},
                 {"descriptor that is cut off", Read<File>, {1}, STATUS_BAD_TYPE},
                 {"forged descriptor", Read<File>, {1, 0, kFile, 0, 0, 0, 0, 0}, STATUS_BAD_TYPE},
         }) {
        EXPECT_EQ(c.read(c.words), c.status) << c.what;
    }
    std::string text;
    EXPECT_EQ(ndk::AParcel_readData(Parcel({2, 0xd800 | 'x' << 16, 0}).get(), &text), STATUS_OK);
    EXPECT_EQ(text, "x") << "half of a pair is left out";
}

TEST(Parcel, WritesNothingThatCannotBeRead) {
    ndk::ScopedAParcel parcel(AParcel_create());
    AParcel* const p = parcel.get();
    for (const char* cut : {"\xff", "\xc3", "\xe2\x82"}) {
        EXPECT_EQ(ndk::AParcel_writeData(p, std::string(cut)), STATUS_BAD_VALUE) << cut;
    }
    EXPECT_EQ(AParcel_writeParcelFileDescriptor(p, 1 << 20), STATUS_UNKNOWN_ERROR);
    EXPECT_EQ(ndk::AParcel_writeData(p, ndk::ScopedFileDescriptor()), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(AParcel_getDataSize(p), 0);
    AParcel_setDataPosition(p, 1000);
    int32_t value = 0;
    EXPECT_EQ(AParcel_readInt32(p, &value), STATUS_NOT_ENOUGH_DATA);
    EXPECT_NE(AParcel_writeInt32(p, 3), STATUS_OK);
    EXPECT_EQ(AParcel_getDataSize(p), 1000) << "a position counts as a size";
}

// As many elements as bytes are left, though each takes more than one byte.
TEST(ParcelArray, IsBoundedByItsElementsSizeBeforeMemoryIsTaken) {
    bool asked = false;
    const auto allocate = [](void* asked, int32_t, int64_t**) {
        return *static_cast<bool*>(asked) = true;
    };
    EXPECT_EQ(AParcel_readInt64Array(Parcel({2, 0, 0}).get(), &asked, allocate), STATUS_NO_MEMORY);
    EXPECT_FALSE(asked);
}

TEST(StatusHeader, IsReadWithWhatItSkipsAndRefusedIfImpossible) {
    const std::vector<std::pair<std::vector<int32_t>, binder_status_t>> headers = {
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
        const ndk::ScopedAParcel parcel = Parcel(words);
        ndk::ScopedAStatus status;
        EXPECT_EQ(AParcel_readStatusHeader(parcel.get(), status.getR()), result);
        if (result != STATUS_OK) continue;
        EXPECT_EQ(AParcel_getDataPosition(parcel.get()), AParcel_getDataSize(parcel.get()));
    }
    const auto error = ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(3, "no");
    EXPECT_EQ(error.getDescription(), "Status(-8, EX_SERVICE_SPECIFIC): '3: no'");
    const auto dead = ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    EXPECT_EQ(dead.getDescription(), "Status(-129, EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '");
    EXPECT_EQ(AParcel_writeStatusHeader(Parcel({}).get(), dead.get()), STATUS_DEAD_OBJECT);
}

// They must stay what they are. Other items: tests/aidl/wire_bytes_test.cpp.
TEST(WireFormat, HasTheseBytesForARequestWithObjects) {
    ndk::SpAIBinder object(AIBinder_new(NewPlainClass("a.IB"), nullptr));
    AIBinder_markVintfStability(object.get());
    ndk::ScopedAParcel parcel;
    ASSERT_EQ(AIBinder_prepareTransaction(object.get(), parcel.getR()), STATUS_OK);
    AParcel* p = parcel.get();
    ndk::AParcel_writeData(p, int8_t{-2});
    AParcel_writeString(p, nullptr, -1);
    AParcel_writeStrongBinder(p, object.get());
    AParcel_writeStrongBinder(p, nullptr);
    ndk::ScopedFileDescriptor file(memfd_create("test", MFD_CLOEXEC));
    AParcel_writeParcelFileDescriptor(p, file.get());
    AParcel_writeStatusHeader(
            p, ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(1, "A").get());
    EXPECT_EQ(ToHex(Bytes(p->Data(), p->Data() + p->Size())),
              "00000080 ffffffff 54535953 04000000 61002e00 49004200 00000000 "  // "a.IB"
              "feffffff ffffffff "                                               // byte, no String
              "852a6873 00000000 00000000 00000000 00000000 00000000 3f000000 "  // binder, at 36
              "852a6273 13000000 00000000 00000000 00000000 00000000 00000000 "  // null binder
              "01000000 00000000 "                                               // descriptor:
              "852a6466 00000000 00000000 00000000 00000000 00000000 "           // its record
              "f8ffffff 01000000 41000000 00000000 01000000");                   // status header
    AParcel_setDataPosition(p, 36);
    ndk::SpAIBinder binder;
    EXPECT_EQ(ndk::AParcel_readNullableStrongBinder(p, &binder), STATUS_OK);
    EXPECT_EQ(binder, static_cast<const AIBinder*>(object.get()));
    EXPECT_EQ(ndk::AParcel_readNullableStrongBinder(p, &binder), STATUS_OK);
    EXPECT_EQ(binder, nullptr);
    AParcel_setDataPosition(p, 36 + 28 + 28 + 8);
    EXPECT_EQ(ndk::AParcel_readNullableStrongBinder(p, &binder), STATUS_BAD_TYPE);
}

// Calls with a request that was prepared for `prepared`.
binder_status_t Transact(AIBinder* prepared, AIBinder* binder, transaction_code_t code,
                         binder_flags_t flags = 0) {
    ndk::ScopedAParcel in;
    binder_status_t status = AIBinder_prepareTransaction(prepared, in.getR());
    if (status != STATUS_OK) return status;
    ndk::ScopedAParcel out;
    status = AIBinder_transact(binder, code, in.getR(), out.getR(), flags);
    EXPECT_EQ(in.get(), nullptr) << "the request is always taken";
    EXPECT_EQ(out.get() != nullptr, status == STATUS_OK);
    return status;
}

TEST(LocalBinder, ChecksCodesFlagsRequestsAndClass) {
    AIBinder_Class* const clazz = NewPlainClass("test.IObject");
    const ndk::SpAIBinder object(AIBinder_new(clazz, nullptr));
    const ndk::SpAIBinder other(AIBinder_new(clazz, nullptr));
    AIBinder* const binder = object.get();
    EXPECT_FALSE(AIBinder_isRemote(binder));
    EXPECT_EQ(Transact(binder, binder, 1, FLAG_CLEAR_BUF | FLAG_PRIVATE_VENDOR), STATUS_OK);
    EXPECT_EQ(Transact(binder, binder, 0), STATUS_UNKNOWN_TRANSACTION);
    EXPECT_EQ(Transact(binder, binder, LAST_CALL_TRANSACTION + 1), STATUS_UNKNOWN_TRANSACTION);
    EXPECT_EQ(Transact(binder, binder, 1, 0x40), STATUS_BAD_VALUE);
    EXPECT_EQ(Transact(nullptr, binder, 1), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(Transact(other.get(), binder, 1), STATUS_BAD_VALUE);
    EXPECT_TRUE(AIBinder_associateClass(binder, clazz));
    EXPECT_FALSE(AIBinder_associateClass(binder, NewPlainClass("test.IObject")));
}

}  // namespace
