// offlineservicecheck: good services pass, single faults fail their checks, and the page for
// authors has every check. `./check service --faults` tries all faults.
#include <gmock/gmock.h>

#include "tests/end_to_end/device_run.h"

namespace end_to_end {
namespace {

using ::testing::ContainsRegex;
using ::testing::HasSubstr;
using ::testing::Not;

Finished Check(const std::vector<std::string>& device, const std::vector<std::string>& options) {
    std::vector<std::string> words = {DEVICESHELL};
    words.insert(words.end(), device.begin(), device.end());
    words.push_back("offlineservicecheck");
    words.insert(words.end(), options.begin(), options.end());
    return Subprocess(words, CrashSettings(), Subprocess::Input::kEmpty, 120).Finish();
}

const std::vector<std::string> kMost = {"--only", "[!e]*"};  // without endurance

TEST(Conformance, TheReferenceServicePasses) {
    const Finished finished = Check({}, {"--only", "[!e]*", "--physics"});
    EXPECT_EQ(finished.status, 0) << finished.out << finished.err;
    EXPECT_THAT(finished.out, Not(ContainsRegex("  (FAIL|warn|skip)")));
    EXPECT_THAT(finished.out, ContainsRegex("\nTotal: ([0-9]+), Succeeded: [0-9]+, Failed: 0, "
                                            "Warnings: 0\n$"));
}

TEST(Conformance, TheExamplePassesWhatItClaims) {
    const Finished finished = Check({"--service", MINIMAL_SERVICE}, kMost);
    EXPECT_EQ(finished.status, 0) << finished.out << finished.err;
    EXPECT_THAT(finished.out, HasSubstr("  skip  configuration.y2j: not claimed: "));
}

struct Fault {
    const char* name;
    const char* only;
    const char* line;
};

void PrintTo(const Fault& fault, std::ostream* out) {
    *out << fault.name;
}

class ConformanceFault : public ::testing::TestWithParam<Fault> {};

TEST_P(ConformanceFault, FailsItsCheck) {
    const auto& [name, only, line] = GetParam();
    const Finished finished = Check({"--fault", name}, {"--only", only});
    EXPECT_EQ(finished.status, 1) << finished.out << finished.err;
    EXPECT_THAT(finished.out, HasSubstr(line));
}

INSTANTIATE_TEST_SUITE_P(
        Single, ConformanceFault,
        ::testing::Values(
                Fault{"take-any-streams", "configuration.zero-width",
                      "zero-width: expected a refusal; came configureOfflineStreams"},
                Fault{"short-picture", "content.*",
                      "whole-picture: expected all of B2Y's picture written; came as"},
                Fault{"newest-client-only", "session.two-apart", "expected then, with"},
                Fault{"keep-lent", "lending.*", "once: expected stream 0 buffer 1 given"},
                Fault{"die-on-configure", "session.*",
                      "openOfflineSession was answered, before configureOfflineStreams"}));

TEST(Conformance, OptionsAndJson) {
    for (const std::vector<std::string>& wrong :
         {std::vector<std::string>{"--wrong"}, {"word"}, {"--only", "none"}, {"--repeat", "0"}}) {
        std::vector<std::string> words = {OFFLINESERVICECHECK};
        words.insert(words.end(), wrong.begin(), wrong.end());
        EXPECT_EQ(Subprocess(words).Finish().status, 2) << wrong[0];
    }
    const Finished finished =
            Check({"--no-service"}, {"--only", "session.open", "--json", "/dev/stdout"});
    EXPECT_EQ(finished.status, 1);
    EXPECT_THAT(finished.out, HasSubstr("{\"schema\": 1, \"ok\": 0, \"FAIL\": 1, \"warn\": 0"));
    EXPECT_THAT(finished.out, HasSubstr("{\"name\": \"session.open\", \"rule\": \"openOffline"));
}

TEST(Conformance, ThePageForAuthorsHasEveryCheck) {
    const std::string page = ReadFile(PROJECT_FOLDER "/docs/service_checks.md");
    std::istringstream list(Subprocess({OFFLINESERVICECHECK, "--physics", "--list"}).Finish().out);
    size_t count = 0;
    for (std::string line; std::getline(list, line); ++count) {
        const size_t colon = line.find(": ");
        const std::string row =
                "| `" + line.substr(0, colon) + "` | " + line.substr(colon + 2) + " | ";
        EXPECT_THAT(page, HasSubstr(row));
    }
    EXPECT_GE(count, 70u);
}

}  // namespace
}  // namespace end_to_end
