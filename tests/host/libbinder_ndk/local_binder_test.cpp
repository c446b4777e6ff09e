// Objects of the process itself: classes, calls, references, interfaces, and services by name.
#include <android/binder_ibinder_platform.h>
#include <android/binder_interface_utils.h>
#include <android/binder_manager.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_stability.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <thread>

#include "tests/host/libbinder_ndk/list_services.h"
#include "tests/host/libbinder_ndk/plain_class.h"

namespace {

// An interface as generated code has it, with one method: code 1, int32 -> int32 + 1.
class Counter : public ndk::BnCInterface<ndk::ICInterface> {
  public:
    static constexpr const char* kDescriptor = "test.ICounter";
    explicit Counter(bool* ended = nullptr) : m_ended(ended) {}
    ~Counter() override {
        if (m_ended != nullptr) *m_ended = true;
    }
    int32_t Next(int32_t value) { return value + 1; }

    static AIBinder_Class* Class() {
        static AIBinder_Class* const clazz = defineClass(kDescriptor, OnTransact);
        return clazz;
    }

  protected:
    ndk::SpAIBinder createBinder() override {
        return ndk::SpAIBinder(AIBinder_new(Class(), static_cast<ndk::ICInterface*>(this)));
    }

  private:
    static binder_status_t OnTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                                      AParcel* out) {
        int32_t value = 0;
        if (code != 1) return STATUS_UNKNOWN_TRANSACTION;
        binder_status_t status = AParcel_readInt32(in, &value);
        if (status != STATUS_OK) return status;
        auto self = std::static_pointer_cast<Counter>(asInterface(binder));
        return AParcel_writeInt32(out, self->Next(value));
    }

    bool* const m_ended;
};

ndk::SpAIBinder NewCounter() {
    return ndk::SharedRefBase::make<Counter>()->asBinder();
}

binder_status_t Transact(AIBinder* binder, transaction_code_t code, int32_t* value,
                         binder_flags_t flags = 0) {
    ndk::ScopedAParcel in;
    binder_status_t status = AIBinder_prepareTransaction(binder, in.getR());
    if (status != STATUS_OK) return status;
    AParcel_writeInt32(in.get(), *value);
    ndk::ScopedAParcel out;
    status = AIBinder_transact(binder, code, in.getR(), out.getR(), flags);
    EXPECT_EQ(in.get(), nullptr) << "the request is always taken";
    EXPECT_EQ(out.get() != nullptr, status == STATUS_OK);
    return status == STATUS_OK ? AParcel_readInt32(out.get(), value) : status;
}

TEST(LocalBinder, IsServedByItsImplementation) {
    auto counter = ndk::SharedRefBase::make<Counter>();
    ndk::SpAIBinder binder = counter->asBinder();
    EXPECT_FALSE(AIBinder_isRemote(binder.get()));
    EXPECT_EQ(ndk::ICInterface::asInterface(binder.get()), counter);
    EXPECT_EQ(AIBinder_getCallingPid(), getpid());
    int32_t value = 4;
    EXPECT_EQ(Transact(binder.get(), 1, &value), STATUS_OK);
    EXPECT_EQ(value, 5);
}

TEST(LocalBinder, ChecksCodesFlagsRequestsAndClass) {
    ndk::SpAIBinder binder = NewCounter();
    int32_t value = 0;
    for (transaction_code_t code : {2, 0, LAST_CALL_TRANSACTION + 1}) {
        EXPECT_EQ(Transact(binder.get(), code, &value), STATUS_UNKNOWN_TRANSACTION) << code;
    }
    EXPECT_EQ(Transact(binder.get(), 1, &value, 0x40), STATUS_BAD_VALUE);
    EXPECT_EQ(Transact(binder.get(), 1, &value, FLAG_CLEAR_BUF | FLAG_PRIVATE_VENDOR), STATUS_OK);
    EXPECT_EQ(Transact(nullptr, 1, &value), STATUS_UNEXPECTED_NULL);
    ndk::ScopedAParcel in;
    ndk::ScopedAParcel out;
    ASSERT_EQ(AIBinder_prepareTransaction(NewCounter().get(), in.getR()), STATUS_OK);
    EXPECT_EQ(AIBinder_transact(binder.get(), 1, in.getR(), out.getR(), 0), STATUS_BAD_VALUE)
            << "prepared for another object";
    EXPECT_TRUE(AIBinder_associateClass(binder.get(), Counter::Class()));
    EXPECT_FALSE(AIBinder_associateClass(binder.get(), newPlainClass(Counter::kDescriptor)));
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
    ndk::SpAIBinder binder = NewCounter();
    AIBinder_markVintfStability(binder.get());
    AIBinder_markVintfStability(binder.get());
    EXPECT_DEATH(AIBinder_markVendorStability(binder.get()), "");
}

ndk::SpAIBinder Check(const char* name) {
    return ndk::SpAIBinder(AServiceManager_checkService(name));
}

TEST(LocalServices, AreFoundReplacedAndWaitedFor) {
    ndk::SpAIBinder first = NewCounter();
    ndk::SpAIBinder second = NewCounter();
    EXPECT_EQ(Check("test.ICounter/a").get(), nullptr);
    EXPECT_EQ(AServiceManager_addService(first.get(), "test.ICounter/a"), EX_NONE);
    EXPECT_EQ(Check("test.ICounter/a"), first);
    EXPECT_TRUE(AServiceManager_isDeclared("test.ICounter/a"));
    EXPECT_EQ(AServiceManager_addService(second.get(), "test.ICounter/a"), EX_NONE);
    EXPECT_EQ(Check("test.ICounter/a"), second) << "the later one replaces";
    EXPECT_THAT(listServices(), testing::Contains("test.ICounter/a"));
    std::thread adder([&]() {
        EXPECT_EQ(AServiceManager_addService(first.get(), "test.ICounter/late"), EX_NONE);
    });
    EXPECT_EQ(ndk::SpAIBinder(AServiceManager_waitForService("test.ICounter/late")), first);
    adder.join();
}

TEST(LocalServices, HaveValidNames) {
    ndk::SpAIBinder service = NewCounter();
    EXPECT_EQ(AServiceManager_addService(nullptr, "x"), EX_ILLEGAL_ARGUMENT);
    EXPECT_EQ(AServiceManager_addService(service.get(), nullptr), EX_ILLEGAL_ARGUMENT);
    for (const std::string& name : {std::string(), std::string(128, 'a'), std::string("a b")}) {
        EXPECT_EQ(AServiceManager_addService(service.get(), name.c_str()), EX_ILLEGAL_ARGUMENT);
    }
    EXPECT_EQ(AServiceManager_addService(service.get(), std::string(127, 'a').c_str()), EX_NONE);
    EXPECT_EQ(Check(nullptr).get(), nullptr);
}

}  // namespace
