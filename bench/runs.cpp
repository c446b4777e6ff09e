// What a whole run of the tool costs, beside copying as many bytes from file to file.
#include <fcntl.h>
#include <runlog/runlog.h>
#include <unistd.h>

#include <cstdlib>

#include "bench.h"

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

void CompareRun(const std::string& word, const char* source, const std::string& dump, double mark) {
    RunTool(word);
    const std::string folder = kFrameFolder;
    const std::string name = folder + "OfflineAidl_CameraId_2_Frame_1_" + word + "_" + dump;
    Compare("A whole " + word + " run with plane layouts",
            {{"source and dump copied from file to file",
              [&] {
                  CopyFile(folder + source, folder + "copy_of_source");
                  CopyFile(name, folder + "copy_of_dump");
              }},
             {"vexofflinecameratest -t " + word, [&] { RunTool(word); }, {}, mark}});
}

// Milliseconds that the tool waits for answers in one run, what services do for them included.
double TransactionTime() {
    const std::string path = std::string(kFrameFolder) + "trace";
    const int trace = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0644);
    setenv("STANDIN_BINDER_TRACE_FD", std::to_string(trace).c_str(), 1);
    RunTool("B2Y");
    unsetenv("STANDIN_BINDER_TRACE_FD");
    close(trace);
    const auto read = runlog::ReadTrace(path);
    Require(read.Ok() && !read.Value().calls.empty(), "see a transaction in the trace of a run");
    double microseconds = 0;
    for (const runlog::Call& call : read.Value().calls) {
        if (!call.incoming) microseconds += static_cast<double>(call.durationUs);
    }
    return microseconds / 1000;
}

}  // namespace

void MeasureRuns() {
    CompareRun("B2Y", "4096_3072_RAW10.raw", "Stride[4096]_Scanline[3072].yuv", 6);
    CompareRun("Y2J", "4000_3000_NV12.yuv", "Width[4000]_Height[3000].jpg", 0);
    CompareRun("MMF", "4096_3072_RAW10.raw", "Stride[4096]_Scanline[3072].yuv", 0);
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
