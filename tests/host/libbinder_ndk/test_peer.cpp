// A process that serves one object of the tests: binder_test_peer NAME [option...]
//   --max N         at most N pool threads beyond the first
//   --late-pool     starts the pool only after a byte on standard input
//   --call-at-exit OTHER  serves nothing: an exit handler calls kRecord(42) of service OTHER
// Exit status 3: the service could not be added.
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/host/libbinder_ndk/peer_service.h"

namespace {

const char* gCallAtExit = nullptr;

void callAtExit() {
    ndk::SpAIBinder other(AServiceManager_checkService(gCallAtExit));
    if (callPeer(other, kRecord, writes(int32_t{42})) != STATUS_OK) _exit(4);
}

}  // namespace

int main(int argc, char** argv) {
    bool latePool = false;
    for (int i = 2; i < argc; ++i) {
        if (strcmp(argv[i], "--late-pool") == 0) latePool = true;
        if (strcmp(argv[i], "--max") == 0) {
            ABinderProcess_setThreadPoolMaxThreadCount(static_cast<uint32_t>(atoi(argv[++i])));
        }
        if (strcmp(argv[i], "--call-at-exit") == 0) {
            gCallAtExit = argv[++i];
            atexit(callAtExit);
            // Makes the library's own exit handlers and connections exist before the end.
            AServiceManager_isDeclared(gCallAtExit);
            return 0;
        }
    }
    if (!latePool) ABinderProcess_startThreadPool();
    ndk::SpAIBinder object = newPeerObject();
    if (AServiceManager_addService(object.get(), argv[1]) != EX_NONE) return 3;
    puts("ready");
    fflush(stdout);
    char byte = 0;
    if (latePool && read(STDIN_FILENO, &byte, 1) == 1) ABinderProcess_startThreadPool();
    ABinderProcess_joinThreadPool();
}
