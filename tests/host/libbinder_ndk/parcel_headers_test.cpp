// The header of a reply.
#include <android/binder_auto_utils.h>
#include <android/binder_parcel_utils.h>
#include <gtest/gtest.h>

namespace {

// Writes the words, then reads a status header; *left is what remains behind it.
binder_status_t readHeader(const std::vector<int32_t>& words, ndk::ScopedAStatus* status,
                           int32_t* left = nullptr) {
    ndk::ScopedAParcel parcel(AParcel_create());
    for (int32_t word : words) AParcel_writeInt32(parcel.get(), word);
    AParcel_setDataPosition(parcel.get(), 0);
    status->set(nullptr);
    binder_status_t result = AParcel_readStatusHeader(parcel.get(), status->getR());
    if (left != nullptr) {
        *left = AParcel_getDataSize(parcel.get()) - AParcel_getDataPosition(parcel.get());
    }
    return result;
}

ndk::ScopedAStatus roundTrip(const ndk::ScopedAStatus& status, int32_t size) {
    ndk::ScopedAParcel parcel(AParcel_create());
    EXPECT_EQ(AParcel_writeStatusHeader(parcel.get(), status.get()), STATUS_OK);
    EXPECT_EQ(AParcel_getDataSize(parcel.get()), size);
    AParcel_setDataPosition(parcel.get(), 0);
    ndk::ScopedAStatus back;
    EXPECT_EQ(AParcel_readStatusHeader(parcel.get(), back.getR()), STATUS_OK);
    EXPECT_EQ(AParcel_getDataPosition(parcel.get()), size);
    return back;
}

TEST(StatusHeader, CarriesExceptionMessageAndCode) {
    EXPECT_TRUE(roundTrip(ndk::ScopedAStatus::ok(), 4).isOk());
    ndk::ScopedAStatus specific = roundTrip(
            ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(1, "ILLEGAL_ARGUMENT"), 52);
    EXPECT_EQ(specific.getExceptionCode(), EX_SERVICE_SPECIFIC);
    EXPECT_EQ(specific.getServiceSpecificError(), 1);
    EXPECT_STREQ(specific.getMessage(), "ILLEGAL_ARGUMENT");
}

TEST(StatusHeader, OfATransportFailureIsTheFailureItself) {
    ndk::ScopedAParcel parcel(AParcel_create());
    ndk::ScopedAStatus dead = ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
    EXPECT_EQ(AParcel_writeStatusHeader(parcel.get(), dead.get()), STATUS_DEAD_OBJECT);
    EXPECT_EQ(AParcel_getDataSize(parcel.get()), 0);
}

TEST(StatusHeader, SkipsBlocksItDoesNotUse) {
    ndk::ScopedAStatus status;
    int32_t left = 0;
    ASSERT_EQ(readHeader({-128, 12, 1, 2, 77}, &status, &left), STATUS_OK);
    EXPECT_TRUE(status.isOk());
    EXPECT_EQ(left, 4) << "the value behind the header";
    // EX_SECURITY, empty message, a stack trace of 8 bytes that counts itself.
    ASSERT_EQ(readHeader({-1, 0, 0, 8, 99, 77}, &status, &left), STATUS_OK);
    EXPECT_EQ(status.getExceptionCode(), EX_SECURITY);
    EXPECT_EQ(left, 4);
    ASSERT_EQ(readHeader({-12345, 0, 0, 0}, &status), STATUS_OK);
    EXPECT_EQ(status.getExceptionCode(), EX_TRANSACTION_FAILED) << "unknown exceptions are pruned";
}

TEST(StatusHeader, ThatIsCutOrImpossibleIsRefused) {
    ndk::ScopedAStatus status;
    EXPECT_EQ(readHeader({}, &status), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(readHeader({-128}, &status), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(readHeader({-128, 3}, &status), STATUS_BAD_VALUE);
    EXPECT_EQ(readHeader({-128, -1}, &status), STATUS_BAD_VALUE);
    EXPECT_EQ(readHeader({-128, 0x7fffffff}, &status), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(readHeader({-3}, &status), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(readHeader({-3, -1}, &status), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(readHeader({-3, 0, 0}, &status), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(readHeader({-8, 0, 0, 0}, &status), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(status.get(), nullptr);
}

}  // namespace
