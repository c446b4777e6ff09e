// Which lock is held where, and which deliveries wait for none.

#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <mutex>

#include "tests/support/client_fixture.h"

using ::testing::Pair;

namespace test {
namespace {

bool IsHeld(std::mutex& lock) {
    const auto taken = [&lock] { return lock.try_lock() ? (lock.unlock(), false) : true; };
    return std::async(std::launch::async, taken).get();
}

class Locking : public ClientTest {
  public:
    // Notes which locks are held at each line that begins so.
    void Watch(const std::string& line) {
        log.AtLine(line, [this, line] {
            held[line] += IsHeld(client.m_resultLock) ? "results " : "";
            held[line] += IsHeld(*bufferLock) ? "buffers " : "";
        });
    }

    std::map<std::string, std::string> held;
    const std::shared_ptr<OfflineCameraClient::OfflineCameraCallBacks> callback = client.m_callback;
    std::mutex* const bufferLock = &client.m_callback->m_bufferLock;
};

TEST_F(Locking, EachLockIsHeldForItsOwnState) {
    for (const char* line : {"ProcessOfflineResult 1", "ProcessOfflineResult: result notifty",
                             "WaitForShutter frame 7 time", "IsResultReceivedLocked sucessfully",
                             "result completed importedBuf", "m_nextBufferId 1",
                             "returnStreamBuffers: unknown", "[AIDL] OfflineCameraClient destr"}) {
        Watch(line);
    }
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
    EXPECT_THAT(held, ElementsAre(Pair("IsResultReceivedLocked sucessfully", "results "),
                                  Pair("ProcessOfflineResult 1", "results "),
                                  Pair("ProcessOfflineResult: result notifty", "results "),
                                  Pair("WaitForShutter frame 7 time", "results "),
                                  Pair("[AIDL] OfflineCameraClient destr", ""),
                                  Pair("m_nextBufferId 1", "buffers "),
                                  Pair("result completed importedBuf", ""),
                                  Pair("returnStreamBuffers: unknown", "buffers ")));
}

// Messages, and deliveries of nothing, reach the client while another thread holds its lock.
TEST_F(Locking, SomeDeliveriesWaitForNobody) {
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

}  // namespace
}  // namespace test
