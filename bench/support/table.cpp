// Tables and the machine's description.
#include "table.h"

#include <sys/utsname.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <thread>

namespace bench {

namespace {

std::string ProcessorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.compare(0, 10, "model name") != 0) continue;
        const size_t colon = line.find(": ");
        if (colon != std::string::npos) return line.substr(colon + 2);
    }
    return "unknown processor";
}

/** Short times with the digits that tell them apart. */
std::string Time(double milliseconds) {
    return Number(milliseconds, milliseconds < 1 ? 4 : 2);
}

Table ComparisonTable(const std::string& title) {
    printf("### %s\n\n", title.c_str());
    return Table({"", "ms", "ratio", "mark", ""});
}

}  // namespace

void Table::Print() const {
    std::vector<size_t> widths(mRows[0].size());
    for (const auto& row : mRows) {
        for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], row[i].size());
    }
    for (size_t r = 0; r < mRows.size(); ++r) {
        for (size_t i = 0; i < widths.size(); ++i) {
            // Names to the left, numbers to the right.
            const int width = static_cast<int>(widths[i]);
            printf(i == 0 ? "| %-*s " : "| %*s ", width, mRows[r][i].c_str());
        }
        printf("|\n");
        for (size_t i = 0; r == 0 && i < widths.size(); ++i) {
            printf("|%s%s", std::string(widths[i] + 1, '-').c_str(), i == 0 ? "-" : ":");
        }
        if (r == 0) printf("|\n");
    }
    printf("\n");
}

std::string Number(double value, int digits) {
    char text[64];
    snprintf(text, sizeof(text), "%.*f", digits, value);
    return text;
}

std::vector<std::string> AgainstMark(double ratio, double most) {
    return {Number(ratio, 2), "<= " + Number(most, 2), ratio <= most ? "met" : "MISSED"};
}

void PrintComparison(const std::string& title, const std::vector<Subject>& subjects,
                     const std::vector<double>& milliseconds, size_t baseline,
                     const std::vector<double>& marks) {
    Table table = ComparisonTable(title);
    for (size_t i = 0; i < subjects.size(); ++i) {
        const double ratio = milliseconds[i] / milliseconds[baseline];
        std::vector<std::string> row = {subjects[i].name, Time(milliseconds[i])};
        std::vector<std::string> verdict = {Number(ratio, 2), "", ""};
        if (i < marks.size() && marks[i] > 0) verdict = AgainstMark(ratio, marks[i]);
        row.insert(row.end(), verdict.begin(), verdict.end());
        table.Add(row);
    }
    table.Print();
}

void PrintMilliseconds(const std::string& title, const std::string& name, double milliseconds,
                       double most) {
    Table table = ComparisonTable(title);
    const std::vector<std::string> verdict = AgainstMark(milliseconds, most);
    table.Add({name, Time(milliseconds), "", verdict[1] + " ms", verdict[2]});
    table.Print();
}

std::string MachineDescription() {
    utsname system = {};
    uname(&system);
    double load = 0;
    if (getloadavg(&load, 1) != 1) load = -1;
    return "- processor: " + ProcessorName() + ", " +
           std::to_string(std::thread::hardware_concurrency()) +
           " in use\n- system: " + system.sysname + " " + system.release + " " + system.machine +
           "\n- compiler: clang " __clang_version__ "\n- load average of the last minute: " +
           Number(load, 2) + "\n";
}

}  // namespace bench
