// The tool's command line: what it prints, and the status it ends with.

#include <gmock/gmock.h>

#include "tests/end_to_end/device_run.h"

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace end_to_end {
namespace {

const char kHelp[] =
        "******Offline camera client test tool******\n"
        "Options:\n"
        "    -h: print help message\n"
        "    -t: run test command: -t B2Y; -t Y2J; -t Y2Y; -t MMF; -t QLL; -t R2R; -t callback\n"
        "\n"
        "Example:\n"
        "    adb shell vexofflinecameratest -t B2Y\n"
        "**********************************\n";

const char kHint[] =
        "**********************************\n"
        "please execute help cmd to know the usage\n"
        "    adb shell vexofflinecameratest -h    \n"
        "**********************************\n";

// Usage ends the tool before it looks for anything, so these devices have no services.
TEST(CommandLine, OfAWrongFormEndsWithoutLookingForTheService) {
    const std::string unknown = "vexofflinecameratest: ";
    const struct {
        std::vector<std::string> arguments;
        int status;
        std::string out;
        std::string err;  // part of standard error; empty: nothing at all
    } cases[] = {{{}, 255, kHint, ""},
                 {{"B2Y"}, 255, kHint, ""},
                 {{"x", "-t", "B2Y"}, 255, kHint, ""},
                 {{"-h"}, 255, kHelp, ""},
                 {{"-h", "-t", "B2Y"}, 255, kHelp, ""},
                 {{"-t", "B2Y", "-h"}, 0, kHelp, ""},
                 {{"-x"}, 255, "", unknown},
                 {{"-t", "B2Y", "-x"}, 0, "", unknown},
                 {{"-t"}, 255, "", unknown},
                 {{"-t", "b2y"}, 255, std::string("cmd: -t=b2y\n") + kHelp, ""},
                 {{"-tB2YX"}, 255, std::string("cmd: -t=B2YX\n") + kHelp, ""}};
    for (const auto& usage : cases) {
        SCOPED_TRACE(::testing::PrintToString(usage.arguments));
        DeviceRun device;
        const RunResult run = device.With({"--no-service", "--no-allocator"}).Tool(usage.arguments);
        EXPECT_EQ(run.status, usage.status);
        EXPECT_EQ(run.out, usage.out);
        EXPECT_THAT(run.err, HasSubstr(usage.err));
        EXPECT_EQ(run.err.empty(), usage.err.empty()) << run.err;
        EXPECT_THAT(run.log, IsEmpty());
    }
}

TEST(CommandLineRuns, CallbackCommandOnlyRegisters) {
    DeviceRun device;
    const RunResult run = device.Tool({"-t", "callback"});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, "cmd: -t=callback\ncallback only mode=255\nret: =0\n");
    EXPECT_THAT(run.Messages(), InOrder(Words{"main: offline camera client connect to service ",
                                              "[AIDL] OfflineCameraClient constructor called",
                                              "main: offline camera client opMode 255",
                                              "[AIDL] registerClient clientId 0",
                                              "main: offline camera client exit",
                                              "[AIDL] OfflineCameraClient destructor called"}))
            << run.AllOutput();
    EXPECT_THAT(run.Messages(), Not(Contains("OpenOfflineSession")));
    EXPECT_THAT(run.dumps, IsEmpty());
}

// The log of a test command up to the end of the client's construction ends with an error line
// where the service is missing; the next call ends the process.
TEST(CommandLineRuns, AMissingServiceEndsTheRunByASignal) {
    for (const char* command : {"B2Y", "callback"}) {
        DeviceRun device;
        const RunResult run = device.With({"--no-service"}).Tool({"-t", command});
        EXPECT_GT(run.status, 128) << run.AllOutput();
        EXPECT_NE(run.status, 255);
        EXPECT_THAT(run.out, HasSubstr("ret: =0\n"));
        std::vector<std::string> errors;
        for (const LogLine& line : run.log) {
            if (line.priority == 'E') errors.push_back(line.message);
        }
        EXPECT_THAT(errors, ::testing::ElementsAre("getService is NULL for offlinecameraservice"));
        EXPECT_THAT(run.Messages(), Not(Contains("main: offline camera client exit")));
    }
}

TEST(CommandLineRuns, AMissingAllocatorIsLoggedAndHarmsOnlyBuffers) {
    DeviceRun device;
    const RunResult run = device.With({"--no-allocator"}).Tool({"-t", "B2Y"});
    EXPECT_GT(run.status, 128) << run.AllOutput();
    EXPECT_THAT(run.Messages(),
                InOrder(Words{"Gralloc Init failed, reason zelAllocator getService failed",
                              "ConfigureOfflineStreams sucessfully"}));
    EXPECT_THAT(run.dumps, IsEmpty());
}

}  // namespace
}  // namespace end_to_end
