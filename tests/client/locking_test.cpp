// Which lock is held where, and which deliveries wait for none.

#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <map>
#include <mutex>

#include "tests/support/client_fixture.h"
#include "tests/support/eventually.h"

using ::testing::Pair;

namespace {

std::function<void()> gAtSignal;  // what is done just before a signal

}  // namespace

// The linker sends std::condition_variable::notify_one() of the tool here.
extern "C" void __real__ZNSt3__118condition_variable10notify_oneEv(std::condition_variable*);
extern "C" void __wrap__ZNSt3__118condition_variable10notify_oneEv(std::condition_variable* to) {
    if (gAtSignal) gAtSignal();
    __real__ZNSt3__118condition_variable10notify_oneEv(to);
}

namespace test {
namespace {

bool IsHeld(std::mutex& lock) {
    const auto taken = [&lock] { return lock.try_lock() ? (lock.unlock(), false) : true; };
    return std::async(std::launch::async, taken).get();
}

class Locking : public ClientTest {
  public:
    ~Locking() override { gAtSignal = nullptr; }

    // The locks that are held now.
    std::string Held() {
        return std::string(IsHeld(client.m_resultLock) ? "m_resultLock " : "") +
               (IsHeld(*bufferLock) ? "m_bufferLock " : "");
    }

    const std::shared_ptr<OfflineCameraClient::OfflineCameraCallBacks> callback = client.m_callback;
    std::mutex* const bufferLock = &callback->m_bufferLock;
};

TEST_F(Locking, EachLockIsHeldForItsOwnState) {
    std::map<std::string, std::string> held;  // at a line
    for (const std::string line :
         {"ProcessOfflineResult 1", "WaitForShutter frame 7 time",
          "IsResultReceivedLocked sucessfully", "result completed importedBuf", "m_nextBufferId 1",
          "returnStreamBuffers: unknown", "[AIDL] OfflineCameraClient destr"}) {
        log.AtLine(line, [this, &held, line] { held[line] = Held(); });
    }
    Lines atSignals;
    gAtSignal = [&] {
        atSignals.push_back(Held() + Format("%zu messages %zu results",
                                            client.m_notifyMessages.size(),
                                            client.m_resultFrameInfos.size()));
    };
    around.session->onProcess = [this](const auto&) {
        std::vector<OfflineBufferRequest> requests(1);
        requests[0].numBuffersRequested = 1;
        std::vector<OfflineStreamBufferRet> rets;
        BufferRequestStatus status{};
        EXPECT_TRUE(callback->requestStreamBuffers(requests, &rets, &status).isOk());
        std::vector<StreamBuffer> unknown(1);
        unknown[0].bufferId = 9;
        EXPECT_TRUE(callback->returnStreamBuffers(unknown).isOk());
        DeliverShutter(7);
        DeliverResult(7);
    };
    ConfigureB2Y();
    ASSERT_EQ(client.ProcessOfflineRequest(), 0);
    client.WaitCaptureResultCompleted();
    own.reset();
    EXPECT_THAT(atSignals,
                ElementsAre("1 messages 0 results", "m_resultLock 1 messages 1 results"));
    EXPECT_THAT(held, ElementsAre(Pair("IsResultReceivedLocked sucessfully", "m_resultLock "),
                                  Pair("ProcessOfflineResult 1", "m_resultLock "),
                                  Pair("WaitForShutter frame 7 time", "m_resultLock "),
                                  Pair("[AIDL] OfflineCameraClient destr", ""),
                                  Pair("m_nextBufferId 1", "m_bufferLock "),
                                  Pair("result completed importedBuf", ""),
                                  Pair("returnStreamBuffers: unknown", "m_bufferLock ")));
}

// Messages, and deliveries of nothing, reach the client while another thread holds its lock.
TEST_F(Locking, SomeDeliveriesDoNotWait) {
    const std::function<void()> deliveries[] = {
            [this] { callback->notify(std::vector<NotifyMsg>(2)); },
            [this] { callback->processCaptureResult({}); }};
    for (const auto& deliver : deliveries) {
        std::future<void> delivery;
        const std::lock_guard<std::mutex> lock(client.m_resultLock);
        delivery = std::async(std::launch::async, deliver);
        EXPECT_EQ(delivery.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    }
    EXPECT_EQ(client.m_notifyMessages.size(), 2u);
}

TEST_F(Locking, ClearingWaitsForTheLock) {
    client.m_resultFrameInfos[7];
    std::unique_lock<std::mutex> lock(client.m_resultLock);
    const auto clearing =
            std::async(std::launch::async, [this] { client.ClearResultsAndMessages(); });
    EXPECT_TRUE(Eventually([&] {
        // 2 is the C library's mark of a lock that a thread waits for.
        return client.m_resultLock.native_handle()->__data.__lock == 2 ||
               clearing.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
    }));
    EXPECT_THAT(client.m_resultFrameInfos, SizeIs(1));
    lock.unlock();
    clearing.wait();
    EXPECT_THAT(client.m_resultFrameInfos, IsEmpty());
}

}  // namespace
}  // namespace test
