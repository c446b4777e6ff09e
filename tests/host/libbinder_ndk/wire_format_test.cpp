// The bytes of a request: they must stay what they are.
#include "host/libbinder_ndk/wire_format.h"

#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include "host/libbinder_ndk/parcel.h"
#include "tests/aidl/hex.h"
#include "tests/host/libbinder_ndk/plain_class.h"

namespace {

TEST(WireFormat, OfARequestWithEveryKindOfItem) {
    ndk::SpAIBinder object(AIBinder_new(newPlainClass("a.IB"), nullptr));
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
    EXPECT_EQ(ToHex(Bytes(p->data(), p->data() + p->size())),
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
