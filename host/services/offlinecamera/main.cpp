// The offline camera service as a process of its own.
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <getopt.h>

#include <cstdio>
#include <cstdlib>

#include "service.h"

namespace {

constexpr char kProgram[] = "offlinecameraservice";
constexpr uint32_t kMaxPoolThreads = 8;
constexpr int kUsageStatus = 2;

void PrintUsage(FILE* to) {
    fprintf(to,
            "usage: %s [--fault NAME[=ARG]]...\n"
            "Serves offline camera sessions until it is ended.\n"
            "  --fault NAME[=ARG]  misbehave in this way; may be repeated; 'help' lists the names\n"
            "  --help              show this text\n",
            kProgram);
}

/** Fills `faults`, or ends the process where there is nothing to serve. */
void ParseOptions(int argc, char** argv, offlinecamera::FaultInjector* faults) {
    const option options[] = {{"fault", required_argument, nullptr, 'f'},
                              {"help", no_argument, nullptr, 'h'},
                              {nullptr, 0, nullptr, 0}};
    int option;
    while ((option = getopt_long(argc, argv, "", options, nullptr)) != -1) {
        if (option == 'h') {
            PrintUsage(stdout);
            exit(0);
        }
        if (option != 'f') {  // getopt_long has said why
            PrintUsage(stderr);
            exit(kUsageStatus);
        }
        if (std::string(optarg) == "help") {
            fputs(offlinecamera::FaultInjector::Help().c_str(), stdout);
            exit(0);
        }
        if (const std::string problem = faults->Add(optarg); !problem.empty()) {
            fprintf(stderr, "%s: %s\n", kProgram, problem.c_str());
            exit(kUsageStatus);
        }
    }
    if (optind < argc) {
        fprintf(stderr, "%s: unexpected argument '%s'\n", kProgram, argv[optind]);
        PrintUsage(stderr);
        exit(kUsageStatus);
    }
}

}  // namespace

int main(int argc, char** argv) {
    offlinecamera::FaultInjector faults;
    ParseOptions(argc, argv, &faults);

    auto mapper = offlinecamera::ImportedBuffer::IMapper::getService();
    if (mapper == nullptr) {
        fprintf(stderr,
                "%s: no graphics mapper: is android.hardware.graphics.mapper@4.0-impl-zel.so in "
                "STANDIN_HAL_PATH?\n",
                kProgram);
        return EXIT_FAILURE;
    }
    ABinderProcess_setThreadPoolMaxThreadCount(kMaxPoolThreads);
    ABinderProcess_startThreadPool();
    const auto service = ndk::SharedRefBase::make<offlinecamera::OfflineCameraService>(
            mapper, std::move(faults));
    const binder_exception_t registered = AServiceManager_addService(
            service->asBinder().get(), offlinecamera::OfflineCameraService::kInstance);
    if (registered != EX_NONE) {
        fprintf(stderr, "%s: cannot register %s (exception %d): is the service manager running?\n",
                kProgram, offlinecamera::OfflineCameraService::kInstance, registered);
        return EXIT_FAILURE;
    }
    ABinderProcess_joinThreadPool();
    return EXIT_FAILURE;  // the pool never lets go
}
