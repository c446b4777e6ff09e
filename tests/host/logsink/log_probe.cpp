// Logs what its first argument asks for; it knows nothing of the sink.
#include <android/log.h>

#include <cerrno>
#include <string>
#include <thread>

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    if (what == "priorities") {
        for (int priority = ANDROID_LOG_VERBOSE; priority <= ANDROID_LOG_FATAL; ++priority) {
            __android_log_print(priority, "Probe", "priority %d", priority);
        }
    } else if (what == "shapes") {
        __android_log_write(ANDROID_LOG_INFO, "Probe", "first\n\nthird\n");
        __android_log_write(ANDROID_LOG_INFO, "Probe", "");
        __android_log_write(ANDROID_LOG_INFO, "Probe", std::string(20000, 'x').c_str());
    } else if (what == "threads") {
        const auto write = [] {
            for (int i = 0; i < 200; ++i) {
                __android_log_write(ANDROID_LOG_DEBUG, "Probe", "from a thread\nsecond line");
            }
        };
        std::thread other(write);
        write();
        other.join();
    } else if (what == "errno") {
        errno = ENOTTY;
        __android_log_write(ANDROID_LOG_ERROR, "Probe", "failed");
        return errno == ENOTTY ? 0 : 1;  // logging leaves errno alone
    }
    return 0;
}
