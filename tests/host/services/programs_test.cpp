// The command lines of allocator and camera service.
#include <gmock/gmock.h>

#include "tests/support/subprocess.h"
#include "tests/support/words.h"

namespace {

TEST(ServicePrograms, SayWhatTheyTakeAndWhatIsMissing) {
    const std::string nowhere = "STANDIN_BINDER_DIR=/nowhere";
    const struct {
        Words words;  // behind env: settings, program, arguments
        int status;
        const char* text;  // on standard output where the status is 0, else on standard error
    } cases[] = {
            {{ALLOCATOR_PROGRAM, "--fault", "help"}, 0, "allocate-error  "},
            {{ALLOCATOR_PROGRAM, "--help"}, 0, "usage: graphicsallocator [--fault NAME]"},
            {{ALLOCATOR_PROGRAM, "--fault", "sulk"}, 2, "unknown fault 'sulk'"},
            {{ALLOCATOR_PROGRAM, "--fault"}, 2, "usage"},
            {{ALLOCATOR_PROGRAM, "word"}, 2, "unexpected argument 'word'"},
            {{"--unset=STANDIN_BINDER_DIR", ALLOCATOR_PROGRAM}, 1, "STANDIN_BINDER_DIR is not set"},
            {{nowhere, ALLOCATOR_PROGRAM}, 1, "cannot register"},
            {{SERVICE_PROGRAM, "--fault=lend", "--fault=help"}, 0, "late-result[=milliseconds]"},
            {{SERVICE_PROGRAM, "--fault=lend=x", "--fault=help"}, 2, "fault 'lend': 'x' is no"},
            {{SERVICE_PROGRAM, "--fualt", "open-null"}, 2, "unknown option --fualt"},
            {{nowhere, "STANDIN_HAL_PATH=/nowhere", SERVICE_PROGRAM}, 1, "no graphics mapper"},
            {{nowhere, SERVICE_PROGRAM}, 1, "cannot register"}};
    for (const auto& [arguments, status, text] : cases) {
        const end_to_end::Finished finished = end_to_end::runProgram(Joined({{"env"}, arguments}));
        EXPECT_EQ(finished.status, status) << finished.err;
        EXPECT_THAT(status == 0 ? finished.out : finished.err, testing::HasSubstr(text));
    }
}

}  // namespace
