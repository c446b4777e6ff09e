// Collects platform-log lines through liblog's own hook.

#include "tests/support/log_capture.h"

#include <android/log.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <utility>

namespace test {

namespace {

struct Line {
    std::string tag;
    std::string text;
    char priority;
};

struct Collected {
    std::mutex lock;
    std::condition_variable changed;
    std::vector<Line> lines;
    size_t taken = 0;
    std::vector<std::pair<std::string, std::function<void()>>> looks;  // by a line's start
};

// Never destroyed: the tool's objects log from exit handlers, too.
Collected& TheLog() {
    static auto* const collected = new Collected;
    return *collected;
}

void Collect(const __android_logger_data* data, const char* message) {
    constexpr char kPriorities[] = "??VDIWEF";
    Collected& log = TheLog();
    std::unique_lock<std::mutex> lock(log.lock);
    log.lines.push_back({data->tag, message, kPriorities[data->priority]});
    log.changed.notify_all();
    const auto looks = log.looks;
    lock.unlock();
    for (const auto& [start, look] : looks) {
        if (std::string(message).rfind(start, 0) == 0) look();
    }
}

}  // namespace

std::string Format(const char* format, ...) {
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof(text), format, arguments);
    va_end(arguments);
    return text;
}

LogCapture::LogCapture() {
    // First, without our lock: liblog calls Collect with its own lock held.
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_set_logger(Collect);
    Collected& log = TheLog();
    const std::lock_guard<std::mutex> lock(log.lock);
    log.lines.clear();
    log.taken = 0;
    log.looks.clear();
}

std::vector<std::string> LogCapture::Take(const std::string& tag) {
    Collected& log = TheLog();
    const std::lock_guard<std::mutex> lock(log.lock);
    std::vector<std::string> lines;
    for (; log.taken < log.lines.size(); ++log.taken) {
        const Line& line = log.lines[log.taken];
        if (line.tag == tag || tag.empty()) {
            lines.push_back(std::string(1, line.priority) + " " + line.text);
        }
    }
    return lines;
}

void LogCapture::AtLine(const std::string& start, std::function<void()> look) {
    Collected& log = TheLog();
    const std::lock_guard<std::mutex> lock(log.lock);
    log.looks.emplace_back(start, std::move(look));
}

bool LogCapture::WaitFor(const std::string& text, int times) {
    Collected& log = TheLog();
    std::unique_lock<std::mutex> lock(log.lock);
    return log.changed.wait_for(lock, std::chrono::minutes(1), [&] {
        return std::count_if(log.lines.begin(), log.lines.end(),
                             [&](const Line& line) { return line.text == text; }) >= times;
    });
}

}  // namespace test
