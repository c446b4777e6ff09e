// Prints findings and writes them as JSON.
#include "report.h"

#include <algorithm>
#include <cstdio>
#include <fstream>

#include "device.h"

namespace conformance {

namespace {

constexpr int kSchema = 1;
constexpr const char* kNames[] = {"ok", "FAIL", "warn", "skip"};

size_t CountOf(const std::vector<Finding>& findings, Outcome outcome) {
    return static_cast<size_t>(std::count_if(
            findings.begin(), findings.end(),
            [&](const Finding& finding) { return finding.verdict.outcome == outcome; }));
}

std::string Quoted(const std::string& text) {
    std::string quoted = "\"";
    for (const char c : text) {
        char escaped[8];
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') quoted += '\\';
        if (code >= 0x20)
            quoted += c;
        else if (snprintf(escaped, sizeof(escaped), "\\u%04x", code) > 0)
            quoted += escaped;
    }
    return quoted + '"';
}

// Names and values that the run as a whole and a finding have.
std::string Totals(const std::vector<Finding>& findings, const char* format) {
    const size_t failed = CountOf(findings, Outcome::kFail);
    const size_t total = findings.size() - CountOf(findings, Outcome::kSkip);
    char text[200];
    snprintf(text, sizeof(text), format, total, total - failed, failed,
             CountOf(findings, Outcome::kWarn));
    return text;
}

}  // namespace

std::string GroupOf(const Check& check) {
    const std::string name = check.name;
    return name.substr(0, name.find('.'));
}

void Print(const Finding& finding) {
    const Verdict& verdict = finding.verdict;
    std::string line = Say("  ", kNames[static_cast<int>(verdict.outcome)]);
    line.resize(8, ' ');
    line += finding.check->name;
    if (verdict.outcome == Outcome::kFail) {
        line += ": expected " + verdict.expected + "; came " + verdict.came;
    } else if (!verdict.came.empty()) {
        line += ": " + verdict.came;
    }
    std::replace(line.begin(), line.end(), '\n', ' ');
    puts(line.c_str());
    fflush(stdout);
}

void PrintTotals(const std::vector<Finding>& findings) {
    const size_t skipped = CountOf(findings, Outcome::kSkip);
    if (skipped > 0) printf("Skipped: %zu\n", skipped);
    puts(Totals(findings, "Total: %zu, Succeeded: %zu, Failed: %zu, Warnings: %zu").c_str());
    fflush(stdout);
}

void PrintList(const Checks& checks) {
    for (const Check& check : checks) {
        printf("%s\n    %s\n    Cure: %s\n", check.name, check.rule, check.cure);
    }
}

bool WriteJson(const std::string& path, const std::vector<Finding>& findings) {
    std::ofstream file(path);
    file << "{\n  \"schema\": " << kSchema << ",\n  \"instance\": " << Quoted(Device::kInstance)
         << ",\n  "
         << Totals(findings, R"("total": %zu, "succeeded": %zu, "failed": %zu, "warnings": %zu,)")
         << "\n  \"skipped\": " << CountOf(findings, Outcome::kSkip) << ",\n  \"checks\": [";
    for (const Finding& finding : findings) {
        const Verdict& verdict = finding.verdict;
        file << (&finding == &findings[0] ? "\n" : ",\n")
             << "    {\"name\": " << Quoted(finding.check->name)
             << ", \"group\": " << Quoted(GroupOf(*finding.check))
             << ", \"outcome\": " << Quoted(kNames[static_cast<int>(verdict.outcome)])
             << ", \"seconds\": " << finding.seconds
             << ",\n     \"rule\": " << Quoted(finding.check->rule)
             << ",\n     \"expected\": " << Quoted(verdict.expected)
             << ", \"came\": " << Quoted(verdict.came) << "}";
    }
    file << "\n  ]\n}\n";
    file.close();
    return !file.fail();
}

bool AnyFailed(const std::vector<Finding>& findings) {
    return CountOf(findings, Outcome::kFail) > 0;
}

}  // namespace conformance
