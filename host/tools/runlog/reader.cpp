// Reads "MM-DD HH:MM:SS.uuuuuu  PID   TID P Tag: message" and
// "HH:MM:SS.uuuuuu PID -> PEER INTERFACE.METHOD [oneway] N bytes N fds N us STATUS", where the
// status of a refusal is followed by ", answered EXCEPTION ...". A line "... N fds begins" comes
// before.

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>

#include "runlog.h"

namespace runlog {

namespace {

using base::Done;
using base::Failure;
using base::Result;

constexpr int64_t kSecond = 1'000'000;
constexpr int64_t kHour = 3600 * kSecond;
constexpr int64_t kDay = 24 * kHour;

struct TimeOfDay {
    int hours = 0;
    int minutes = 0;
    int seconds = 0;
    int micros = 0;

    int64_t Micros() const { return ((hours * 60 + minutes) * 60 + seconds) * kSecond + micros; }
};

// Times of day as times of the run, also across midnight.
class Clock {
  public:
    explicit Clock(int64_t startedUs) {
        if (startedUs == 0) return;
        const time_t seconds = startedUs / kSecond;
        tm local = {};
        localtime_r(&seconds, &local);
        m_startUs = TimeOfDay{local.tm_hour, local.tm_min, local.tm_sec,
                              static_cast<int>(startedUs % kSecond)}
                            .Micros();
    }

    // Up to an hour before the start counts as before it.
    int64_t SinceStart(const TimeOfDay& time) {
        if (!m_startUs) m_startUs = time.Micros();
        int64_t since = time.Micros() - *m_startUs;
        if (since < -kHour) since += kDay;
        if (since >= kDay - kHour) since -= kDay;
        return since;
    }

  private:
    std::optional<int64_t> m_startUs;  // of the day
};

Result<Done> ForEachLine(const std::string& path, const std::function<void(std::string&&)>& take) {
    std::error_code error;
    const bool exists = std::filesystem::exists(path, error);
    if (exists && !std::filesystem::is_regular_file(path, error)) {
        return Failure{path + ": is not a regular file"};  // to open a pipe could take forever
    }
    std::ifstream file(path);
    if (!file) return Failure{path + ": cannot open: " + strerror(errno)};
    for (std::string line; std::getline(file, line);) {
        if (line.size() > kMaxLineBytes) {
            const std::string rest = std::to_string(line.size() - kMaxLineBytes);
            line.resize(kMaxLineBytes);
            line += " [" + rest + " bytes more]";
        }
        take(std::move(line));
    }
    if (file.bad()) return Failure{path + ": cannot read to its end"};
    return Done{};
}

// Nothing when the text is not of the log's form.
std::optional<Line> ParseLine(const std::string& text, Clock* clock) {
    Line line;
    TimeOfDay time;
    int used = 0;
    const int fields = sscanf(text.c_str(), "%*2d-%*2d %2d:%2d:%2d.%6d %9d %9d %c %n", &time.hours,
                              &time.minutes, &time.seconds, &time.micros, &line.pid, &line.tid,
                              &line.priority, &used);
    if (fields != 7 || used == 0 || !strchr("VDIWEF", line.priority)) return std::nullopt;
    const size_t start = static_cast<size_t>(used);
    const size_t colon = text.find(": ", start);
    if (colon == std::string::npos) return std::nullopt;
    line.timeUs = clock->SinceStart(time);
    line.tag = text.substr(start, colon - start);
    line.message = text.substr(colon + 2);
    return line;
}

// Takes lines out of the middle of a long log, but not its first errors.
void Thin(Log* log) {
    if (log->lines.size() <= 2 * kKeptAtEachEnd) return;
    const auto begin = log->lines.begin() + kKeptAtEachEnd;
    const auto end = log->lines.end() - kKeptAtEachEnd;
    size_t errors = 0;
    const auto kept = std::remove_if(begin, end, [&](const Line& line) {
        return !line.IsError() || ++errors > kKeptErrors;
    });
    log->omitted += static_cast<uint64_t>(end - kept);
    log->lines.erase(kept, end);
}

std::optional<Call> ParseCall(const std::string& text, Clock* clock) {
    Call call;
    TimeOfDay time;
    char arrow[3] = {}, peer[257] = {}, name[1025] = {};
    int used = 0;
    if (sscanf(text.c_str(), "%2d:%2d:%2d.%6d %9d %2s %256s %1024s %n", &time.hours, &time.minutes,
               &time.seconds, &time.micros, &call.pid, arrow, peer, name, &used) != 8 ||
        used == 0) {
        return std::nullopt;
    }
    std::string rest = text.substr(static_cast<size_t>(used));
    const std::string oneway = "oneway ";
    call.oneway = rest.compare(0, oneway.size(), oneway) == 0;
    if (call.oneway) rest.erase(0, oneway.size());
    unsigned long bytes = 0, descriptors = 0, took = 0;
    int end = 0;
    if (sscanf(rest.c_str(), "%15lu bytes %15lu fds %15lu us %n", &bytes, &descriptors, &took,
               &end) != 3 ||
        end == 0 || rest[static_cast<size_t>(end)] == '\0') {
        return std::nullopt;
    }
    call.startUs = clock->SinceStart(time);
    call.durationUs = static_cast<int64_t>(took);
    call.incoming = arrow[0] == '<';
    call.peer = peer;
    const std::string full = name;  // only the last dot is between interface and method
    const size_t dot = full.rfind('.');
    call.interface = dot == std::string::npos ? "" : full.substr(0, dot);
    call.method = full.substr(dot + 1);
    call.bytes = bytes;
    call.descriptors = descriptors;
    call.status = rest.substr(static_cast<size_t>(end));
    const size_t answer = call.status.find(", answered ");
    if (answer != std::string::npos) call.status.erase(answer);
    return call;
}

}  // namespace

Result<Log> ReadLog(const std::string& path, int64_t startedUs) {
    Clock clock(startedUs);
    Log log;
    int64_t timeUs = 0;
    const Result<Done> read = ForEachLine(path, [&](std::string&& text) {
        std::optional<Line> line = ParseLine(text, &clock);
        if (!line) {
            line = Line();
            line->timeUs = timeUs;
            line->message = std::move(text);
        }
        timeUs = line->timeUs;
        log.lines.push_back(std::move(*line));
        if (log.lines.size() == 3 * kKeptAtEachEnd) Thin(&log);
    });
    if (!read.Ok()) return read.GetFailure();
    Thin(&log);
    return log;
}

Result<Trace> ReadTrace(const std::string& path, int64_t startedUs) {
    Clock clock(startedUs);
    Trace trace;
    const std::string begins = " fds begins";
    const Result<Done> read = ForEachLine(path, [&](std::string&& text) {
        if (text.size() > begins.size() &&
            text.compare(text.size() - begins.size(), begins.size(), begins) == 0) {
            return;  // its end has a line of its own
        }
        std::optional<Call> call = ParseCall(text, &clock);
        if (!call) {
            ++trace.unreadable;
        } else if (trace.calls.size() == kMaxCalls) {
            ++trace.surplus;
        } else {
            trace.calls.push_back(std::move(*call));
        }
    });
    if (!read.Ok()) return read.GetFailure();
    std::stable_sort(trace.calls.begin(), trace.calls.end(),
                     [](const Call& a, const Call& b) { return a.startUs < b.startUs; });
    return trace;
}

}  // namespace runlog
