// offlineservicecheck: says where an offline camera service breaks its contract. See kHelp.
#include <android/binder_process.h>
#include <fnmatch.h>
#include <getopt.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "device.h"
#include "victim.h"

namespace conformance {
namespace {

constexpr char kHelp[] =
        R"(usage: offlineservicecheck [OPTIONS]
Checks the offline camera service that is registered on this device, one line for each check.

  --list             all checks and their rules
  --only PATTERN     only checks whose name or group matches, such as 'process.*'; may be repeated
  --json FILE        write the findings to FILE, too
  --stop-on-failure  end after the first failure
  --repeat N         all of it N times, 1 to 1000
  --physics          also the exact pictures of the reference service
  --help             this text

ok: the rule holds; FAIL: it does not; warn: allowed but unwise; skip: it could not be checked.
Status 0 without failures, 1 with, 2 for wrong options. No wait is longer than 5 s.
)";

constexpr int kMisuse = 2;
constexpr const char* kOutcomes[] = {"ok", "FAIL", "warn", "skip"};

struct Options {
    std::vector<std::string> patterns;
    std::string json;
    bool list = false, stop = false, physics = false, help = false;
    long repeat = 1;
};

struct Finding {
    const Check* check;
    Verdict verdict;
    double seconds = 0;
};

// False after a message.
bool ReadOptions(int argc, char** argv, Options* options) {
    constexpr option kKnown[] = {{"list", no_argument, nullptr, 'l'},
                                 {"only", required_argument, nullptr, 'o'},
                                 {"json", required_argument, nullptr, 'j'},
                                 {"stop-on-failure", no_argument, nullptr, 's'},
                                 {"repeat", required_argument, nullptr, 'r'},
                                 {"physics", no_argument, nullptr, 'p'},
                                 {"help", no_argument, nullptr, 'h'},
                                 {}};
    for (int found; (found = getopt_long(argc, argv, "", kKnown, nullptr)) != -1;) {
        if (found == '?') return false;
        if (found == 'l') options->list = true;
        if (found == 'o') options->patterns.push_back(optarg);
        if (found == 'j') options->json = optarg;
        if (found == 's') options->stop = true;
        if (found == 'p') options->physics = true;
        if (found == 'h') options->help = true;
        if (found != 'r') continue;
        char* end = nullptr;
        options->repeat = strtol(optarg, &end, 10);
        if (*end == '\0' && options->repeat >= 1 && options->repeat <= 1000) continue;
        fprintf(stderr, "offlineservicecheck: --repeat %s: no number from 1 to 1000\n", optarg);
        return false;
    }
    if (optind < argc) fprintf(stderr, "offlineservicecheck: unknown word %s\n", argv[optind]);
    return optind == argc;
}

std::string GroupOf(const Check& check) {
    return std::string(check.name).substr(0, std::string(check.name).find('.'));
}

Checks SelectChecks(const Options& options) {
    Checks selected;
    for (const auto& group :
         {RegistrationChecks, SessionChecks, ConfigurationChecks, ProcessChecks, RequestChecks,
          ContentChecks, LendingChecks, FenceChecks, EnduranceChecks, PhysicsChecks}) {
        if (group == PhysicsChecks && !options.physics) continue;
        for (const Check& check : group()) {
            const auto matches = [&](const std::string& pattern) {
                return pattern == GroupOf(check) || fnmatch(pattern.c_str(), check.name, 0) == 0;
            };
            const auto& patterns = options.patterns;
            if (patterns.empty() || std::any_of(patterns.begin(), patterns.end(), matches)) {
                selected.push_back(check);
            }
        }
    }
    return selected;
}

void Print(const Finding& finding) {
    const Verdict& verdict = finding.verdict;
    std::string line = Say("  ", kOutcomes[static_cast<int>(verdict.outcome)]);
    line.resize(8, ' ');
    line += finding.check->name;
    if (!verdict.expected.empty()) line += ": expected " + verdict.expected + "; came";
    if (verdict.expected.empty() && !verdict.came.empty()) line += ":";
    if (!verdict.came.empty()) line += " " + verdict.came;
    std::replace(line.begin(), line.end(), '\n', ' ');
    puts(line.c_str());
    fflush(stdout);
}

// Runs one check. `gone` becomes the reason to skip the rest.
Verdict RunOne(Device& device, const Check& check, std::string* gone) {
    Verdict verdict = check.run(device);
    const std::string trouble = device.Trouble();
    if (trouble.empty()) return verdict;
    if (verdict.outcome != Outcome::kFail)
        verdict = Fail("a service that goes on", trouble);
    else
        verdict.came += "; " + trouble;
    if (trouble.find("died") == trouble.npos || !device.Connect()) {
        *gone = Say(trouble, ", in ", check.name);
    }
    return verdict;
}

std::vector<Finding> RunAll(const Options& options, const Checks& checks) {
    std::vector<Finding> findings;
    Device device;
    for (long round = 0; round < options.repeat; ++round) {
        std::string group, gone;
        const bool there = device.Connect();
        if (!there) gone = std::string(Device::kInstance) + " is not registered within 5 s";
        for (const Check& check : checks) {
            if (GroupOf(check) != group) puts((group = GroupOf(check)).c_str());
            const auto begin = Clock::now();
            Finding finding = {&check, Skip(gone)};
            if (gone.empty()) finding.verdict = RunOne(device, check, &gone);
            if (!there && &check == &checks[0]) finding.verdict = Fail("a service", gone);
            finding.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
            Print(finding);
            findings.push_back(finding);
            if (options.stop && finding.verdict.outcome == Outcome::kFail) return findings;
        }
    }
    return findings;
}

size_t Count(const std::vector<Finding>& findings, Outcome outcome) {
    const auto has = [&](const Finding& finding) { return finding.verdict.outcome == outcome; };
    return static_cast<size_t>(std::count_if(findings.begin(), findings.end(), has));
}

std::string Quoted(const std::string& text) {
    std::string quoted;
    for (const char c : text) {
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
    }
    return '"' + quoted + '"';
}

// False if the file cannot be written.
bool WriteJson(const std::string& path, const std::vector<Finding>& findings) {
    std::ofstream file(path);
    file << "{\"schema\": 1, \"instance\": " << Quoted(Device::kInstance) << ", \"checks\": [";
    for (const Finding& finding : findings) {
        const Verdict& verdict = finding.verdict;
        file << (&finding == &findings[0] ? "\n" : ",\n")
             << "{\"name\": " << Quoted(finding.check->name)
             << ", \"rule\": " << Quoted(finding.check->rule)
             << ", \"outcome\": " << Quoted(kOutcomes[static_cast<int>(verdict.outcome)])
             << ", \"expected\": " << Quoted(verdict.expected)
             << ", \"came\": " << Quoted(verdict.came) << ", \"seconds\": " << finding.seconds
             << "}";
    }
    const size_t failed = Count(findings, Outcome::kFail),
                 skipped = Count(findings, Outcome::kSkip);
    file << "\n], \"total\": " << findings.size() - skipped << ", \"failed\": " << failed
         << ", \"warnings\": " << Count(findings, Outcome::kWarn) << ", \"skipped\": " << skipped
         << "}\n";
    file.close();
    return !file.fail();
}

int Main(int argc, char** argv) {
    Options options;
    if (!ReadOptions(argc, argv, &options)) return kMisuse;
    if (options.help) return fputs(kHelp, stdout) < 0;
    const Checks checks = SelectChecks(options);
    if (checks.empty()) fputs("offlineservicecheck: no check matches; see --list\n", stderr);
    if (checks.empty()) return kMisuse;
    for (const Check& check : checks) {
        if (options.list) printf("%s: %s\n", check.name, check.rule);
    }
    if (options.list) return 0;
    const std::vector<Finding> findings = RunAll(options, checks);
    const size_t failed = Count(findings, Outcome::kFail),
                 skipped = Count(findings, Outcome::kSkip);
    if (skipped > 0) printf("Skipped: %zu\n", skipped);
    const size_t total = findings.size() - skipped;
    printf("Total: %zu, Succeeded: %zu, Failed: %zu, Warnings: %zu\n", total, total - failed,
           failed, Count(findings, Outcome::kWarn));
    if (options.json.empty() || WriteJson(options.json, findings)) return failed > 0;
    fprintf(stderr, "offlineservicecheck: cannot write %s\n", options.json.c_str());
    return kMisuse;
}

}  // namespace
}  // namespace conformance

int main(int argc, char** argv) {
    ABinderProcess_setThreadPoolMaxThreadCount(6);
    ABinderProcess_startThreadPool();
    if (argc == 3 && strcmp(argv[1], "--victim") == 0) conformance::BeVictim(argv[2]);
    const int status = conformance::Main(argc, argv);
    fflush(nullptr);
    _exit(status);  // calls that were never answered still hold threads
}
