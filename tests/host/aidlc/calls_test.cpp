// Generated interfaces: calls through parcels to an object of this process, and what bad requests
// and replies do.
#include <aidl/standin/aidltest/BnWorker.h>
#include <aidl/standin/aidltest/BpWorker.h>
#include <aidl/standin/aidltest/Objects.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>

#include "parcels.h"
#include "tests/host/libbinder_ndk/plain_class.h"

namespace aidl::standin::aidltest {
namespace {

using inner::Point;
using ndk::ScopedAStatus;
using testing::ElementsAre;

class Worker : public BnWorker {
  public:
    ScopedAStatus add(int32_t a, int32_t b, int32_t* sum) override {
        calls++;
        *sum = a + b;
        return ScopedAStatus::ok();
    }
    ScopedAStatus echo(const Everything& value, Everything* result) override {
        *result = value;
        return ScopedAStatus::ok();
    }
    ScopedAStatus fill(std::vector<int32_t>* numbers, Point* point,
                       std::vector<std::string>* words) override {
        for (size_t i = 0; i < numbers->size(); i++) (*numbers)[i] = static_cast<int32_t>(i) * 10;
        point->x = 1;
        words->push_back("more");
        return ScopedAStatus::ok();
    }
    ScopedAStatus maybe(const std::optional<Point>& point, const std::optional<std::string>& text,
                        std::optional<Point>* result) override {
        *result = text.has_value() ? point : std::nullopt;
        return ScopedAStatus::ok();
    }
    ScopedAStatus fixed(const std::array<int32_t, 3>& values,
                        std::array<int32_t, 3>* result) override {
        *result = {values[2], values[1], values[0]};
        return ScopedAStatus::ok();
    }
    ScopedAStatus reversed(const std::vector<std::string>& words,
                           std::vector<std::string>* result) override {
        result->assign(words.rbegin(), words.rend());
        return ScopedAStatus::ok();
    }
    ScopedAStatus swap(const Objects& objects, Objects* result) override {
        result->fd = objects.fds[0].dup();
        result->fds.push_back(objects.fd.dup());
        result->binder = asBinder();
        result->worker = objects.worker;
        result->choice = objects.choice.get<FdChoice::fd>().dup();
        return ScopedAStatus::ok();
    }
    ScopedAStatus other(const std::shared_ptr<IWorker>& worker,
                        std::shared_ptr<IWorker>* result) override {
        *result = worker;
        return ScopedAStatus::ok();
    }
    ScopedAStatus fail(int32_t code) override {
        return ScopedAStatus::fromServiceSpecificErrorWithMessage(code, "as asked");
    }
    ScopedAStatus post(int32_t value) override {
        posted = value;
        return ScopedAStatus::fromServiceSpecificError(1);  // nobody hears it
    }
    ScopedAStatus oldAdd(int32_t a, int32_t b, int32_t* sum) override { return add(a, b, sum); }

    int calls = 0;
    int32_t posted = 0;
};

class CallsTest : public testing::Test {
  protected:
    /** Sends bytes behind a correct header and gives the transport's status. */
    binder_status_t Send(uint32_t code, const Bytes& body, ndk::ScopedAParcel* reply) {
        ndk::ScopedAParcel in;
        const ndk::SpAIBinder binder = worker->asBinder();
        EXPECT_EQ(AIBinder_prepareTransaction(binder.get(), in.getR()), STATUS_OK);
        const ndk::ScopedAParcel source = ParcelOf(body);
        EXPECT_EQ(AParcel_appendFrom(source.get(), in.get(), 0, AParcel_getDataSize(source.get())),
                  STATUS_OK);
        return AIBinder_transact(binder.get(), code, in.getR(), reply->getR(), 0);
    }

    std::shared_ptr<Worker> worker = ndk::SharedRefBase::make<Worker>();
    std::shared_ptr<IWorker> proxy = ndk::SharedRefBase::make<BpWorker>(worker->asBinder());
};

TEST_F(CallsTest, ValuesTravelBothWays) {
    int32_t sum = 0;
    ASSERT_TRUE(proxy->add(2, 3, &sum).isOk());
    EXPECT_EQ(sum, 5);

    Everything sent;
    sent.text = "hello";
    sent.choice = std::string("c");
    sent.maybePoints = {std::nullopt, Point()};
    Everything received;
    ASSERT_TRUE(proxy->echo(sent, &received).isOk());
    EXPECT_EQ(received, sent);

    std::array<int32_t, 3> fixed{};
    ASSERT_TRUE(proxy->fixed({1, 2, 3}, &fixed).isOk());
    EXPECT_THAT(fixed, ElementsAre(3, 2, 1));

    std::vector<std::string> words;
    ASSERT_TRUE(proxy->reversed({"a", "b"}, &words).isOk());
    EXPECT_THAT(words, ElementsAre("b", "a"));
}

TEST_F(CallsTest, OutArraysAreAsLongAsTheCallers) {
    std::vector<int32_t> numbers = {5, 5, 5};
    Point point;
    std::vector<std::string> words = {"first"};
    ASSERT_TRUE(proxy->fill(&numbers, &point, &words).isOk());
    EXPECT_THAT(numbers, ElementsAre(0, 10, 20));
    EXPECT_EQ(point.x, 1);
    EXPECT_THAT(words, ElementsAre("first", "more"));
}

TEST_F(CallsTest, NullableValues) {
    std::optional<Point> result;
    ASSERT_TRUE(proxy->maybe(Point(), "there", &result).isOk());
    EXPECT_TRUE(result.has_value());
    ASSERT_TRUE(proxy->maybe(Point(), std::nullopt, &result).isOk());
    EXPECT_FALSE(result.has_value());
}

TEST_F(CallsTest, DescriptorsAndBindersTravel) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    Objects sent;
    sent.fd = ndk::ScopedFileDescriptor(ends[0]);
    sent.fds.emplace_back(ends[1]);
    sent.binder = worker->asBinder();
    sent.worker = worker;
    sent.choice = ndk::ScopedFileDescriptor(open("/dev/null", O_RDWR | O_CLOEXEC));
    Objects received;
    const ScopedAStatus status = proxy->swap(sent, &received);
    ASSERT_TRUE(status.isOk()) << status;
    EXPECT_EQ(write(received.fd.get(), "x", 1), 1);
    char c = 0;
    EXPECT_EQ(read(received.fds.at(0).get(), &c, 1), 1);
    EXPECT_EQ(c, 'x');
    EXPECT_NE(received.fd.get(), ends[1]) << "the receiver has a descriptor of its own";
    EXPECT_EQ(received.binder, worker->asBinder());
    EXPECT_EQ(received.worker, worker);
    EXPECT_EQ(received.maybeFd.get(), -1);

    std::shared_ptr<IWorker> other;
    ASSERT_TRUE(proxy->other(worker, &other).isOk());
    EXPECT_EQ(other, worker) << "a local object comes back as itself";
    ASSERT_TRUE(proxy->other(nullptr, &other).isOk());
    EXPECT_EQ(other, nullptr);
}

TEST_F(CallsTest, ErrorsArriveAndResultsStay) {
    ASSERT_TRUE(proxy->post(99).isOk()) << "nobody hears the error of a oneway method";
    EXPECT_EQ(worker->posted, 99);
    const ScopedAStatus status = proxy->fail(17);
    EXPECT_EQ(status.getExceptionCode(), EX_SERVICE_SPECIFIC);
    EXPECT_EQ(status.getServiceSpecificError(), 17);
    EXPECT_STREQ(status.getMessage(), "as asked");

    Objects untouched;
    untouched.fds.resize(2);
    Objects bad;  // a missing descriptor cannot be sent
    const ScopedAStatus refused = proxy->swap(bad, &untouched);
    EXPECT_EQ(refused.getExceptionCode(), EX_TRANSACTION_FAILED);
    EXPECT_EQ(refused.getStatus(), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(untouched.fds.size(), 2u);
}

TEST_F(CallsTest, RequestsThatDoNotDecodeReachNobody) {
    ndk::ScopedAParcel reply;
    EXPECT_EQ(Send(IWorker::TRANSACTION_add, Words({1}), &reply), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(worker->calls, 0);
    EXPECT_EQ(reply.get(), nullptr);

    EXPECT_EQ(Send(IWorker::TRANSACTION_fill, Words({-1}), &reply), STATUS_UNEXPECTED_NULL);
    EXPECT_EQ(Send(IWorker::TRANSACTION_fill, Words({1000001}), &reply), STATUS_NO_MEMORY);
    static_assert(IWorker::TRANSACTION_add == 1 && IWorker::TRANSACTION_oldAdd == 11);
    EXPECT_EQ(Send(12, {}, &reply), STATUS_UNKNOWN_TRANSACTION);
}

TEST_F(CallsTest, FromBinder) {
    EXPECT_EQ(IWorker::fromBinder(worker->asBinder()), worker);
    EXPECT_EQ(IWorker::fromBinder(ndk::SpAIBinder()), nullptr);
    const ndk::SpAIBinder strange(AIBinder_new(newPlainClass("standin.Stranger"), nullptr));
    EXPECT_EQ(IWorker::fromBinder(strange), nullptr);
}

// The same interface compiled into another library has its own class object.
TEST_F(CallsTest, AnotherClassOfTheSameInterfaceIsCalledThroughParcels) {
    static const AIBinder_Class* const twin = AIBinder_Class_define(
            IWorker::descriptor, [](void*) -> void* { return nullptr; }, [](void*) {},
            [](AIBinder*, transaction_code_t code, const AParcel* in,
               AParcel* out) -> binder_status_t {
                int32_t a = 0;
                if (code != IWorker::TRANSACTION_add || AParcel_readInt32(in, &a) != STATUS_OK) {
                    return STATUS_UNKNOWN_TRANSACTION;
                }
                AParcel_writeStatusHeader(out, ScopedAStatus::ok().get());
                return AParcel_writeInt32(out, a * 100);
            });
    const ndk::SpAIBinder binder(AIBinder_new(twin, nullptr));
    const std::shared_ptr<IWorker> worker = IWorker::fromBinder(binder);
    ASSERT_NE(worker, nullptr);
    int32_t sum = 0;
    ASSERT_TRUE(worker->add(2, 3, &sum).isOk());
    EXPECT_EQ(sum, 200);

    // A method that the other side lacks goes to the default implementation, if there is one.
    EXPECT_EQ(worker->fail(1).getStatus(), STATUS_UNKNOWN_TRANSACTION);
    ASSERT_TRUE(IWorker::setDefaultImpl(ndk::SharedRefBase::make<Worker>()));
    EXPECT_EQ(worker->fail(18).getServiceSpecificError(), 18);
    EXPECT_FALSE(IWorker::setDefaultImpl(ndk::SharedRefBase::make<Worker>())) << "only one";
    EXPECT_FALSE(IWorker::setDefaultImpl(nullptr));
}

}  // namespace
}  // namespace aidl::standin::aidltest
