// The service's command line.
#include <gmock/gmock.h>

#include "tests/end_to_end/subprocess.h"

namespace offlinecamera {

using testing::HasSubstr;

namespace {

using end_to_end::Finished;

Finished RunService(std::vector<std::string> words,
                    const end_to_end::Subprocess::Environment& environment = {}) {
    words.insert(words.begin(), SERVICE_PROGRAM);
    return end_to_end::runProgram(words, environment);
}

}  // namespace

TEST(OfflineCameraServiceProgram, HelpAndMistakes) {
    const Finished help = RunService({"--fault", "help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.out, HasSubstr("late-result[=milliseconds]"));
    EXPECT_THAT(RunService({"--help"}).out, HasSubstr("--fault NAME[=ARG]"));

    const Finished unknownFault = RunService({"--fault", "sulk"});
    EXPECT_EQ(unknownFault.status, 2);
    EXPECT_THAT(unknownFault.err, HasSubstr("unknown fault 'sulk'"));
    EXPECT_EQ(RunService({"--fualt", "open-null"}).status, 2);
    const Finished word = RunService({"open-null"});
    EXPECT_EQ(word.status, 2);
    EXPECT_THAT(word.err, HasSubstr("unexpected argument 'open-null'"));
}

TEST(OfflineCameraServiceProgram, ItSaysWhatIsMissing) {
    const Finished noMapper = RunService({}, {{"STANDIN_HAL_PATH", "/nowhere"}});
    EXPECT_EQ(noMapper.status, 1);
    EXPECT_THAT(noMapper.err, HasSubstr("no graphics mapper"));
    const Finished noManager = RunService({}, {{"STANDIN_BINDER_DIR", "/nowhere"}});
    EXPECT_EQ(noManager.status, 1);
    EXPECT_THAT(noManager.err, HasSubstr("cannot register"));
}

}  // namespace offlinecamera
