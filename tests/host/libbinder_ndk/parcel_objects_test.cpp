// Binders and descriptors in parcels.
#include <android/binder_parcel_utils.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/libbinder_ndk/wire_format.h"
#include "tests/host/libbinder_ndk/plain_class.h"

namespace {

ndk::SpAIBinder newObject() {
    static AIBinder_Class* const clazz = newPlainClass("test.IObject");
    return ndk::SpAIBinder(AIBinder_new(clazz, nullptr));
}

class ParcelObjects : public testing::Test {
  protected:
    AParcel* parcel() { return mParcel.get(); }
    void rewind() { AParcel_setDataPosition(parcel(), 0); }
    ino_t inode(int fd) {
        struct stat info {};
        EXPECT_EQ(fstat(fd, &info), 0);
        return info.st_ino;
    }
    ndk::ScopedAParcel mParcel{AParcel_create()};
    ndk::SpAIBinder mObject = newObject();
    ndk::ScopedFileDescriptor mFile{memfd_create("test", MFD_CLOEXEC)};
};

TEST_F(ParcelObjects, KeepWhatTheyStandForUntilTheParcelGoes) {
    ASSERT_EQ(AParcel_writeStrongBinder(parcel(), mObject.get()), STATUS_OK);
    EXPECT_EQ(AIBinder_debugGetRefCount(mObject.get()), 2);
    ASSERT_EQ(AParcel_writeParcelFileDescriptor(parcel(), mFile.get()), STATUS_OK);
    const ino_t file = inode(mFile.get());
    mFile.set(-1);
    rewind();
    ndk::SpAIBinder binder;
    ndk::ScopedFileDescriptor fd;
    ASSERT_EQ(ndk::AParcel_readData(parcel(), &binder), STATUS_OK);
    ASSERT_EQ(ndk::AParcel_readData(parcel(), &fd), STATUS_OK);
    EXPECT_EQ(binder, mObject);
    EXPECT_EQ(inode(fd.get()), file);
    binder = nullptr;
    AParcel_reset(parcel());
    EXPECT_EQ(AIBinder_debugGetRefCount(mObject.get()), 1);
    EXPECT_EQ(inode(fd.get()), file) << "what was read is the reader's own";
}

TEST_F(ParcelObjects, MayBeNullWhereAllowed) {
    ASSERT_EQ(AParcel_writeStrongBinder(parcel(), nullptr), STATUS_OK);
    EXPECT_EQ(AParcel_getDataSize(parcel()), 28);
    ASSERT_EQ(AParcel_writeParcelFileDescriptor(parcel(), -1), STATUS_OK);
    EXPECT_EQ(AParcel_getDataSize(parcel()), 32);
    EXPECT_EQ(AParcel_writeParcelFileDescriptor(parcel(), -2), STATUS_UNKNOWN_ERROR);
    rewind();
    ndk::SpAIBinder binder = mObject;
    ndk::ScopedFileDescriptor fd;
    EXPECT_EQ(ndk::AParcel_readNullableData(parcel(), &binder), STATUS_OK);
    EXPECT_EQ(binder.get(), nullptr);
    EXPECT_EQ(ndk::AParcel_readNullableData(parcel(), &fd), STATUS_OK);
    EXPECT_EQ(fd.get(), -1);
    rewind();
    EXPECT_EQ(ndk::AParcel_readData(parcel(), &binder), STATUS_UNEXPECTED_NULL);
}

TEST_F(ParcelObjects, CannotBeForgedWithPlainBytes) {
    for (uint32_t type : {hostbinder::kBinderHandle, hostbinder::kDescriptor}) {
        AParcel_reset(parcel());
        AParcel_writeInt32(parcel(), 1);  // present, for a descriptor
        AParcel_writeInt32(parcel(), 0);
        AParcel_writeUint32(parcel(), type);
        for (int i = 0; i < 6; ++i) AParcel_writeInt32(parcel(), 0);
        rewind();
        int fd = -1;
        EXPECT_EQ(AParcel_readParcelFileDescriptor(parcel(), &fd), STATUS_BAD_TYPE);
        AParcel_setDataPosition(parcel(), 8);
        AIBinder* binder = nullptr;
        EXPECT_EQ(AParcel_readStrongBinder(parcel(), &binder), STATUS_BAD_TYPE);
    }
}

TEST_F(ParcelObjects, AreNotTakenForEachOther) {
    ASSERT_EQ(AParcel_writeStrongBinder(parcel(), mObject.get()), STATUS_OK);
    ASSERT_EQ(AParcel_writeParcelFileDescriptor(parcel(), mFile.get()), STATUS_OK);
    AIBinder* binder = nullptr;
    AParcel_setDataPosition(parcel(), 28 + 8);
    EXPECT_EQ(AParcel_readStrongBinder(parcel(), &binder), STATUS_BAD_TYPE);
    AParcel_setDataPosition(parcel(), 4);
    EXPECT_EQ(AParcel_readStrongBinder(parcel(), &binder), STATUS_BAD_TYPE);
    uint8_t bytes[8];
    EXPECT_EQ(AParcel_marshal(parcel(), bytes, 0, 8), STATUS_INVALID_OPERATION);
}

TEST_F(ParcelObjects, AreNotOverwritten) {
    AParcel_writeInt32(parcel(), 1);
    ASSERT_EQ(AParcel_writeStrongBinder(parcel(), mObject.get()), STATUS_OK);
    AParcel_setDataPosition(parcel(), 8);
    EXPECT_NE(AParcel_writeInt32(parcel(), 2), STATUS_OK);
    rewind();
    EXPECT_NE(AParcel_writeInt64(parcel(), 2), STATUS_OK);
    EXPECT_EQ(AParcel_writeInt32(parcel(), 2), STATUS_OK);
}

TEST_F(ParcelObjects, AreCopiedWithTheBytesOfAPart) {
    AParcel_writeInt32(parcel(), 7);
    ASSERT_EQ(AParcel_writeParcelFileDescriptor(parcel(), mFile.get()), STATUS_OK);  // at 4..36
    ASSERT_EQ(AParcel_writeStrongBinder(parcel(), mObject.get()), STATUS_OK);        // at 36..64
    ndk::ScopedAParcel part(AParcel_create());
    AParcel_writeInt64(part.get(), 1);
    ASSERT_EQ(AParcel_appendFrom(parcel(), part.get(), 4, 60), STATUS_OK);
    mParcel.set(nullptr);
    AParcel_setDataPosition(part.get(), 8);
    ndk::ScopedFileDescriptor fd;
    ndk::SpAIBinder binder;
    ASSERT_EQ(ndk::AParcel_readData(part.get(), &fd), STATUS_OK);
    ASSERT_EQ(ndk::AParcel_readData(part.get(), &binder), STATUS_OK);
    EXPECT_EQ(inode(fd.get()), inode(mFile.get()));
    EXPECT_EQ(binder, mObject);
    ASSERT_EQ(AParcel_appendFrom(part.get(), part.get(), 0, 68), STATUS_OK) << "onto itself";
    EXPECT_EQ(AParcel_getDataSize(part.get()), 136);
    for (auto [start, size] : {std::pair{0, 20}, std::pair{20, 40}, std::pair{60, 100}}) {
        EXPECT_EQ(AParcel_appendFrom(part.get(), part.get(), start, size), STATUS_BAD_VALUE);
    }
}

}  // namespace
