// What the driver calls, in which order. What it prints is looked at end to end.

#include <android/log.h>

#include <cstdlib>

#include "tests/support/client_fixture.h"

int DriverMain(int argc, char** argv);  // the tool's main()

// The pool's lines stand among the client's, and no thread is started.
extern "C" bool __wrap_ABinderProcess_setThreadPoolMaxThreadCount(uint32_t threads) {
    __android_log_print(ANDROID_LOG_INFO, "OfflineCameraClient", "pool of %u", threads);
    return true;
}

extern "C" void __wrap_ABinderProcess_startThreadPool() {
    __android_log_print(ANDROID_LOG_INFO, "OfflineCameraClient", "pool started");
}

namespace test {
namespace {

class Driver : public ClientTest {
  public:
    // Runs the tool's command and then `check`, in the process of a death test: it ends with the
    // process-wide client.
    template <class Check>
    void Run(std::string command, Check check) {
        const auto run = [&] {
            std::string words[] = {"vexofflinecameratest", "-t", std::move(command)};
            char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
            EXPECT_EQ(DriverMain(3, arguments), 0);
            check();
            exit(HasFailure() ? 1 : 0);
        };
        EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
    }
};

TEST_F(Driver, RunsOneOfflineTest) {
    data.Write(kRawFile, "");
    around.session->onProcess = [this](const auto&) {
        std::vector<OfflineCaptureResult> results(1);
        results[0].frameNumber = 7;
        around.service->callback->notify(std::vector<NotifyMsg>(1));
        around.service->callback->processCaptureResult(results);
        around.session->fails = true;  // so that the driver does not wait
    };
    Run("B2Y", [this] {
        Lines lines = log.Take();
        const auto constructed = std::find(lines.begin(), lines.end(),
                                           "I [AIDL] OfflineCameraClient constructor called");
        ASSERT_LT(constructed, lines.end() - 4);
        EXPECT_EQ(Lines(constructed + 1, constructed + 4),
                  (Lines{"I pool of 6", "I pool started", "I [AIDL] setOpMode opMode 0"}));
        EXPECT_THAT(around.service->clientNames, ElementsAre("offlincameratest"));
        EXPECT_EQ(around.session->configured.at(0).cameraId, "2");
        EXPECT_EQ(around.session->processed, 1);
        EXPECT_EQ(around.session->closed, 1);
        // Cleared at the end, also after a failure.
        EXPECT_THAT(OfflineCameraClient::GetInstance().m_resultFrameInfos, IsEmpty());
        EXPECT_THAT(OfflineCameraClient::GetInstance().m_notifyMessages, IsEmpty());
    });
}

TEST_F(Driver, TheCallbackCommandRegistersAndNothingElse) {
    Run("callback", [this] {
        EXPECT_EQ(LastLines(3),
                  (Lines{"I pool of 6", "I pool started", "I [AIDL] registerClient clientId 0"}));
        EXPECT_THAT(around.service->clientIds, ElementsAre(0));
        EXPECT_THAT(around.service->clientNames, IsEmpty());
    });
}

}  // namespace
}  // namespace test
