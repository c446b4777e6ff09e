// offlineservicecheck: says where an offline camera service breaks its contract. See kHelp.
#include <android/binder_process.h>
#include <fnmatch.h>
#include <getopt.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "device.h"
#include "report.h"
#include "victim.h"

namespace conformance {
namespace {

constexpr char kHelp[] =
        R"(usage: offlineservicecheck [OPTIONS]
Checks the offline camera service that is registered on this device, one line for each check.

  --list             all checks with rule and cure
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

struct Options {
    std::vector<std::string> patterns;
    std::string json;
    bool list = false, stop = false, physics = false, help = false;
    long repeat = 1;
};

// False after a message.
bool ReadOptions(int argc, char** argv, Options* options) {
    const option known[] = {{"list", no_argument, nullptr, 'l'},
                            {"only", required_argument, nullptr, 'o'},
                            {"json", required_argument, nullptr, 'j'},
                            {"stop-on-failure", no_argument, nullptr, 's'},
                            {"repeat", required_argument, nullptr, 'r'},
                            {"physics", no_argument, nullptr, 'p'},
                            {"help", no_argument, nullptr, 'h'},
                            {}};
    for (int found; (found = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        char* end = nullptr;
        if (found == 'l') options->list = true;
        if (found == 'o') options->patterns.push_back(optarg);
        if (found == 'j') options->json = optarg;
        if (found == 's') options->stop = true;
        if (found == 'p') options->physics = true;
        if (found == 'h') options->help = true;
        if (found == 'r') options->repeat = strtol(optarg, &end, 10);
        if (found == 'r' && (*end != '\0' || options->repeat < 1 || options->repeat > 1000)) {
            fprintf(stderr, "offlineservicecheck: --repeat %s: no number from 1 to 1000\n", optarg);
            return false;
        }
        if (found == '?') return false;
    }
    if (optind == argc) return true;
    fprintf(stderr, "offlineservicecheck: unexpected word %s; try --help\n", argv[optind]);
    return false;
}

bool Matches(const Options& options, const Check& check) {
    for (const std::string& pattern : options.patterns) {
        if (pattern == GroupOf(check) || fnmatch(pattern.c_str(), check.name, 0) == 0) return true;
    }
    return options.patterns.empty();
}

Checks SelectChecks(const Options& options) {
    Checks selected;
    for (const auto& group :
         {RegistrationChecks, SessionChecks, ConfigurationChecks, ProcessChecks, RequestChecks,
          ContentChecks, LendingChecks, FenceChecks, EnduranceChecks, PhysicsChecks}) {
        if (group == PhysicsChecks && !options.physics) continue;
        for (const Check& check : group()) {
            if (Matches(options, check)) selected.push_back(check);
        }
    }
    return selected;
}

// Runs one check, and adds to it what became of the service. `gone` is set where the rest is to be
// skipped.
Verdict RunOne(Device& device, const Check& check, std::string* gone) {
    constexpr int kMostUnanswered = 4;
    Verdict verdict = check.run(device);
    if (device.Dead()) {
        if (verdict.outcome != Outcome::kFail)
            verdict = Fail("a service that lives", "its death");
        else
            verdict.came += "; the service died";
        if (!device.Connect()) {
            *gone = Say("the service died in ", check.name, " and did not come back within 5 s");
        }
    } else if (UnansweredCalls() >= kMostUnanswered) {
        *gone = Say(UnansweredCalls(), " calls were not answered, the last one in ", check.name);
    }
    return verdict;
}

std::vector<Finding> RunAll(const Options& options, const Checks& checks) {
    std::vector<Finding> findings;
    Device device;
    for (long round = 0; round < options.repeat; ++round) {
        std::string gone, group;
        if (!device.Connect()) gone = Say(Device::kInstance, " was not registered within 5 s");
        const bool absent = !gone.empty();
        for (const Check& check : checks) {
            if (GroupOf(check) != group) puts((group = GroupOf(check)).c_str());
            Finding finding = {&check, Skip(gone)};
            const auto begin = Clock::now();
            if (absent && &check == &checks[0]) {
                finding.verdict = Fail("a service", gone);
            } else if (gone.empty()) {
                finding.verdict = RunOne(device, check, &gone);
            }
            finding.seconds = std::chrono::duration<double>(Clock::now() - begin).count();
            Print(finding);
            findings.push_back(finding);
            if (options.stop && AnyFailed(findings)) return findings;
        }
    }
    return findings;
}

int Run(int argc, char** argv) {
    Options options;
    if (!ReadOptions(argc, argv, &options)) return kMisuse;
    if (options.help) return fputs(kHelp, stdout) < 0;
    const Checks checks = SelectChecks(options);
    if (checks.empty()) {
        fprintf(stderr, "offlineservicecheck: no check matches; --list shows them\n");
        return kMisuse;
    }
    if (options.list) {
        PrintList(checks);
        return EXIT_SUCCESS;
    }
    const std::vector<Finding> findings = RunAll(options, checks);
    PrintTotals(findings);
    if (!options.json.empty() && !WriteJson(options.json, findings)) {
        fprintf(stderr, "offlineservicecheck: cannot write %s\n", options.json.c_str());
        return kMisuse;
    }
    return AnyFailed(findings) ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace
}  // namespace conformance

int main(int argc, char** argv) {
    constexpr uint32_t kThreads = 6;
    const bool victim = argc == 3 && strcmp(argv[1], "--victim") == 0;
    const auto startThreads = [] {
        ABinderProcess_setThreadPoolMaxThreadCount(kThreads);
        ABinderProcess_startThreadPool();
    };
    startThreads();
    if (victim) conformance::BeVictim(argv[2]);
    const int status = conformance::Run(argc, argv);
    fflush(nullptr);
    _exit(status);  // calls that were never answered still hold threads
}
