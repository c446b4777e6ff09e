// A process that serves one object of the tests: binder_test_peer NAME. Environment:
//   PEER_THREADS=N    at most N pool threads beyond the first
//   PEER_LATE_POOL=1  starts the pool only after a byte on standard input
// Exit status 3: the service could not be added.
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "tests/host/libbinder_ndk/peer_service.h"

int main(int, char** argv) {
    if (const char* threads = getenv("PEER_THREADS")) {
        ABinderProcess_setThreadPoolMaxThreadCount(static_cast<uint32_t>(atoi(threads)));
    }
    const bool latePool = getenv("PEER_LATE_POOL") != nullptr;
    if (!latePool) ABinderProcess_startThreadPool();
    const ndk::SpAIBinder object = NewPeerObject();
    if (AServiceManager_addService(object.get(), argv[1]) != EX_NONE) return 3;
    puts("ready");
    fflush(stdout);
    char byte = 0;
    if (latePool && read(STDIN_FILENO, &byte, 1) == 1) ABinderProcess_startThreadPool();
    ABinderProcess_joinThreadPool();
}
