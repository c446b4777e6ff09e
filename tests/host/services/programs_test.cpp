// The command lines of allocator and camera service.
#include <gmock/gmock.h>

#include "tests/end_to_end/subprocess.h"

namespace {

using end_to_end::Finished;
using testing::HasSubstr;

struct Case {
    std::vector<std::string> words;  // behind env: settings, program, arguments
    int status;
    const char* text;  // on standard output where the status is 0, else on standard error
};

TEST(ServicePrograms, SayWhatTheyTakeAndWhatIsMissing) {
    const std::string unset = "--unset=STANDIN_BINDER_DIR";
    const std::string nowhere = "STANDIN_BINDER_DIR=/nowhere";
    const Case cases[] = {
            {{ALLOCATOR_PROGRAM, "--fault", "help"}, 0, "allocate-error  "},
            {{ALLOCATOR_PROGRAM, "--help"}, 0, "--fault NAME"},
            {{ALLOCATOR_PROGRAM, "--fault", "sulk"}, 2, "no fault 'sulk'"},
            {{ALLOCATOR_PROGRAM, "--fault"}, 2, "usage"},
            {{ALLOCATOR_PROGRAM, "--fault", "bad-handle", "--fault", "bad-handle"}, 2, "only one"},
            {{ALLOCATOR_PROGRAM, "word"}, 2, "unexpected argument 'word'"},
            {{unset, ALLOCATOR_PROGRAM}, 1, "STANDIN_BINDER_DIR is not set"},
            {{nowhere, ALLOCATOR_PROGRAM}, 1, "cannot register"},
            {{SERVICE_PROGRAM, "--fault", "help"}, 0, "late-result[=milliseconds]"},
            {{SERVICE_PROGRAM, "--help"}, 0, "--fault NAME[=ARG]"},
            {{SERVICE_PROGRAM, "--fault", "sulk"}, 2, "unknown fault 'sulk'"},
            {{SERVICE_PROGRAM, "--fualt", "open-null"}, 2, "usage"},
            {{SERVICE_PROGRAM, "word"}, 2, "unexpected argument 'word'"},
            {{"STANDIN_HAL_PATH=/nowhere", SERVICE_PROGRAM}, 1, "no graphics mapper"},
            {{nowhere, SERVICE_PROGRAM}, 1, "cannot register"}};
    for (const Case& line : cases) {
        std::vector<std::string> words = {"env"};
        words.insert(words.end(), line.words.begin(), line.words.end());
        const Finished finished = end_to_end::runProgram(words);
        EXPECT_EQ(finished.status, line.status) << finished.err;
        EXPECT_THAT(line.status == 0 ? finished.out : finished.err, HasSubstr(line.text));
    }
}

}  // namespace
