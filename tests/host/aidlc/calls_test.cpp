// Generated interfaces: calls through parcels to an object of this process, and what bad requests
// do.
#include <aidl/standin/aidltest/BnWorker.h>
#include <aidl/standin/aidltest/BpWorker.h>
#include <gmock/gmock.h>

namespace aidl::standin::aidltest {
namespace {

using ndk::ScopedAStatus;
using testing::ElementsAre;

class Worker : public BnWorker {
  public:
    ScopedAStatus add(int32_t a, int32_t b, int32_t* sum) override {
        calls++;
        if (a != 0 || b != 0) *sum = a + b;
        return ScopedAStatus::ok();
    }
    ScopedAStatus fill(std::vector<int32_t>* numbers, RecordV1* record) override {
        for (size_t i = 0; i < numbers->size(); i++) (*numbers)[i] = static_cast<int32_t>(i) * 10;
        record->number = 1;
        return ScopedAStatus::ok();
    }
    ScopedAStatus post(int32_t value) override {
        posted = value;
        return ScopedAStatus::fromServiceSpecificError(1);
    }

    int calls = 0;
    int32_t posted = 0;
};

class CallsTest : public testing::Test {
  protected:
    // Sends words behind a correct header and gives the transport's status.
    binder_status_t Send(uint32_t code, const std::vector<int32_t>& words) {
        ndk::ScopedAParcel in;
        const ndk::SpAIBinder binder = worker->asBinder();
        EXPECT_EQ(AIBinder_prepareTransaction(binder.get(), in.getR()), STATUS_OK);
        for (const int32_t word : words) AParcel_writeInt32(in.get(), word);
        return AIBinder_transact(binder.get(), code, in.getR(), reply.getR(), 0);
    }

    ndk::ScopedAParcel reply;
    std::shared_ptr<Worker> worker = ndk::SharedRefBase::make<Worker>();
    std::shared_ptr<IWorker> proxy = ndk::SharedRefBase::make<BpWorker>(worker->asBinder());
};

TEST_F(CallsTest, ValuesTravelBothWays) {
    int32_t sum = 0;
    ASSERT_TRUE(proxy->add(2, 3, &sum).isOk());
    EXPECT_EQ(sum, 5);
    ASSERT_TRUE(proxy->add(0, 0, &sum).isOk());
    EXPECT_EQ(sum, 0x0BADC0DE) << "which the worker did not set";
    std::vector<int32_t> numbers = {5, 5, 5};
    RecordV1 record;
    ASSERT_TRUE(proxy->fill(&numbers, &record).isOk());
    EXPECT_THAT(numbers, ElementsAre(0, 10, 20)) << "as long as the caller's";
    EXPECT_EQ(record.number, 1);
    EXPECT_TRUE(proxy->post(99).isOk()) << "the answer to a oneway method is not heard";
    EXPECT_EQ(worker->posted, 99);
    EXPECT_EQ(IWorker::fromBinder(worker->asBinder()), worker);
}

TEST_F(CallsTest, RequestsThatDoNotDecodeAreNotHandedOn) {
    EXPECT_EQ(Send(IWorker::TRANSACTION_add, {1}), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(worker->calls, 0);
    EXPECT_EQ(Send(IWorker::TRANSACTION_fill, {-1}), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(Send(IWorker::TRANSACTION_fill, {1000001}), STATUS_NO_MEMORY);
    EXPECT_EQ(Send(IWorker::TRANSACTION_post + 1, {}), STATUS_UNKNOWN_TRANSACTION);
}

}  // namespace
}  // namespace aidl::standin::aidltest
