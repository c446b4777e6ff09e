// The graphics allocator as a process of its own.
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <getopt.h>

#include <cstdio>
#include <cstdlib>

#include "allocator.h"

namespace {

constexpr char kProgram[] = "graphicsallocator";
constexpr uint32_t kPoolThreads = 3;
constexpr int kUsageStatus = 2;

void printUsage(FILE* to) {
    fprintf(to,
            "usage: %s [--fault NAME]\n"
            "Allocates graphics buffers for other processes until it is ended.\n"
            "  --fault NAME  misbehave in this way; 'help' lists the names\n"
            "  --help        show this text\n",
            kProgram);
}

// Ends the process where there is nothing to serve.
graphics::AllocatorFault parseOptions(int argc, char** argv) {
    const option options[] = {{"fault", required_argument, nullptr, 'f'},
                              {"help", no_argument, nullptr, 'h'},
                              {nullptr, 0, nullptr, 0}};
    auto fault = graphics::AllocatorFault::kNone;
    int option;
    while ((option = getopt_long(argc, argv, "", options, nullptr)) != -1) {
        if (option == 'h') {
            printUsage(stdout);
            exit(EXIT_SUCCESS);
        }
        if (option != 'f') {  // getopt_long has said why
            printUsage(stderr);
            exit(kUsageStatus);
        }
        if (std::string(optarg) == "help") {
            fputs(graphics::allocatorFaultHelp().c_str(), stdout);
            exit(EXIT_SUCCESS);
        }
        const auto named = graphics::allocatorFaultNamed(optarg);
        if (!named) {
            fprintf(stderr, "%s: no fault '%s': '--fault help' lists the names\n", kProgram,
                    optarg);
            exit(kUsageStatus);
        }
        if (fault != graphics::AllocatorFault::kNone) {
            fprintf(stderr, "%s: only one --fault at a time\n", kProgram);
            exit(kUsageStatus);
        }
        fault = *named;
    }
    if (optind < argc) {
        fprintf(stderr, "%s: unexpected argument '%s'\n", kProgram, argv[optind]);
        printUsage(stderr);
        exit(kUsageStatus);
    }
    return fault;
}

}  // namespace

int main(int argc, char** argv) {
    const graphics::AllocatorFault fault = parseOptions(argc, argv);
    const char* folder = getenv("STANDIN_BINDER_DIR");
    if (folder == nullptr || *folder == '\0') {
        fprintf(stderr, "%s: STANDIN_BINDER_DIR is not set: no other process could call\n",
                kProgram);
        return EXIT_FAILURE;
    }
    ABinderProcess_setThreadPoolMaxThreadCount(kPoolThreads);
    ABinderProcess_startThreadPool();
    const auto allocator = ::ndk::SharedRefBase::make<graphics::Allocator>(fault);
    const binder_exception_t registered =
            AServiceManager_addService(allocator->asBinder().get(), graphics::Allocator::kInstance);
    if (registered != EX_NONE) {
        fprintf(stderr, "%s: cannot register %s (exception %d): is the service manager running?\n",
                kProgram, graphics::Allocator::kInstance, registered);
        return EXIT_FAILURE;
    }
    ABinderProcess_joinThreadPool();
    return EXIT_FAILURE;  // the pool never lets go
}
