// What the driver calls, in which order, and when it writes its lines. Their text is looked at end
// to end.

#include <android/log.h>
#include <getopt.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "tests/support/client_fixture.h"

int DriverMain(int argc, char** argv);  // the tool's main()

// The pool's lines are among the others, and no thread is started.
extern "C" bool __wrap_ABinderProcess_setThreadPoolMaxThreadCount(uint32_t threads) {
    __android_log_print(ANDROID_LOG_INFO, "Pool", "pool of %u", threads);
    return true;
}

extern "C" void __wrap_ABinderProcess_startThreadPool() {
    __android_log_print(ANDROID_LOG_INFO, "Pool", "pool started");
}

namespace test {
namespace {

int Drive(Lines words) {
    words.insert(words.begin(), "vexofflinecameratest");
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    optind = 1;
    return DriverMain(static_cast<int>(words.size()), arguments.data());
}

class Driver : public ClientTest {
  public:
    // Runs `use` in the process of a death test: the process-wide client ends with it.
    template <class Use>
    void InProcess(Use use) {
        const auto run = [&] {
            use();
            const ::testing::TestResult& result =
                    *::testing::UnitTest::GetInstance()->current_test_info()->result();
            for (int i = 0; i < result.total_part_count(); ++i) {
                fprintf(stderr, "%s\n", result.GetTestPartResult(i).message());
            }
            exit(HasFailure() ? 1 : 0);
        };
        EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
    }

    // The lines of a run behind those of the client's construction.
    Lines LinesOf(const Lines& words) {
        EXPECT_EQ(Drive(words), 0);
        const Lines lines = log.Take("");
        EXPECT_EQ(lines.at(0), "I DriverMain: offline camera client connect to service ");
        return {std::find(lines.begin(), lines.end(),
                          "I [AIDL] OfflineCameraClient constructor called") +
                        1,
                lines.end()};
    }
};

const Lines kStarted{"I pool of 6", "I pool started"};
const Lines kClosed{"I closeOfflineSession", "I CloseOfflineSession",
                    "I DriverMain: offline camera client exit"};

TEST_F(Driver, ClearsAndClosesAfterAFailedConfiguration) {
    around.session->fails = true;
    int left = 0;
    log.AtLine("configureOfflineStreams", [&] {
        ++left;
        OfflineCameraClient::GetInstance().m_resultFrameInfos[7];
    });
    log.AtLine("closeOfflineSession", [&] {
        left += static_cast<int>(OfflineCameraClient::GetInstance().m_resultFrameInfos.size());
    });
    InProcess([&] {
        EXPECT_EQ(LinesOf({"-t", "R2R"}),
                  Joined({kStarted,
                          {"I DriverMain: offline camera client opMode 5",
                           "I [AIDL] setOpMode opMode 5", "I openOfflineSession offlincameratest",
                           "I OpenOfflineSession", "E invalid op mode 5",
                           "I stream size:0, sizeof(Stream):120", "I configureOfflineStreams 2",
                           "E ConfigureOfflineStreams, FAILED..."},
                          kClosed}));
        EXPECT_EQ(left, 1);
    });
}

TEST_F(Driver, DoesNotWaitAfterAFailedSubmission) {
    around.session->onProcess = [this](const auto&) { around.session->fails = true; };
    InProcess([&] {
        const Lines lines = LinesOf({"-t", "Y2Y"});
        EXPECT_EQ(Lines(std::find(lines.begin(), lines.end(), "I ProcessOfflineRequest"),
                        lines.end()),
                  Joined({{"I ProcessOfflineRequest", "I allocate input metadata (nil)",
                           "I processOfflineRequest", "E ProcessOfflineRequest, FAILED...",
                           "I request id frameNumber:0 return frameNumber 0"},
                          kClosed}));
    });
}

TEST_F(Driver, TheCallbackCommandRegistersAndNothingElse) {
    InProcess([&] {
        EXPECT_EQ(LinesOf({"-t", "callback"}),
                  Joined({kStarted,
                          {"I DriverMain: offline camera client opMode 255", "I registerClient 0",
                           "I [AIDL] registerClient clientId 0", kClosed.back()}}));
    });
}

// So that a run which hangs or dies shows how far it came.
TEST_F(Driver, WritesEachLineAtOnce) {
    InProcess([&] {
        int ends[2];  // keep apart what is written in separate calls
        ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
        fflush(stdout);
        const int saved = dup(1);
        dup2(ends[0], 1);
        Drive({"-t", "callback"});
        Drive({});
        Drive({"-t", "b2y"});
        fflush(stdout);
        dup2(saved, 1);
        shutdown(ends[0], SHUT_WR);
        Lines written;
        char bytes[1000];
        for (ssize_t size = 0; (size = read(ends[1], bytes, sizeof bytes)) > 0;) {
            written.emplace_back(bytes, static_cast<size_t>(size));
        }
        EXPECT_THAT(written, SizeIs(3 + 4 + 1 + 8));  // the run's; hint; command and help
        for (const std::string& line : written) EXPECT_EQ(line.find('\n'), line.size() - 1);
    });
}

}  // namespace
}  // namespace test
