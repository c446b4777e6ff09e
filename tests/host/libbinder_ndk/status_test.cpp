// AStatus: what each constructor makes of its arguments.
#include <android/binder_auto_utils.h>
#include <gtest/gtest.h>

namespace {

TEST(Status, PrunesUnknownCodes) {
    EXPECT_EQ(ndk::ScopedAStatus::fromStatus(-77777).getStatus(), STATUS_UNKNOWN_ERROR);
    EXPECT_EQ(ndk::ScopedAStatus::fromStatus(1).getStatus(), STATUS_UNKNOWN_ERROR);
    EXPECT_EQ(ndk::ScopedAStatus::fromExceptionCode(-128).getExceptionCode(),
              EX_TRANSACTION_FAILED);
    EXPECT_EQ(ndk::ScopedAStatus::fromExceptionCode(5).getExceptionCode(), EX_TRANSACTION_FAILED);
}

TEST(Status, DescribesItself) {
    EXPECT_EQ(ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(3, "no").getDescription(),
              "Status(-8, EX_SERVICE_SPECIFIC): '3: no'");
    EXPECT_EQ(ndk::ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT).getDescription(),
              "Status(-129, EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '");
}

}  // namespace
