// What a whole run of the tool costs, beside copying as many bytes from file to file.
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "device.h"
#include "groups.h"
#include "measure.h"

namespace bench {
namespace {

constexpr size_t kCopyBlock = 128 * 1024;  // as cp's

void RunTool(const std::string& word) {
    static const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    Require(WaitFor(Start({"vexofflinecameratest", "-t", word}, null)) == 0, "run " + word);
}

// As cp copies where it can neither share nor splice.
void CopyFile(const std::string& from, const std::string& to) {
    static std::vector<char> block(kCopyBlock);
    const int in = open(from.c_str(), O_RDONLY | O_CLOEXEC);
    const int out = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    ssize_t got;
    while ((got = read(in, block.data(), block.size())) > 0) {
        if (write(out, block.data(), static_cast<size_t>(got)) != got) break;
    }
    Require(got == 0, "copy " + from + " to " + to);
    close(in);
    close(out);
}

// The one dump of the mode.
std::string DumpOf(const std::string& word) {
    for (const auto& entry : std::filesystem::directory_iterator(kDataFolder)) {
        const std::string name = entry.path().filename().string();
        if (name.rfind("OfflineAidl_", 0) == 0 && name.find("_" + word + "_") != name.npos) {
            return entry.path();
        }
    }
    Require(false, "find the dump of " + word);
    return "";
}

void CompareRun(const std::string& word, const std::string& source, double mark) {
    RunTool(word);
    const std::string from = kDataFolder + source, dump = DumpOf(word);
    const std::string copies = std::string(kDataFolder) + "copy_of_";
    Compare("A whole " + word + " run with plane layouts",
            {{"source and dump copied from file to file",
              [&] {
                  CopyFile(from, copies + "source");
                  CopyFile(dump, copies + "dump");
              }},
             {"vexofflinecameratest -t " + word, [&] { RunTool(word); }, {}, mark}});
}

// Milliseconds that the tool waits for answers in one run, what services do for them included.
double TransactionTime() {
    const std::string path = std::string(kDataFolder) + "trace";
    const int trace = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0644);
    setenv("STANDIN_BINDER_TRACE_FD", std::to_string(trace).c_str(), 1);
    RunTool("B2Y");
    unsetenv("STANDIN_BINDER_TRACE_FD");
    close(trace);
    double microseconds = 0;
    std::ifstream lines(path);
    for (std::string line; std::getline(lines, line);) {
        const size_t unit = line.rfind(" us ");
        if (line.find(" -> ") == line.npos || unit == line.npos) continue;
        microseconds += strtod(line.c_str() + line.rfind(' ', unit - 1), nullptr);
    }
    Require(microseconds > 0, "see a transaction in the trace of a run");
    return microseconds / 1000;
}

}  // namespace

void MeasureRuns() {
    CompareRun("B2Y", "4096_3072_RAW10.raw", 6);
    CompareRun("Y2J", "4000_3000_NV12.yuv", 0);
    CompareRun("MMF", "4096_3072_RAW10.raw", 0);
    std::vector<double> waits, runs;
    for (int round = 0; round < kRounds; ++round) {
        const double start = Now();
        waits.push_back(TransactionTime());
        runs.push_back(Now() - start);
    }
    PrintTimes("Binder in a B2Y run",
               {{"the run", {}},
                {"its calls, with what services do before they answer", {}, {}, 0.05}},
               {Median(runs), Median(waits)});
}

}  // namespace bench
