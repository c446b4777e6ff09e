// What a report tells about one run. Plain records, filled step by step; times are microseconds
// since the run's start.
#pragma once

#include <runlog/runlog.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace runreport {

// Where it took place.
enum class Place {
    kWorkstation,  // in the stand-in device
    kDevice,
    kImported,  // on a device, and all that is known is a folder with its log
};

struct Run {
    Place place = Place::kWorkstation;
    std::string device;                // what the device says that it is
    std::vector<std::string> options;  // of the device, as the user gave them
    std::vector<std::string> command;  // the tool and its arguments
    int64_t startedUs = 0;             // since the epoch; 0: unknown
    int64_t durationUs = 0;            // on a device, up to the last line of the log
    std::optional<int> status = 0;

    // By the status: 0 "finished"; 255 "usage-error", the tool refused its arguments; 128 + n
    // "signal", n ended the tool; 125 to 127 "no-device", it or the command did not start; "other";
    // without a status, as the log came from elsewhere, "unknown".
    std::string Ending() const;
    int Signal() const;              // 0 without one
    std::string SignalName() const;  // "SIGSEGV"; empty without a signal
};

// Something that a person has to know, with cause and cure where they are known.
struct Problem {
    std::string severity = "error";  // or "warning"
    std::string text;
    int64_t timeUs = 0;
    std::string cause = "";  // `words` in backticks are code
    std::string cure = "";   // as cause
    std::string phase = "";  // in which it came first
    uint64_t count = 1;
    bool logged = false;     // `text` is the message of a line of the log
    bool concluded = false;  // `cause` is what this run's own log and trace tell
    bool isRoot = false;     // what comes before it in time is part of it
};

// A source file that the tool opened, or a file that it wrote.
struct Frame {
    std::string path;  // on the host
    uint64_t bytes = 0;
    std::string format;         // "RAW10", "NV12", "JPEG"; empty: unknown
    uint32_t width = 0;         // pixels; 0: unknown
    uint32_t height = 0;        // pixels
    uint32_t stride = 0;        // bytes per row; 0: has none
    uint32_t scanlines = 0;     // rows, padding included; 0: has none
    uint64_t timesOpened = 0;   // of a source
    bool leftUnread = false;    // a source of which the tool read no row
    uint64_t pictureBytes = 0;  // of a JPEG up to its end marker; 0: unknown
    std::string note;           // why there is no picture, or how to read it
    std::string picture;        // a reduced JPEG as a data: URL; empty without one
};

struct Report {
    Run run;
    std::vector<runlog::Line> log;       // of tool and services, in order of time
    uint64_t omittedLogLines = 0;        // from the middle of a very long log
    std::vector<runlog::Call> calls;     // in order of time
    bool traceIsWhole = false;           // else calls may be missing
    runlog::Facts facts;                 // of `log`
    int toolPid = 0;                     // on a device
    std::vector<runlog::Crash> crashes;  // on a device
    std::vector<runlog::Phase> phases;
    std::vector<Problem> problems;
    std::vector<Frame> sources;
    std::vector<Frame> dumps;
    std::vector<std::string> missing;  // inputs of the report that could not be read, and why
};

// What a report is made of.
struct Inputs {
    Run run;
    std::string log;         // file of the tool's platform log; as the following may be empty
    std::optional<int> pid;  // of a device's tool whose run it is; none: the last run in the log
    std::string deviceLog;   // of the services' log
    std::string trace;       // of the binder trace
    std::string dataFolder;  // what the tool saw as /data/vendor/camera
    std::vector<std::string> dumps;  // files that the run wrote
};

enum class Pictures { kReduced, kNone };

// Fills report->sources and report->dumps by the report's facts. Sources outside the inputs' data
// folder are left out; a file without a picture has a note that says why.
void ReadFrames(const Inputs& inputs, Pictures pictures, Report* report);

// Reads what there is; what cannot be read is named in the report.
Report MakeReport(const Inputs& inputs, Pictures pictures);

// Adds the device's log and the dumps in a folder, and below it, that somebody sent.
base::Result<Inputs> ImportFolder(const std::string& folder, Inputs inputs);

// Of the log's lines, what follows from log and trace, and the run's end, in order of time.
std::vector<Problem> FindProblems(const Report& report);

// A report for programs, by docs/report.schema.json: UTF-8; bytes of the inputs that are none are
// replaced by U+FFFD. Without the reduced pictures, which are only for the page.
std::string ReportJson(const Report& report);

// The page for people around that JSON with the pictures: one file that needs no other.
std::string ReportPage(const Report& report);

// What ./run says about a run on standard error: its signal, what went wrong first, what else is
// not as it seems. Whether the run succeeded.
bool PrintSummary(const Report& report);

// At a terminal shows which wait the tool is in, once a second, until this process is killed or its
// parent ends. A log that is older than the run's start does not count.
[[noreturn]] void FollowWaits(const Inputs& inputs);

}  // namespace runreport
