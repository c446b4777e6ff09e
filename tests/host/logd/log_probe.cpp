// Logs what its first argument asks for; it knows nothing of the sink.
#include <android/log.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

void logPriorities() {
    for (int priority = ANDROID_LOG_VERBOSE; priority <= ANDROID_LOG_FATAL; ++priority) {
        __android_log_print(priority, "Probe", "priority %d", priority);
    }
}

void logShapes() {
    __android_log_write(ANDROID_LOG_INFO, "Probe", "first\n\nthird\n");
    __android_log_write(ANDROID_LOG_INFO, "Probe", "");
    __android_log_write(ANDROID_LOG_INFO, "Probe", std::string(20000, 'x').c_str());
}

void logFromThreads() {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 100; ++i) {
                __android_log_write(ANDROID_LOG_DEBUG, "Probe", "from a thread\nsecond line");
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

// 0 if logging leaves errno alone.
int logAfterAnError() {
    errno = ENOTTY;
    __android_log_write(ANDROID_LOG_ERROR, "Probe", "failed");
    return errno == ENOTTY ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    if (what == "priorities") logPriorities();
    if (what == "shapes") logShapes();
    if (what == "threads") logFromThreads();
    return what == "errno" ? logAfterAnError() : 0;
}
