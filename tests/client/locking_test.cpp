// Which lock is held where, and which deliveries wait for none.

#include <chrono>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/client_fixture.h"

using ::aidl::android::hardware::camera::device::ShutterMsg;
using ::testing::ElementsAre;
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
        log.atLine(line, [this, line] {
            held[line] += IsHeld(access.resultLock()) ? "results " : "";
            held[line] += IsHeld(*bufferLock) ? "buffers " : "";
        });
    }
    void DeliverResult(int32_t frameNumber) {
        std::vector<OfflineCaptureResult> results(1);
        results[0].frameNumber = frameNumber;
        results[0].outFrameInfo.buffers.resize(1);
        results[0].outFrameInfo.buffers[0].streamId = 1;
        results[0].outFrameInfo.buffers[0].bufferId = 1;
        EXPECT_TRUE(callback->processCaptureResult(results).isOk());
    }

    std::map<std::string, std::string> held;
    const std::shared_ptr<OfflineCameraClientAccess::CallBacks> callback = access.callback();
    std::mutex* const bufferLock = &access.bufferLock();
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
        ShutterMsg shutter;
        shutter.frameNumber = 7;
        EXPECT_TRUE(callback->notify({NotifyMsg::make<NotifyMsg::Tag::shutter>(shutter)}).isOk());
        DeliverResult(7);
    };
    Configure(0);
    data.write("offlinecameratest/4096_3072_RAW10.raw", "");
    ASSERT_EQ(client.ProcessOfflineRequest(), 0);
    client.WaitCaptureResultCompleted();
    Destroy();
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
        const std::lock_guard<std::mutex> lock(access.resultLock());
        delivery = std::async(std::launch::async, deliver);
        EXPECT_EQ(delivery.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    }
    EXPECT_EQ(access.notifyMessages().size(), 2u);
}

// What the thread sanitizer looks at; without it, a map that two threads change breaks.
TEST_F(Locking, ResultsArriveWhileTheyAreCleared) {
    constexpr int32_t kResults = 300;
    std::thread service([this] {
        for (int32_t frame = 0; frame < kResults; ++frame) DeliverResult(frame);
    });
    for (int32_t i = 0; i < kResults; ++i) client.ClearResultsAndMessages();
    service.join();
    client.ClearResultsAndMessages();
    EXPECT_TRUE(access.resultFrameInfos().empty());
}

}  // namespace
}  // namespace test
