// The main program of a service process.
#include "serve.h"

#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <base/options.h>

#include <cstdio>
#include <cstdlib>

namespace services {

namespace {

constexpr int kMisuse = 2;

int Fail(const Program& program, int status, const std::string& text) {
    fprintf(stderr, "%s: %s\n", program.name, text.c_str());
    return status;
}

// Registers the object and serves it. Returns only if that fails.
int Run(const Program& program) {
    const char* const folder = getenv("STANDIN_BINDER_DIR");
    if (folder == nullptr || *folder == '\0') {
        return Fail(program, EXIT_FAILURE,
                    "STANDIN_BINDER_DIR is not set: no other process could call");
    }
    const auto service = program.make();
    if (!service.Ok()) return Fail(program, EXIT_FAILURE, service.Error());
    const std::string instance = std::string(program.interface) + "/default";
    ABinderProcess_setThreadPoolMaxThreadCount(program.threads);
    ABinderProcess_startThreadPool();
    const binder_exception_t registered =
            AServiceManager_addService(service.Value().get(), instance.c_str());
    if (registered != EX_NONE) {
        return Fail(program, EXIT_FAILURE,
                    "cannot register " + instance + " (exception " + std::to_string(registered) +
                            "): is the service manager running?");
    }
    ABinderProcess_joinThreadPool();
    return EXIT_FAILURE;  // the pool never lets go
}

}  // namespace

int Serve(const Program& program, int argc, char** argv) {
    std::vector<std::string> faults;
    bool help = false;
    const std::vector<base::Option> options = {
            base::Texts("--fault", program.faultValue,
                        "misbehave in this way; may be repeated; 'help' lists the names", &faults),
            base::Switch("--help", "show this text", &help)};
    const std::string usage = std::string("usage: ") + program.name + " [--fault " +
                              program.faultValue + "]...\n" + program.purpose + "\n" +
                              base::OptionHelp(options);
    const auto words =
            base::ReadOptions(options, base::WordsOf(argc, argv), base::Order::kAnywhere);
    if (!words.Ok()) return Fail(program, kMisuse, words.Error() + "\n" + usage);
    if (help) return fputs(usage.c_str(), stdout) < 0;
    for (const std::string& fault : faults) {
        if (fault == "help") return fputs(program.faults->Help().c_str(), stdout) < 0;
        const auto added = program.faults->Add(fault);
        if (!added.Ok()) return Fail(program, kMisuse, added.Error());
    }
    if (!words.Value().empty()) {
        return Fail(program, kMisuse, "unexpected argument '" + words.Value()[0] + "'\n" + usage);
    }
    return Run(program);
}

}  // namespace services
