// Reads logcat's formats threadtime, "MM-DD HH:MM:SS.uuuuuu  PID   TID P Tag: message", time,
// "MM-DD HH:MM:SS.uuuuuu P/Tag(PID): message", and brief, "P/Tag(PID): message"; and of the trace,
// for each call, "HH:MM:SS.uuuuuu PID TID -> PEER INTERFACE.METHOD [oneway] N bytes N fds begins"
// and the same with "N us STATUS[, answered ANSWER]" in place of "begins".

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <utility>

#include "runlog.h"

namespace runlog {

namespace {

using base::Done;
using base::Failure;
using base::Result;

constexpr int64_t kSecond = 1'000'000;
constexpr int64_t kHour = 3600 * kSecond;
constexpr int64_t kDay = 24 * kHour;

// Of "HH:MM:SS" and up to six digits of a fraction, into the day.
int64_t MicrosOf(const char* timeOfDay) {
    int hours = 0, minutes = 0, seconds = 0;
    char fraction[7] = {};
    sscanf(timeOfDay, "%2d:%2d:%2d.%6[0-9]", &hours, &minutes, &seconds, fraction);
    const int micros = std::stoi((fraction + std::string(6, '0')).substr(0, 6));
    return ((hours * 60 + minutes) * 60 + seconds) * kSecond + micros;
}

// Times of day as times of the run, also across midnight.
class Clock {
  public:
    explicit Clock(int64_t startedUs) {
        if (startedUs == 0) return;
        const time_t seconds = startedUs / kSecond;
        tm local = {};
        localtime_r(&seconds, &local);
        char text[16];
        strftime(text, sizeof text, "%T", &local);
        m_startUs = MicrosOf(text) + startedUs % kSecond;
    }

    // Up to an hour before the start counts as before it.
    int64_t SinceStart(const char* timeOfDay) {
        const int64_t time = MicrosOf(timeOfDay);
        if (!m_startUs) m_startUs = time;
        return (time - *m_startUs + kDay + kHour) % kDay - kHour;
    }

  private:
    std::optional<int64_t> m_startUs;  // of the day
};

using TakeText = std::function<void(std::string&&)>;

// Hands on a line without the return of a Windows machine, and with a remark where it was cut.
void Finish(std::string* line, uint64_t surplus, const TakeText& take) {
    if (surplus == 0 && !line->empty() && line->back() == '\r') line->pop_back();
    if (surplus > 0) *line += " [" + std::to_string(surplus) + " bytes more]";
    take(std::move(*line));
    line->clear();
}

// Holds one line of kMaxLineBytes at most, whatever the file has.
Result<Done> ForEachLine(const std::string& path, const TakeText& take) {
    std::error_code error;
    const bool exists = std::filesystem::exists(path, error);
    if (exists && !std::filesystem::is_regular_file(path, error)) {
        return Failure{path + ": is not a regular file"};  // to open a pipe could take forever
    }
    std::ifstream file(path, std::ios::binary);
    if (!file) return Failure{path + ": cannot open: " + strerror(errno)};
    std::string line;
    uint64_t surplus = 0;
    std::vector<char> block(64 * 1024);
    while (file.read(block.data(), static_cast<std::streamsize>(block.size())) || file.gcount()) {
        const char* at = block.data();
        for (const char* const end = at + file.gcount(); at < end;) {
            const char* const stop = std::find(at, end, '\n');
            const auto size = static_cast<size_t>(stop - at);
            const size_t kept = std::min(size, kMaxLineBytes - line.size());
            line.append(at, kept);
            surplus += size - kept;
            at = stop;
            if (at == end) break;
            Finish(&line, std::exchange(surplus, 0), take);
            ++at;
        }
    }
    if (!line.empty()) Finish(&line, surplus, take);
    if (file.bad()) return Failure{path + ": cannot read to its end"};
    return Done{};
}

bool IsPriority(char letter) {
    return letter != '\0' && strchr("VDIWEF", letter);
}

struct Parsed {
    Line line;
    std::string timeOfDay;  // empty: the format has none
};

// Nothing when the text is not of the log's form.
std::optional<Parsed> ParseLine(const std::string& text) {
    Parsed parsed;
    Line& line = parsed.line;
    char time[16] = {};
    int start = 0, used = 0;
    if (sscanf(text.c_str(), "%*2d-%*2d %15[0-9:.] %n", time, &start) == 1) parsed.timeOfDay = time;
    const char* const rest = &text[static_cast<size_t>(start)];
    size_t tag = static_cast<size_t>(start), end = text.npos, message = text.npos;
    if (sscanf(rest, "%9d %9d %c %n", &line.pid, &line.tid, &line.priority, &used) == 3) {
        tag += static_cast<size_t>(used);
        end = text.find(": ", tag);
        message = end + 2;
        if (time[0] == '\0' || used == 0) return std::nullopt;
    } else if (IsPriority(rest[0]) && rest[1] == '/') {
        const size_t close = text.find("): ", tag);
        end = close == text.npos ? close : text.rfind('(', close);
        message = close + 3;
        line.priority = rest[0];
        tag += 2;
        if (end == text.npos || end < tag || sscanf(&text[end], "(%9d", &line.pid) != 1)
            return std::nullopt;
    }
    if (end == text.npos || !IsPriority(line.priority)) return std::nullopt;
    line.tag = text.substr(tag, end - tag);
    line.tag.erase(line.tag.find_last_not_of(' ') + 1);
    line.message = text.substr(message);
    return parsed;
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

// The beginning of a call's two lines, as a call that has not ended, and its size in bytes; 0 for
// anything else.
size_t ParseBeginning(const std::string& text, Clock* clock, Call* call) {
    char time[16] = {}, arrow[3] = {}, peer[257] = {}, name[1025] = {};
    int used = 0, end = 0;
    if (sscanf(text.c_str(), "%15[0-9:.] %9d %9d %2s %256s %1024s %n", time, &call->pid, &call->tid,
               arrow, peer, name, &used) != 6 ||
        used == 0) {
        return 0;
    }
    const std::string oneway = "oneway ";
    const size_t at = static_cast<size_t>(used);
    call->oneway = text.compare(at, oneway.size(), oneway) == 0;
    const size_t sizes = at + (call->oneway ? oneway.size() : 0);
    unsigned long bytes = 0, descriptors = 0;
    if (sscanf(&text[sizes], "%15lu bytes %15lu fds %n", &bytes, &descriptors, &end) != 2) return 0;
    call->startUs = clock->SinceStart(time);
    call->incoming = arrow[0] == '<';
    call->peer = peer;
    const std::string full = name;  // only the last dot is between interface and method
    const size_t dot = full.rfind('.');
    call->interface = dot == std::string::npos ? "" : full.substr(0, dot);
    call->method = full.substr(dot + 1);
    call->bytes = bytes;
    call->descriptors = descriptors;
    return end == 0 ? 0 : sizes + static_cast<size_t>(end);
}

// Takes "N us STATUS[, answered ANSWER]"; false for anything else.
bool ParseEnd(const char* text, Call* call) {
    unsigned long took = 0;
    int end = 0;
    if (sscanf(text, "%15lu us %n", &took, &end) != 1 || end == 0 || text[end] == '\0')
        return false;
    const std::string status = text + end, mark = ", answered ";
    const size_t answer = status.find(mark);
    call->durationUs = static_cast<int64_t>(took);
    call->status = status.substr(0, answer);
    if (answer != std::string::npos) call->answer = status.substr(answer + mark.size());
    return true;
}

}  // namespace

Result<Log> ReadLog(const std::string& path, int64_t startedUs, const LogFilter& filter) {
    Clock clock(startedUs);
    Log log;
    int64_t timeUs = 0;
    uint64_t number = 0;
    const Result<Done> read = ForEachLine(path, [&](std::string&& text) {
        std::optional<Parsed> parsed = ParseLine(text);
        if (filter && (!parsed || !filter(parsed->line, number++))) return;
        Line line;
        if (parsed) {
            line = std::move(parsed->line);
            if (!parsed->timeOfDay.empty()) timeUs = clock.SinceStart(parsed->timeOfDay.c_str());
        } else {
            line.message = std::move(text);
        }
        line.timeUs = timeUs;
        log.lines.push_back(std::move(line));
        if (log.lines.size() == 3 * kKeptAtEachEnd) Thin(&log);
    });
    if (!read.Ok()) return read.GetFailure();
    Thin(&log);
    return log;
}

Result<Trace> ReadTrace(const std::string& path, int64_t startedUs) {
    Clock clock(startedUs);
    Trace trace;
    std::map<std::string, size_t> begun;  // calls by their lines' beginning
    const Result<Done> read = ForEachLine(path, [&](std::string&& text) {
        Call call;
        const size_t size = ParseBeginning(text, &clock, &call);
        const std::string beginning = text.substr(0, size);
        const auto known = begun.find(beginning);
        const bool begins = size != 0 && text.compare(size, text.npos, "begins") == 0;
        if (size == 0 || (!begins && !ParseEnd(&text[size], &call))) {
            ++trace.unreadable;
        } else if (known != begun.end()) {
            trace.calls[known->second] = std::move(call);
            begun.erase(known);
        } else if (trace.calls.size() < kMaxCalls) {
            if (begins) begun.emplace(beginning, trace.calls.size());
            trace.calls.push_back(std::move(call));
        } else {
            trace.surplus += begins;
        }
    });
    if (!read.Ok()) return read.GetFailure();
    std::stable_sort(trace.calls.begin(), trace.calls.end(),
                     [](const Call& a, const Call& b) { return a.startUs < b.startUs; });
    return trace;
}

}  // namespace runlog
