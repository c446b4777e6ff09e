// Logs messages of every priority, shape and from two threads; it knows nothing of the sink.
#include <android/log.h>

#include <cerrno>
#include <string>
#include <thread>

int main() {
    errno = ENOTTY;
    for (int priority = ANDROID_LOG_VERBOSE; priority <= ANDROID_LOG_FATAL; ++priority) {
        __android_log_print(priority, "Probe", "priority %d", priority);
    }
    if (errno != ENOTTY) return 1;  // logging leaves errno alone
    __android_log_write(ANDROID_LOG_DEBUG, "Probe", "first\n\nthird\n");
    __android_log_write(ANDROID_LOG_DEBUG, "Probe", std::string(20000, 'x').c_str());
    const auto write = [] {
        for (int i = 0; i < 200; ++i) {
            __android_log_write(ANDROID_LOG_DEBUG, "Probe", "from a thread\nsecond line");
        }
    };
    std::thread other(write);
    write();
    other.join();
    return 0;
}
