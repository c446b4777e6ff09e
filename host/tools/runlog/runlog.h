// What a run left as text, platform logs and the binder trace, and what they say about the run.
// Times are microseconds since the run's start. Nothing here keeps state; any thread.
#pragma once

#include <base/result.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace runlog {

struct Line {
    int64_t timeUs = 0;
    int pid = 0;
    int tid = 0;
    char priority = ' ';  // one of V D I W E F; a blank for text that no log call wrote
    std::string tag;
    std::string message;
    bool fromServices = false;  // else from the tool; set by the caller, who knows whose log it is

    bool IsError() const { return priority == 'E' || priority == 'F'; }
};

// Of a longer log the first and the last of these many lines are kept, and errors between them.
inline constexpr size_t kKeptAtEachEnd = 5'000;
inline constexpr size_t kKeptErrors = 2'000;
// A longer line is cut, with a remark.
inline constexpr size_t kMaxLineBytes = 4096;

struct Log {
    std::vector<Line> lines;  // in the file's order
    uint64_t omitted = 0;     // lines that were not kept
};

// Whether a line is kept, which has no time yet; `number` counts lines of the log's form from 0.
using LogFilter = std::function<bool(const Line&, uint64_t number)>;

// Text that is not of the log's form (a program's output) has the time of the line before, and is
// left out with a filter. `startedUs` is the run's start since the epoch, 0 for the time of the
// first line. Fails when the file cannot be read.
base::Result<Log> ReadLog(const std::string& path, int64_t startedUs = 0,
                          const LogFilter& filter = {});

// A run of the tool in the log of a device.
struct LoggedRun {
    int pid = 0;
    uint64_t firstLine = 0;  // its number
    uint64_t lines = 0;      // of the tool
};

// The last run in the log, or the last one of a process; nothing where the log has none. Fails when
// the file cannot be read.
base::Result<std::optional<LoggedRun>> FindRun(const std::string& path, std::optional<int> pid);

// Whether the platform wrote the line about a process that crashed.
bool IsOfCrash(const Line& line);

// A process that crashed, as the platform logs it.
struct Crash {
    int64_t timeUs = 0;
    int pid = 0;
    std::string program;  // as it was started, or its name cut to 15 bytes
    int signal = 0;
    std::string reason;               // "null pointer dereference", an abort's message, or empty
    std::vector<std::string> frames;  // the first of the backtrace: "#00 pc 1a2b4 libx.so (F+12)"
};

// In order; what several lines say of a process is put together.
std::vector<Crash> FindCrashes(const std::vector<Line>& log);

// One binder transaction as the tool's process saw it.
struct Call {
    int64_t startUs = 0;
    int64_t durationUs = 0;  // 0 until it has ended
    int pid = 0;             // of the tool
    int tid = 0;
    bool incoming = false;  // a service called the tool
    bool oneway = false;
    std::string peer;  // "7/offlinecamerase": process and its name as far as the system keeps it
    std::string interface;
    std::string method;
    uint64_t bytes = 0;
    uint64_t descriptors = 0;
    std::string status;  // "OK" or the name of the transaction's failure; empty: it has not ended
    std::string answer;  // "EX_SERVICE_SPECIFIC 5: message", where the reply's status is not OK

    bool Succeeded() const { return status == "OK" && answer.empty(); }
};

inline constexpr size_t kMaxCalls = 20'000;

struct Trace {
    std::vector<Call> calls;  // the first kMaxCalls of the file, in order of their starts
    uint64_t surplus = 0;     // calls beyond them
    uint64_t unreadable = 0;  // lines that are no transactions, such as a last one cut short
};

// As ReadLog.
base::Result<Trace> ReadTrace(const std::string& path, int64_t startedUs = 0);

// A wait of the tool for the service, of 5 s at most.
struct Wait {
    bool forShutter = false;  // else for the result
    int64_t startUs = 0;
    std::optional<int64_t> endUs;  // none: the log ends in it
    bool received = false;
    int frame = 0;

    bool TimedOut() const { return endUs && !received; }
};

// A source file that the tool opened or tried to.
struct Source {
    std::string path;  // on the device
    uint64_t timesOpened = 0;
    bool leftUnread = false;  // the tool had a buffer for it and knew of no row to read
    uint32_t stride = 0;      // of its buffer: bytes per row
    uint32_t scanlines = 0;   // rows with padding; 0: unknown to the tool
};

// A result that the tool took, of one frame.
struct CaptureResult {
    int64_t timeUs = 0;
    int frame = 0;
};

// What the tool set out to write of a buffer.
struct Dump {
    int64_t timeUs = 0;
    uint64_t bytes = 0;
    std::optional<int64_t> trailerBytes;  // of a JPEG, as the buffer's last bytes say
};

struct Facts {
    std::string mode;  // "B2Y"; empty for none of those with streams
    bool sessionOpened = false;
    bool sessionClosed = false;
    std::optional<int64_t> requestUs;  // the last request's beginning; older messages are forgotten
    std::optional<int64_t> exitUs;     // the end of the main thread's work
    std::vector<Source> sources;       // each once, in order
    std::vector<Wait> waits;           // in order
    std::vector<CaptureResult> results;  // in order
    std::vector<Dump> dumps;             // in order
    // Of the last comparison of a result with the request: "1 of stream 1" and so on.
    std::vector<std::string> resultBuffers;
    std::vector<std::string> requestBuffers;
    std::optional<int> resultStatus;  // of the last request: 0, or -110 after a time-out
};

// Of the tool's own lines; those of services count for nothing.
Facts FindFacts(const std::vector<Line>& log);

struct Error {
    Line line;  // the first of its message
    uint64_t count = 0;
};

// Each different message at level E or F, of all lines, in order.
std::vector<Error> DifferentErrors(const std::vector<Line>& log);

// The steps of a run, told from what the tool's main thread logged and called.
enum class PhaseEnd { kDone, kFailed, kTimedOut, kCutShort };

// A stretch of the main thread; phases follow each other without gap or overlap.
struct Phase {
    std::string name;
    int64_t startUs = 0;
    int64_t endUs = 0;
    bool waits = false;
    PhaseEnd end = PhaseEnd::kDone;
    std::string detail;  // what it worked on; may be empty
};

// Phases in order, from the run's start to its end `durationUs` later; the first is "device", in
// which the stand-in device comes up. None when the tool logged nothing. `log` and `calls` are in
// order of time, `facts` are of `log`; `cutShort`: a signal ended the run.
std::vector<Phase> FindPhases(const std::vector<Line>& log, const std::vector<Call>& calls,
                              const Facts& facts, int64_t durationUs, bool cutShort);

}  // namespace runlog
