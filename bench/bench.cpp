// Measures the stand-in beside baselines that run in turns with it: timing, medians, the table.
#include "bench.h"

#include <sys/utsname.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace bench {
namespace {

std::string ProcessorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        const size_t colon = line.find(": ");
        if (line.rfind("model name", 0) == 0 && colon != line.npos) return line.substr(colon + 2);
    }
    return "unknown processor";
}

// What everything is measured on, and the head of the table.
void PrintHead() {
    utsname system = {};
    uname(&system);
    double load = 0;
    getloadavg(&load, 1);
    printf("# Measured\n\n"
           "Written by `./check bench`. Every time is a median of rounds in which all rows of a\n"
           "group take turns; a ratio is to the group's row of ratio 1.00, and its mark the most\n"
           "that it may be.\n\n"
           "- processor: %s, %u in use\n- system: %s %s %s\n- compiler: clang %s\n"
           "- load average of the last minute: %.2f\n\n"
           "| | ms | ratio | mark | |\n|---|---:|---:|---:|---|\n",
           ProcessorName().c_str(), std::thread::hardware_concurrency(), system.sysname,
           system.release, system.machine, __clang_version__, load);
}

}  // namespace

void Compare(const std::string& title, const std::vector<Subject>& subjects, size_t baseline) {
    std::vector<std::vector<double>> times(subjects.size());
    for (int round = -1; round < kRounds; ++round) {  // the first one does not count
        for (size_t i = 0; i < subjects.size(); ++i) {
            if (subjects[i].before) subjects[i].before();
            const double start = Now();
            subjects[i].run();
            if (round >= 0) times[i].push_back((Now() - start) * subjects[i].share);
        }
    }
    std::vector<double> medians;
    for (const std::vector<double>& subject : times) medians.push_back(Median(subject));
    PrintTimes(title, subjects, medians, baseline);
}

void PrintTimes(const std::string& title, const std::vector<Subject>& subjects,
                const std::vector<double>& milliseconds, size_t baseline) {
    printf("| **%s** | | | | |\n", title.c_str());
    for (size_t i = 0; i < subjects.size(); ++i) {
        const double time = milliseconds[i], ratio = time / milliseconds[baseline];
        const double mark = subjects[i].mark;
        // Short times get the digits that tell them apart.
        printf("| %s | %.*f | %.2f |", subjects[i].name.c_str(), time < 1 ? 4 : 2, time, ratio);
        if (mark > 0) printf(" <= %.2f | %s |\n", mark, ratio <= mark ? "met" : "**missed**");
        if (mark == 0) printf("  |  |\n");
    }
    fflush(stdout);
}

double Now() {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(time).count();
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Require(bool done, const std::string& what) {
    if (done) return;
    fprintf(stderr, "bench: cannot %s\n", what.c_str());
    exit(1);
}

}  // namespace bench

int main(int argc, char** argv) {
    if (argc == 3 && argv[1] == std::string("--echo")) bench::ServeEcho(argv[2]);
    bench::Require(argc == 1, "take words: it runs all groups");
    bench::GoIntoDevice();
    bench::PrintHead();
    bench::MeasureImaging();
    bench::MeasureLoading();
    bench::MeasureRuns();
    bench::MeasureBinder();  // last: leaves this process on one core
}
