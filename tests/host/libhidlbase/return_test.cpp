// Return<T>: failures that nobody looks at end the process.
#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>

#include <string>

namespace {

using ::android::hardware::Return;
using ::android::hardware::Status;

Return<int> fails() {
    return Status::fromStatusT(::android::BAD_VALUE);
}

Return<void> dies() {
    return Status::fromStatusT(::android::DEAD_OBJECT);
}

TEST(Return, AnExaminedFailureIsHarmless) {
    EXPECT_EQ(static_cast<int>(Return<int>(5)), 5);
    EXPECT_EQ(fails().withDefault(7), 7);
    EXPECT_TRUE(dies().isDeadObject());
}

TEST(Return, AnIgnoredFailureAborts) {
    EXPECT_DEATH((void)fails(), "was ignored.*-22");
    EXPECT_DEATH((void)dies(), "was ignored.*-32");
    EXPECT_DEATH((void)fails().isOkUnchecked(), "was ignored");
    EXPECT_DEATH((void)fails().isDeadObject(), "was ignored");  // it was not dead: still unknown
}

TEST(Return, UsingTheValueOfAFailureAborts) {
    EXPECT_DEATH((void)static_cast<int>(fails()), "value of a failed HIDL call");
    EXPECT_DEATH(dies().assertOk(), "value of a failed HIDL call");
}

TEST(Return, MovingHandsOnTheDutyToLook) {
    Return<int> first = fails();
    Return<int> second = std::move(first);
    EXPECT_FALSE(second.isOk());
    EXPECT_DEATH(
            {
                Return<int> overwritten = fails();
                overwritten = Return<int>(1);
            },
            "was ignored");
}

TEST(Status, SaysWhatFailed) {
    const Status transport = Status::fromStatusT(::android::DEAD_OBJECT);
    EXPECT_EQ(transport.exceptionCode(), Status::EX_TRANSACTION_FAILED);
    EXPECT_EQ(transport.transactionError(), ::android::DEAD_OBJECT);
    const Status refused = Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "not locked");
    EXPECT_STREQ(refused.exceptionMessage(), "not locked");
    EXPECT_NE(refused.description().find("not locked"), std::string::npos);
}

}  // namespace
