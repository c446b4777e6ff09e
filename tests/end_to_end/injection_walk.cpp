// Inside a stand-in device: runs the tool again and again, each time with another call failing,
// until a run has made no such call. Prints and judges each end, and what the services then hold.
// usage: injection_walk KIND MODE

#include <gtest/gtest.h>
#include <stdio.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <regex>
#include <sstream>
#include <thread>
#include <utility>

#include "tests/end_to_end/device_run.h"
#include "tests/end_to_end/device_state.h"
#include "tests/end_to_end/injection_rules.h"

namespace end_to_end {
namespace {

#if __has_feature(address_sanitizer)
constexpr int kAtATime = 1;  // pictures take so long that more would be late for the tool's waits
#else
constexpr int kAtATime = 2;
#endif
constexpr int kTries = 3;        // of a run whose result is late, which a busy machine may explain
constexpr int kMostCalls = 200;  // beyond that, counting must have gone wrong

constexpr char kInjector[] = "/data/vendor/camera/injector.so";

// The search for leaks needs descriptors of its own.
constexpr char kLimit[] =
        "ulimit -n $0 && export ASAN_OPTIONS=\"$ASAN_OPTIONS:detect_leaks=0\" && exec \"$@\"";

struct Run {
    std::string call;  // that failed; empty: none did
    Finished finished;
    std::vector<std::string> messages;
    std::string end;
};

Finished runTool(const std::string& kind, const std::string& mode, int number) {
    std::vector<std::string> words = {"vexofflinecameratest", "-t", mode};
    Subprocess::Environment environment = {{"STANDIN_LOG_ECHO", "1"}};
    if (kind == kDescriptorLimit) {
        const std::vector<std::string> limited = {"sh", "-c", kLimit, std::to_string(number)};
        words.insert(words.begin(), limited.begin(), limited.end());
    } else {
        environment.push_back({"LD_PRELOAD", kInjector});
        environment.push_back({"STANDIN_INJECT", kind + ":" + std::to_string(number)});
    }
    return runProgram(words, environment);
}

// Without what the loader, or a sanitizer that sees the crash, has said.
std::string logLinesOf(const std::string& text) {
    static const std::regex& date = *new std::regex("\\d\\d-\\d\\d .*");
    std::string log;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_match(line, date)) log += line + "\n";
    }
    return log;
}

Run runWithFailingCall(const std::string& kind, const std::string& mode, int number) {
    Run run = {"", runTool(kind, mode, number), {}, ""};
    const std::string& err = run.finished.err;
    for (const LogLine& line : parseLog(run.finished.status == 0 ? err : logLinesOf(err))) {
        run.messages.push_back(line.message);
        static const std::regex& failing = *new std::regex("call \\d+ fails: (.*)");
        std::smatch match;
        if (line.tag == "Injector" && std::regex_match(line.message, match, failing)) {
            run.call = match[1];
        }
    }
    run.end = endOf(run.finished.status, run.messages);
    if (kind == kDescriptorLimit && run.end != kCompleted) run.call = kind;
    return run;
}

// Several threads try the numbers in order, until one has found no call.
class Walk {
  public:
    Walk(std::string kind, std::string mode) : m_kind(std::move(kind)), m_mode(std::move(mode)) {}

    // The number of calls.
    int toTheEnd() {
        std::vector<std::thread> threads;
        for (int i = 0; i < kAtATime; ++i) threads.emplace_back([this] { tryNumbers(); });
        for (std::thread& thread : threads) thread.join();
        EXPECT_LT(m_past.load(), kMostCalls);
        return m_past - 1;
    }

  private:
    void tryNumbers() {
        for (int number = m_next++; number < m_past; number = m_next++) {
            Run run = runWithFailingCall(m_kind, m_mode, number);
            for (int i = 1; i < kTries && run.end == kTimedOut; ++i) {
                run = runWithFailingCall(m_kind, m_mode, number);
            }
            const std::lock_guard<std::mutex> lock(m_mutex);
            report(number, run);
            if (run.call.empty()) m_past = std::min(m_past.load(), number);
        }
    }

    void report(int number, const Run& run) {
        printf("%s %s %d, %s: %s\n", m_kind.c_str(), m_mode.c_str(), number,
               run.call.empty() ? "past the last call" : run.call.c_str(), run.end.c_str());
        const std::string fault = run.call.empty()
                                          ? run.end == kCompleted ? "" : "must be completed"
                                          : judge(m_mode, run.call, run.end, run.messages);
        EXPECT_EQ(fault, "") << "status " << run.finished.status << "\n" << run.finished.err;
    }

    const std::string m_kind;
    const std::string m_mode;
    std::atomic<int> m_next = 1;
    std::atomic<int> m_past = kMostCalls;  // the least number that no call has had
    std::mutex m_mutex;                    // guards output, and changes of m_past
};

}  // namespace
}  // namespace end_to_end

int main(int count, char** words) {
    ::testing::InitGoogleTest(&count, words);
    if (count != 3) {
        fprintf(stderr, "usage: injection_walk KIND MODE\n");
        return 2;
    }
    const end_to_end::DeviceState before = end_to_end::idleDeviceState();
    const int calls = end_to_end::Walk(words[1], words[2]).toTheEnd();
    EXPECT_EQ(end_to_end::idleDeviceState(), before) << "processes and their descriptors";
    printf("calls: %d\n", calls);
    return ::testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed() ? 1 : 0;
}
