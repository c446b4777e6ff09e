// What a report tells about one run. Plain records, filled step by step; times are microseconds
// since the run's start.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace runreport {

// How a run came to its end, by its status.
enum class Ending {
    kFinished,    // 0
    kUsageError,  // 255: the tool refused its arguments
    kSignal,      // 128 + n: the tool was ended by signal n
    kNoDevice,    // 125 to 127: the device or the command did not start
    kOther,
};

struct Run {
    std::vector<std::string> options;  // of the device, as the user gave them
    std::vector<std::string> command;  // the tool and its arguments
    int64_t startedUs = 0;             // since the epoch
    int64_t durationUs = 0;
    int status = 0;

    Ending ending() const;
    std::string signalName() const;  // "SIGSEGV"; empty without a signal
};

struct LogLine {
    int64_t timeUs = 0;
    int pid = 0;
    int tid = 0;
    char priority = ' ';  // one of V D I W E F; a blank for a line that no log call wrote
    std::string tag;
    std::string message;
    bool ofDevice = false;  // written by a service, not by the tool

    bool isError() const { return priority == 'E' || priority == 'F'; }
};

// One binder transaction as the tool's process saw it.
struct Call {
    int64_t startUs = 0;
    int64_t durationUs = 0;
    int pid = 0;
    bool incoming = false;  // a service called the tool
    bool oneway = false;
    std::string peer;  // "7/offlinecamerase": process and its name as far as the system keeps it
    std::string interface;
    std::string method;
    uint64_t bytes = 0;
    uint64_t descriptors = 0;
    std::string status;  // "OK", or the name of the transaction's failure
};

enum class PhaseEnd { kDone, kFailed, kTimedOut, kCutShort };

// A stretch of the tool's main thread; phases follow each other without gap or overlap.
struct Phase {
    std::string name;
    int64_t startUs = 0;
    int64_t endUs = 0;
    bool waits = false;
    PhaseEnd end = PhaseEnd::kDone;
    std::string detail;  // what it worked on; may be empty
};

enum class Severity { kError, kWarning };

// Something that a person has to know, with cause and cure where they are known.
struct Problem {
    Severity severity = Severity::kError;
    std::string text;
    std::string cause;  // `words` in backticks are code
    std::string cure;   // as cause
    std::string phase;  // in which it came first
    int64_t timeUs = 0;
    uint64_t count = 1;
    bool logged = false;  // `text` is the message of a line of the log
};

// A source file that the tool opened, or a file that it wrote.
struct Frame {
    std::string path;  // on the host
    uint64_t bytes = 0;
    std::string format;        // "RAW10", "NV12", "JPEG"; empty: unknown
    uint32_t width = 0;        // pixels; 0: unknown
    uint32_t height = 0;       // pixels
    uint32_t stride = 0;       // bytes per row; 0: has none
    uint32_t scanlines = 0;    // rows, padding included; 0: has none
    uint64_t timesOpened = 0;  // of a source
    bool leftUnread = false;   // a source of which the tool read no row
    std::string note;          // why there is no picture, or how to read it
    std::string picture;       // a reduced JPEG as a data: URL; empty without one
    uint32_t pictureWidth = 0;
    uint32_t pictureHeight = 0;
};

struct Report {
    Run run;
    std::vector<LogLine> log;      // of tool and services, in order of time
    uint64_t omittedLogLines = 0;  // from the middle of a very long log
    std::vector<Call> calls;       // in order of time
    std::vector<Phase> phases;
    std::vector<Problem> problems;
    std::vector<Frame> sources;
    std::vector<Frame> dumps;
    std::vector<std::string> missing;  // inputs of the report that could not be read, and why
};

// "OK" and the like of each ending and record, as the JSON and the page name them.
const char* name(Ending ending);
const char* name(PhaseEnd end);
const char* name(Severity severity);

}  // namespace runreport
