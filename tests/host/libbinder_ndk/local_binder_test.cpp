// Objects of the process itself: classes, calls, references and interfaces.
#include <android/binder_ibinder_platform.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <android/binder_to_string.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/host/libbinder_ndk/plain_class.h"

namespace {

// An interface as generated code has it, with one method: code 1, int32 -> int32 + 1.
class ICounter : public ndk::ICInterface {
  public:
    static constexpr const char* descriptor = "test.ICounter";
    static AIBinder_Class* clazz();
    virtual int32_t next(int32_t value) = 0;
};

class BnCounter : public ndk::BnCInterface<ICounter> {
  protected:
    ndk::SpAIBinder createBinder() override {
        return ndk::SpAIBinder(AIBinder_new(ICounter::clazz(), static_cast<void*>(this)));
    }
};

AIBinder_Class* ICounter::clazz() {
    static AIBinder_Class* const clazz =
            defineClass(descriptor,
                        [](AIBinder* binder, transaction_code_t code, const AParcel* in,
                           AParcel* out) -> binder_status_t {
                            if (code != 1) return STATUS_UNKNOWN_TRANSACTION;
                            int32_t value = 0;
                            binder_status_t status = AParcel_readInt32(in, &value);
                            if (status != STATUS_OK) return status;
                            auto self = std::static_pointer_cast<BnCounter>(asInterface(binder));
                            return AParcel_writeInt32(out, self->next(value));
                        });
    return clazz;
}

class Counter : public BnCounter {
  public:
    explicit Counter(bool* ended = nullptr) : mEnded(ended) {}
    ~Counter() override {
        if (mEnded != nullptr) *mEnded = true;
    }
    int32_t next(int32_t value) override { return value + 1; }

  private:
    bool* mEnded;
};

binder_status_t transact(AIBinder* binder, transaction_code_t code, int32_t value, int32_t* answer,
                         binder_flags_t flags = 0) {
    ndk::ScopedAParcel in;
    binder_status_t status = AIBinder_prepareTransaction(binder, in.getR());
    if (status != STATUS_OK) return status;
    AParcel_writeInt32(in.get(), value);
    ndk::ScopedAParcel out;
    status = AIBinder_transact(binder, code, in.getR(), out.getR(), flags);
    EXPECT_EQ(in.get(), nullptr) << "the request is always taken";
    EXPECT_EQ(out.get() != nullptr, status == STATUS_OK);
    return status == STATUS_OK ? AParcel_readInt32(out.get(), answer) : status;
}

TEST(LocalBinder, IsServedOnTheCallersThread) {
    auto counter = ndk::SharedRefBase::make<Counter>();
    ndk::SpAIBinder binder = counter->asBinder();
    EXPECT_FALSE(AIBinder_isRemote(binder.get()));
    EXPECT_TRUE(AIBinder_isAlive(binder.get()));
    EXPECT_EQ(AIBinder_ping(binder.get()), STATUS_OK);
    EXPECT_EQ(ndk::ICInterface::asInterface(binder.get()), counter);
    EXPECT_FALSE(AIBinder_isHandlingTransaction());
    EXPECT_EQ(AIBinder_getCallingPid(), getpid());
    int32_t answer = 0;
    EXPECT_EQ(transact(binder.get(), 1, 4, &answer), STATUS_OK);
    EXPECT_EQ(answer, 5);
}

TEST(LocalBinder, ChecksCodesFlagsAndRequests) {
    ndk::SpAIBinder binder = ndk::SharedRefBase::make<Counter>()->asBinder();
    int32_t answer = 0;
    EXPECT_EQ(transact(binder.get(), 2, 0, &answer), STATUS_UNKNOWN_TRANSACTION);
    EXPECT_EQ(transact(binder.get(), 0, 0, &answer), STATUS_UNKNOWN_TRANSACTION);
    EXPECT_EQ(transact(binder.get(), LAST_CALL_TRANSACTION + 1, 0, &answer),
              STATUS_UNKNOWN_TRANSACTION);
    EXPECT_EQ(transact(binder.get(), 1, 0, &answer, 0x40), STATUS_BAD_VALUE);
    EXPECT_EQ(transact(binder.get(), 1, 0, &answer, FLAG_CLEAR_BUF | FLAG_PRIVATE_VENDOR),
              STATUS_OK);
    EXPECT_EQ(transact(nullptr, 1, 0, &answer), STATUS_UNEXPECTED_NULL);
    ndk::SpAIBinder other = ndk::SharedRefBase::make<Counter>()->asBinder();
    ndk::ScopedAParcel in;
    ndk::ScopedAParcel out;
    ASSERT_EQ(AIBinder_prepareTransaction(other.get(), in.getR()), STATUS_OK);
    EXPECT_EQ(AIBinder_transact(binder.get(), 1, in.getR(), out.getR(), 0), STATUS_BAD_VALUE);
    EXPECT_EQ(in.get(), nullptr);
}

TEST(LocalBinder, HasOnlyTheClassItWasMadeWith) {
    ndk::SpAIBinder binder = ndk::SharedRefBase::make<Counter>()->asBinder();
    EXPECT_TRUE(AIBinder_associateClass(binder.get(), ICounter::clazz()));
    EXPECT_FALSE(AIBinder_associateClass(binder.get(), newPlainClass(ICounter::descriptor)));
}

TEST(LocalBinder, KeepsTheImplementationAliveAndNotTheOtherWayRound) {
    bool ended = false;
    auto counter = ndk::SharedRefBase::make<Counter>(&ended);
    ndk::SpAIBinder binder = counter->asBinder();
    EXPECT_EQ(counter->asBinder(), binder) << "one binder while it is in use";
    counter = nullptr;
    EXPECT_FALSE(ended);
    ndk::ScopedAIBinder_Weak weak(AIBinder_Weak_new(binder.get()));
    EXPECT_EQ(weak.promote(), binder);
    binder = nullptr;
    EXPECT_TRUE(ended);
    EXPECT_EQ(weak.promote().get(), nullptr);
}

TEST(LocalBinderDeathTest, StabilityIsDeclaredOnce) {
    ndk::SpAIBinder binder = ndk::SharedRefBase::make<Counter>()->asBinder();
    AIBinder_markVintfStability(binder.get());
    AIBinder_markVintfStability(binder.get());
    EXPECT_DEATH(AIBinder_markVendorStability(binder.get()), "");
}

TEST(ToString, ShowsEveryKindOfValue) {
    using ::android::internal::ToString;
    EXPECT_EQ(ToString(true), "true");
    EXPECT_EQ(ToString(int8_t{-1}), "-1");
    EXPECT_EQ(ToString(u'\u00e9'), "\xc3\xa9");
    EXPECT_EQ(ToString(std::vector<std::string>{"a", "b"}), "[a, b]");
    EXPECT_EQ(ToString(std::optional<int32_t>()), "(null)");
    EXPECT_EQ(ToString(std::optional<std::vector<bool>>({{false}})), "[false]");
    EXPECT_EQ(ToString(ndk::ScopedFileDescriptor()), "fd:-1");
}

}  // namespace
