// Sessions of clients that are killed: service, service manager and clients as processes.
#include <aidl/vendor/zel/hardware/camera/offlinecamera/IOfflineCameraService.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <utility>

#include "recording_client.h"
#include "service.h"
#include "tests/host/libbinder_ndk/test_bus.h"

namespace offlinecamera {

namespace {

using ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraService;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraSession;

constexpr int kPatience = 600;  // tries, 50 ms apart

/** A child process; killed and reaped at its end. */
class Process {
  public:
    explicit Process(pid_t pid) : mPid(pid) {}
    Process(Process&& other) noexcept : mPid(std::exchange(other.mPid, -1)) {}
    ~Process() {
        if (mPid <= 0) return;
        kill(mPid, SIGKILL);
        waitpid(mPid, nullptr, 0);
    }

    /** In the child, right after fork: it shall not outlive the test. */
    static void DieWithParent() { prctl(PR_SET_PDEATHSIG, SIGKILL); }

  private:
    pid_t mPid;
};

/** What one try to open a session came to: 'S' a session, 'R' refused, '-' no service. */
char TryToOpen(std::shared_ptr<IOfflineCameraSession>* session) {
    const auto service = IOfflineCameraService::fromBinder(
            ndk::SpAIBinder(AServiceManager_checkService(OfflineCameraService::kInstance)));
    if (service == nullptr) return '-';
    static const auto client = ndk::SharedRefBase::make<RecordingClient>();
    const auto status = service->openOfflineSession("mortal", client, session);
    if (status.isOk() && *session != nullptr) return 'S';
    return status.getServiceSpecificError() == 3 ? 'R' : '-';
}

/**
 * In a child: tries until one of `wanted` comes, tells it through the pipe and keeps what it has
 * until it is killed.
 */
[[noreturn]] void BeClient(const char* wanted, int tell) {
    ABinderProcess_startThreadPool();
    std::shared_ptr<IOfflineCameraSession> session;
    char outcome = '-';
    for (int i = 0; i < kPatience && strchr(wanted, outcome) == nullptr; ++i) {
        outcome = TryToOpen(&session);
        if (strchr(wanted, outcome) == nullptr) usleep(50'000);
    }
    if (write(tell, &outcome, 1) != 1) _exit(1);
    for (;;) pause();
}

/** Starts a client; `*outcome` is what it tells. This process must have one thread only. */
Process StartClient(const char* wanted, char* outcome) {
    int ends[2];
    EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const pid_t pid = fork();
    if (pid == 0) {
        Process::DieWithParent();
        BeClient(wanted, ends[1]);
    }
    close(ends[1]);
    *outcome = '!';
    EXPECT_EQ(read(ends[0], outcome, 1), 1);
    close(ends[0]);
    return Process(pid);
}

}  // namespace

TEST(ClientDeath, SessionsOfKilledClientsAreLetGo) {
    char folder[] = "/tmp/offlinecamera-XXXXXX";
    ASSERT_NE(mkdtemp(folder), nullptr);
    setenv("STANDIN_BINDER_DIR", folder, 1);
    {
        const Child manager({SERVICE_MANAGER_PROGRAM});
        const std::string socket = std::string(folder) + "/servicemanager";
        ASSERT_TRUE(eventually([&] { return access(socket.c_str(), F_OK) == 0; }));
        const Child service({SERVICE_PROGRAM});
        char outcome;
        {
            std::vector<Process> clients;
            for (size_t i = 0; i < SessionSlots::kMaxSessions; ++i) {
                clients.push_back(StartClient("S", &outcome));
                ASSERT_EQ(outcome, 'S') << i;
            }
            const Process oneTooMany = StartClient("SR", &outcome);
            EXPECT_EQ(outcome, 'R');
        }
        std::vector<Process> successors;
        for (size_t i = 0; i < SessionSlots::kMaxSessions; ++i) {
            successors.push_back(StartClient("S", &outcome));
            ASSERT_EQ(outcome, 'S') << i;
        }
    }
    std::filesystem::remove_all(folder);
}

}  // namespace offlinecamera
