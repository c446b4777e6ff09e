// Objects of the process itself: calls, classes and references.
#include <android/binder_auto_utils.h>
#include <android/binder_ibinder_platform.h>
#include <android/binder_stability.h>
#include <gtest/gtest.h>

#include "tests/host/libbinder_ndk/plain_class.h"

namespace {

AIBinder_Class* Class() {
    static AIBinder_Class* const clazz = NewPlainClass("test.IObject");
    return clazz;
}

ndk::SpAIBinder NewObject(bool* ended = nullptr) {
    return ndk::SpAIBinder(AIBinder_new(Class(), ended));
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
    ndk::SpAIBinder object = NewObject();
    AIBinder* const binder = object.get();
    EXPECT_FALSE(AIBinder_isRemote(binder));
    EXPECT_EQ(Transact(binder, binder, 1, FLAG_CLEAR_BUF | FLAG_PRIVATE_VENDOR), STATUS_OK);
    EXPECT_EQ(Transact(binder, binder, 0), STATUS_UNKNOWN_TRANSACTION);
    EXPECT_EQ(Transact(binder, binder, LAST_CALL_TRANSACTION + 1), STATUS_UNKNOWN_TRANSACTION);
    EXPECT_EQ(Transact(binder, binder, 1, 0x40), STATUS_BAD_VALUE);
    EXPECT_EQ(Transact(nullptr, binder, 1), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(Transact(NewObject().get(), binder, 1), STATUS_BAD_VALUE);
    EXPECT_TRUE(AIBinder_associateClass(binder, Class()));
    EXPECT_FALSE(AIBinder_associateClass(binder, NewPlainClass("test.IObject")));
}

TEST(LocalBinder, EndsWithItsLastStrongReference) {
    bool ended = false;
    ndk::SpAIBinder binder = NewObject(&ended);
    ndk::ScopedAIBinder_Weak weak(AIBinder_Weak_new(binder.get()));
    EXPECT_EQ(weak.promote(), binder);
    EXPECT_FALSE(ended);
    binder = nullptr;
    EXPECT_TRUE(ended);
    EXPECT_EQ(weak.promote().get(), nullptr);
}

}  // namespace
