// offlineservicecheck: says where an offline camera service breaks its contract. See kHelp.
#include <android/binder_process.h>
#include <fnmatch.h>
#include <getopt.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iomanip>

#include "device.h"

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
    std::vector<std::string> only;
    std::string json;
    int list = 0, stop = 0, physics = 0, help = 0;
    long repeat = 1;
};

struct Finding {
    const Check& check;
    Verdict verdict;
};
using Counts = std::array<size_t, std::size(kOutcomes)>;

// False after a message.
bool ReadOptions(int argc, char** argv, Options* options) {
    const option known[] = {{"only", required_argument, nullptr, 'o'},
                            {"json", required_argument, nullptr, 'j'},
                            {"repeat", required_argument, nullptr, 'r'},
                            {"list", no_argument, &options->list, 1},
                            {"stop-on-failure", no_argument, &options->stop, 1},
                            {"physics", no_argument, &options->physics, 1},
                            {"help", no_argument, &options->help, 1},
                            {}};
    for (int found; (found = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        if (found == '?') return false;
        if (found == 'o') options->only.push_back(optarg);
        if (found == 'j') options->json = optarg;
        if (found == 'r') options->repeat = strtol(optarg, nullptr, 10);
    }
    const bool counted = options->repeat >= 1 && options->repeat <= 1000;
    if (!counted) fputs("offlineservicecheck: --repeat takes a number from 1 to 1000\n", stderr);
    if (optind < argc) fprintf(stderr, "offlineservicecheck: unknown word %s\n", argv[optind]);
    return counted && optind == argc;
}

Checks SelectChecks(const Options& options) {
    const std::pair<const char*, const Checks&> groups[] = {{"registration", kRegistrationChecks},
                                                            {"session", kSessionChecks},
                                                            {"configuration", kConfigurationChecks},
                                                            {"process", kProcessChecks},
                                                            {"requests", kRequestChecks},
                                                            {"content", kContentChecks},
                                                            {"lending", kLendingChecks},
                                                            {"fences", kFenceChecks},
                                                            {"endurance", kEnduranceChecks},
                                                            {"physics", kPhysicsChecks}};
    Checks selected;
    for (const auto& [group, checks] : groups) {
        if (&checks == &kPhysicsChecks && !options.physics) continue;
        for (const Check& check : checks) {
            const std::string name = Say(group, ".", check.name);
            const auto matches = [&, in = group](const std::string& pattern) {
                return pattern == in || fnmatch(pattern.c_str(), name.c_str(), 0) == 0;
            };
            const auto& only = options.only;
            const bool wanted = only.empty() || std::any_of(only.begin(), only.end(), matches);
            if (wanted) selected.push_back({name, check.rule, check.run, group});
        }
    }
    return selected;
}

void Print(const Finding& finding) {
    const Verdict& verdict = finding.verdict;
    std::string text = verdict.expected.empty() ? "" : "expected " + verdict.expected + "; came ";
    text += verdict.came;
    printf("  %-6s%s%s%s\n", kOutcomes[int(verdict.outcome)], finding.check.name.c_str(),
           text.empty() ? "" : ": ", text.c_str());
    fflush(stdout);
}

// Runs one check. `gone` becomes the reason to skip the rest.
Verdict RunOne(Device& device, const Check& check, std::string* gone) {
    const bool asks = device.service != nullptr || check.name == "registration.interface";
    const Verdict verdict = asks ? check.run(device) : Skip("see registration.interface");
    const std::string trouble = device.Trouble();
    if (trouble.empty()) return verdict;
    if (!device.Connect()) *gone = Say(trouble, ", in ", check.name);
    return verdict.outcome == Outcome::kFail ? Fail(verdict.expected, verdict.came + "; " + trouble)
                                             : Fail("a service that goes on", trouble);
}

std::vector<Finding> RunAll(const Options& options, const Checks& checks) {
    std::vector<Finding> findings;
    Device device;
    for (long round = 0; round < options.repeat; ++round) {
        const bool there = device.Connect();
        std::string group,
                gone = there ? "" : Say(Device::kInstance, " is not registered within 5 s");
        for (const Check& check : checks) {
            if (check.group != group) puts((group = check.group).c_str());
            const bool absent = !there && &check == &checks[0];
            findings.push_back({check, absent         ? Fail("a service", gone)
                                       : gone.empty() ? RunOne(device, check, &gone)
                                                      : Skip(gone)});
            Verdict& verdict = findings.back().verdict;
            for (std::string* text : {&verdict.expected, &verdict.came}) {
                std::replace_if(
                        text->begin(), text->end(), [](unsigned char c) { return c < 0x20; }, ' ');
            }
            Print(findings.back());
            if (options.stop && verdict.outcome == Outcome::kFail) return findings;
        }
    }
    return findings;
}

// False if the file cannot be written.
bool WriteJson(const std::string& path, const std::vector<Finding>& findings,
               const Counts& counts) {
    std::ofstream file(path);
    file << "{\"schema\": 1";
    for (size_t i = 0; i < counts.size(); ++i) {
        file << ", " << std::quoted(kOutcomes[i]) << ": " << counts[i];
    }
    file << ", \"checks\": [";
    const char* separator = "\n";
    for (const auto& [check, verdict] : findings) {
        file << Say(separator, "{\"name\": ", std::quoted(check.name),
                    ", \"rule\": ", std::quoted(check.rule),
                    ", \"outcome\": ", std::quoted(kOutcomes[int(verdict.outcome)]),
                    ", \"expected\": ", std::quoted(verdict.expected),
                    ", \"came\": ", std::quoted(verdict.came), "}");
        separator = ",\n";
    }
    file << "\n]}\n";
    file.close();
    return !file.fail();
}

int Main(int argc, char** argv) {
    Options options;
    if (!ReadOptions(argc, argv, &options)) return kMisuse;
    if (options.help) return fputs(kHelp, stdout) < 0;
    const Checks checks = SelectChecks(options);
    if (checks.empty()) {
        fputs("offlineservicecheck: no check matches; --list shows them\n", stderr);
        return kMisuse;
    }
    for (const Check& check : options.list ? checks : Checks()) {
        printf("%s: %s\n", check.name.c_str(), check.rule.c_str());
    }
    if (options.list) return 0;
    const std::vector<Finding> findings = RunAll(options, checks);
    Counts counts = {};
    for (const Finding& finding : findings) ++counts[size_t(finding.verdict.outcome)];
    const auto [ok, failed, warned, skipped] = counts;
    if (skipped > 0) printf("Skipped: %zu\n", skipped);
    printf("Total: %zu, Succeeded: %zu, Failed: %zu, Warnings: %zu\n", ok + failed + warned,
           ok + warned, failed, warned);
    if (options.json.empty() || WriteJson(options.json, findings, counts)) return failed > 0;
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
