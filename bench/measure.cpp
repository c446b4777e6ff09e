// Timing in turns, medians, and the rows of the table.
#include "measure.h"

#include <sys/utsname.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace bench {
namespace {

void PrintRow(const std::string& name, double milliseconds, const char* ratio, double mark,
              double measured, const char* unit) {
    // Short times get the digits that tell them apart.
    printf("| %s | %.*f | %s |", name.c_str(), milliseconds < 1 ? 4 : 2, milliseconds, ratio);
    if (mark > 0) {
        printf(" <= %.2f%s | %s |\n", mark, unit, measured <= mark ? "met" : "**missed**");
    } else {
        printf("  |  |\n");
    }
}

std::string ProcessorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        const size_t colon = line.find(": ");
        if (line.rfind("model name", 0) == 0 && colon != std::string::npos) {
            return line.substr(colon + 2);
        }
    }
    return "unknown processor";
}

}  // namespace

double Now() {
    const auto time = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double, std::milli>(time).count();
}

double Median(std::vector<double> values) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    const size_t middle = values.size() / 2;
    if (values.size() % 2 != 0) return values[middle];
    return (values[middle - 1] + values[middle]) / 2;
}

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
    for (std::vector<double>& subject : times) medians.push_back(Median(std::move(subject)));
    PrintTimes(title, subjects, medians, baseline);
}

void PrintTimes(const std::string& title, const std::vector<Subject>& subjects,
                const std::vector<double>& milliseconds, size_t baseline) {
    printf("| **%s** | | | | |\n", title.c_str());
    for (size_t i = 0; i < subjects.size(); ++i) {
        const double ratio = milliseconds[i] / milliseconds[baseline];
        char text[32];
        snprintf(text, sizeof(text), "%.2f", ratio);
        PrintRow(subjects[i].name, milliseconds[i], text, subjects[i].mark, ratio, "");
    }
    fflush(stdout);
}

void PrintTime(const std::string& title, const std::string& name, double milliseconds,
               double most) {
    printf("| **%s** | | | | |\n", title.c_str());
    PrintRow(name, milliseconds, "", most, milliseconds, " ms");
}

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

void Require(bool done, const std::string& what) {
    if (done) return;
    fprintf(stderr, "bench: cannot %s\n", what.c_str());
    exit(1);
}

}  // namespace bench
