// Any call below the tool may fail, at any time: one walk over all of a run's calls for each kind
// of failure (tests/injector/injector.h) and each mode. The tool ends as its rules say, in bounded
// time, and leaves nothing behind.

#include <gtest/gtest.h>
#include <stdio.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <tuple>

#include "tests/end_to_end/device_run.h"
#include "tests/end_to_end/injection_rules.h"

namespace end_to_end {
namespace {

constexpr int kPatienceForWalk = 280;  // each run of the tool has its own bound

// A walk that finds fewer calls has lost some.
struct Kind {
    const char* name;
    int callsOfOneFrame;  // B2Y and Y2J
    int callsOfMmf;
};

void PrintTo(const Kind& kind, std::ostream* stream) {
    *stream << kind.name;
}

const Kind kKinds[] = {
        {"dead-object", 10, 16},
        {"failed-transaction", 10, 16},
        {"exception", 10, 16},
        {"service-specific", 10, 16},
        {"lost-reply", 10, 16},
        {"class", 3, 3},
        {"library", 5, 5},
        {"mapper-error", 12, 45},
        {"mapper-transport", 12, 45},
        {"plane-layout", 1, 8},
        {"mapping", 4, 14},
        {"descriptor", 19, 57},
        {kDescriptorLimit, 10, 10},
};

class Injection : public ::testing::TestWithParam<std::tuple<Kind, std::string>> {};

TEST_P(Injection, EndsAsTheRulesSay) {
    const auto& [kind, mode] = GetParam();
    DeviceRun device;
    // Its own path may have blanks, which the loader takes for the end of a name.
    std::filesystem::create_symlink(INJECTOR, device.folder() + "/injector.so");
    const RunResult run = device.with({"--planes"})
                                  .within(kPatienceForWalk)
                                  .command({INJECTION_WALK, kind.name, mode});
    EXPECT_EQ(run.status, 0) << run.allOutput();
    int calls = 0;
    const size_t line = run.out.rfind("calls: ");
    ASSERT_NE(line, std::string::npos) << run.allOutput();
    ASSERT_EQ(sscanf(run.out.c_str() + line, "calls: %d", &calls), 1) << run.allOutput();
    EXPECT_GE(calls, mode == "MMF" ? kind.callsOfMmf : kind.callsOfOneFrame) << run.allOutput();
}

INSTANTIATE_TEST_SUITE_P(OfEachKind, Injection,
                         ::testing::Combine(::testing::ValuesIn(kKinds),
                                            ::testing::Values<std::string>("B2Y", "Y2J", "MMF")),
                         [](const auto& info) {
                             std::string name = std::string(std::get<0>(info.param).name) + "_" +
                                                std::get<1>(info.param);
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

}  // namespace
}  // namespace end_to_end
