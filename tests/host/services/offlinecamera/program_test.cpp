// The service's command line.
#include <gmock/gmock.h>

#include <cstdio>
#include <string>

namespace offlinecamera {

using testing::HasSubstr;

namespace {

struct Outcome {
    int status;
    std::string output;  // standard output and standard error
};

/** @param environment assignments for this run, which is ended after 30 s */
Outcome RunService(const std::string& arguments, const std::string& environment = "") {
    const std::string command =
            environment + " timeout 30 " + SERVICE_PROGRAM + " " + arguments + " 2>&1 </dev/null";
    FILE* pipe = popen(command.c_str(), "r");
    Outcome run = {-1, {}};
    if (pipe == nullptr) return run;
    char buffer[4096];
    size_t count;
    while ((count = fread(buffer, 1, sizeof(buffer), pipe)) > 0) run.output.append(buffer, count);
    const int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

}  // namespace

TEST(OfflineCameraServiceProgram, HelpAndMistakes) {
    const Outcome help = RunService("--fault help");
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, HasSubstr("late-result[=milliseconds]"));
    EXPECT_THAT(RunService("--help").output, HasSubstr("--fault NAME[=ARG]"));

    const Outcome unknownFault = RunService("--fault sulk");
    EXPECT_EQ(unknownFault.status, 2);
    EXPECT_THAT(unknownFault.output, HasSubstr("unknown fault 'sulk'"));
    EXPECT_EQ(RunService("--fualt open-null").status, 2);
    const Outcome word = RunService("open-null");
    EXPECT_EQ(word.status, 2);
    EXPECT_THAT(word.output, HasSubstr("unexpected argument 'open-null'"));
}

TEST(OfflineCameraServiceProgram, ItSaysWhatIsMissing) {
    const Outcome noMapper = RunService("", "STANDIN_HAL_PATH=/nowhere");
    EXPECT_EQ(noMapper.status, 1);
    EXPECT_THAT(noMapper.output, HasSubstr("no graphics mapper"));
    const Outcome noManager = RunService("", "STANDIN_BINDER_DIR=/nowhere");
    EXPECT_EQ(noManager.status, 1);
    EXPECT_THAT(noManager.output, HasSubstr("cannot register"));
}

}  // namespace offlinecamera
