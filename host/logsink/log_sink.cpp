// The platform log of the stand-in device: installs itself when the library is loaded.
//
// STANDIN_LOG_FD    number of an inherited descriptor, opened for appending, that lines go to
// STANDIN_LOG_ECHO  1: lines go to standard error as well
//
// With neither variable this does nothing, and liblog writes as it always does. Lines look like
//     MM-DD HH:MM:SS.uuuuuu  PID   TID P Tag: message
// in local time, P one of V D I W E F. Every priority is kept.
#include <android/log.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

namespace {

// Set once, before main(); -1: none.
int gLogFd = -1;
int gEchoFd = -1;

char PriorityLetter(int priority) {
    const bool known = priority >= ANDROID_LOG_VERBOSE && priority <= ANDROID_LOG_FATAL;
    return known ? "VDIWEF"[priority - ANDROID_LOG_VERBOSE] : 'I';
}

std::string LinePrefix(int priority, const char* tag) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    char date[32];
    std::strftime(date, sizeof(date), "%m-%d %H:%M:%S", &local);
    char head[96];
    std::snprintf(head, sizeof(head), "%s.%06ld %5d %5ld %c ", date, now.tv_nsec / 1000, getpid(),
                  syscall(SYS_gettid), PriorityLetter(priority));
    return std::string(head) + (tag != nullptr ? tag : "") + ": ";
}

// Each line of `message` with the prefix; a newline at its end adds no empty line.
std::string FormatMessage(const std::string& prefix, const char* message) {
    std::string text;
    do {
        const char* const end = std::strchr(message, '\n');
        const size_t length =
                end != nullptr ? static_cast<size_t>(end - message) : std::strlen(message);
        text.append(prefix).append(message, length).push_back('\n');
        message += end != nullptr ? length + 1 : length;
    } while (*message != '\0');
    return text;
}

// One write() unless the descriptor takes only a part: an append of one message is never mixed
// with that of another process.
void WriteAll(int fd, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(fd, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;  // the log is full or gone
        done += static_cast<size_t>(written);
    }
}

// liblog leaves errno as it was: callers log first and look at errno afterwards.
void LogMessage(const __android_logger_data* data, const char* message) {
    const std::string text = FormatMessage(LinePrefix(data->priority, data->tag),
                                           message != nullptr ? message : "(null)");
    if (gLogFd >= 0) WriteAll(gLogFd, text);
    if (gEchoFd >= 0) WriteAll(gEchoFd, text);
}

// The descriptor that the text names; -1, after telling why, if it cannot be written to.
int WritableDescriptor(const char* text) {
    char* end = nullptr;
    errno = 0;
    const long number = std::strtol(text, &end, 10);
    const bool isNumber =
            errno == 0 && end != text && *end == '\0' && number >= 0 && number <= INT_MAX;
    const int flags = isNumber ? fcntl(static_cast<int>(number), F_GETFL) : -1;
    if (flags >= 0 && (flags & O_ACCMODE) != O_RDONLY) return static_cast<int>(number);
    std::fprintf(stderr,
                 "STANDIN_LOG_FD=%s: not the number of a descriptor open for writing, "
                 "so the log is not kept there\n",
                 text);
    return -1;
}

// Before main(), and before the constructors of the program's own objects, which may log.
[[gnu::constructor]] void InstallLogSink() {
    const char* fd = std::getenv("STANDIN_LOG_FD");
    const char* echo = std::getenv("STANDIN_LOG_ECHO");
    if (fd != nullptr && *fd != '\0') gLogFd = WritableDescriptor(fd);
    if (echo != nullptr && std::strcmp(echo, "1") == 0 && gLogFd != STDERR_FILENO) {
        gEchoFd = STDERR_FILENO;
    }
    if (gLogFd < 0 && gEchoFd < 0) return;
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(LogMessage);
}

}  // namespace
