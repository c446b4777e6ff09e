// What a whole run of the tool costs, beside copying as many bytes from file to file.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "child.h"
#include "device.h"
#include "measure.h"
#include "table.h"

namespace {

constexpr int kRounds = 15;
constexpr size_t kCopyBlock = 128 * 1024;  // as cp's

[[noreturn]] void Fail(const std::string& problem) {
    fprintf(stderr, "run_bench: %s\n", problem.c_str());
    exit(1);
}

struct Mode {
    const char* word;
    const char* source;
};

void RunTool(const char* word) {
    static const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    const int status = bench::WaitFor(bench::Start({"vexofflinecameratest", "-t", word}, null));
    if (status != 0) Fail(std::string(word) + " ended with status " + std::to_string(status));
}

/** As cp copies where it can neither share nor splice. */
void CopyFile(const std::string& from, const std::string& to) {
    static std::vector<char> block(kCopyBlock);
    const int in = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    const int out = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (in < 0 || out < 0) Fail("cannot copy " + from + " to " + to);
    ssize_t got;
    while ((got = read(in, block.data(), block.size())) > 0) {
        if (write(out, block.data(), static_cast<size_t>(got)) != got) Fail("cannot write " + to);
    }
    close(in);
    close(out);
}

/** The one dump that is there. */
std::string DumpOf(const char* word) {
    std::string found;
    for (const auto& entry : std::filesystem::directory_iterator(bench::kDataFolder)) {
        const std::string name = entry.path().filename().string();
        if (name.compare(0, 12, "OfflineAidl_") != 0) continue;
        if (name.find(std::string("_") + word + "_") != std::string::npos) found = entry.path();
    }
    if (found.empty()) Fail(std::string(word) + " has left no dump");
    return found;
}

/** Milliseconds that the tool waits for answers in one run, what services do for them included. */
double TransactionTime(const char* word) {
    const std::string path = std::string(bench::kDataFolder) + "trace";
    const int trace = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0644);
    setenv("STANDIN_BINDER_TRACE_FD", std::to_string(trace).c_str(), 1);
    RunTool(word);
    unsetenv("STANDIN_BINDER_TRACE_FD");
    close(trace);
    double microseconds = 0;
    std::ifstream lines(path);
    for (std::string line; std::getline(lines, line);) {
        const size_t unit = line.rfind(" us ");
        if (line.find(" -> ") == std::string::npos || unit == std::string::npos) continue;
        microseconds += strtod(line.c_str() + line.rfind(' ', unit - 1), nullptr);
    }
    if (microseconds <= 0) Fail("the trace of a run shows no transaction");
    return microseconds / 1000;
}

void Measure(const Mode& mode, const std::vector<double>& marks) {
    RunTool(mode.word);
    const std::string source = std::string(bench::kDataFolder) + mode.source;
    const std::string dump = DumpOf(mode.word);
    const std::string copies = std::string(bench::kDataFolder) + "copy_of_";
    const std::vector<bench::Subject> subjects = {
            {"source and dump copied from file to file",
             [&] {
                 CopyFile(source, copies + "source");
                 CopyFile(dump, copies + "dump");
             }},
            {std::string("vexofflinecameratest -t ") + mode.word, [&] { RunTool(mode.word); }},
    };
    bench::PrintComparison(std::string("A whole ") + mode.word + " run with plane layouts",
                           subjects, MedianTimes(subjects, kRounds), 0, marks);
}

void BinderShare() {
    std::vector<double> waits, runs;
    for (int round = 0; round < kRounds; ++round) {
        const double start = bench::Now();
        waits.push_back(TransactionTime("B2Y"));
        runs.push_back(bench::Now() - start);
    }
    bench::PrintComparison(
            "Binder in a B2Y run",
            {{"the run", {}}, {"its calls, with what services do before they answer", {}}},
            {bench::Median(runs), bench::Median(waits)}, 0, {0, 0.05});
}

}  // namespace

int main() {
    bench::GoIntoDevice();
    printf("## Whole runs, everything warm\n\n");
    Measure({"B2Y", "4096_3072_RAW10.raw"}, {0, 6});
    Measure({"Y2J", "4000_3000_NV12.yuv"}, {});
    Measure({"MMF", "4096_3072_RAW10.raw"}, {});
    BinderShare();
}
