// What the lines of the tool say about its run.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "runlog.h"

namespace runlog {

// A wait of the tool for the service, of 5 s at most.
struct Wait {
    bool forShutter = false;  // else for the result
    int64_t startUs = 0;
    std::optional<int64_t> endUs;  // none: the log ends in it
    bool received = false;

    bool TimedOut() const { return endUs && !received; }
};

// A source file that the tool opened or tried to.
struct Source {
    std::string path;  // on the device
    uint64_t timesOpened = 0;
    bool leftUnread = false;  // the tool knew of no row to read
};

struct Facts {
    bool sessionOpened = false;
    bool sessionClosed = false;
    std::vector<Source> sources;      // each once, in order
    std::vector<Wait> waits;          // in order
    std::optional<int> resultStatus;  // of the last request: 0, or -110 after a time-out
    uint64_t errorCount = 0;          // lines at level E or F
    std::string lastError;            // "Tag: message"
};

// Of the tool's own lines; those of services count for nothing.
Facts FindFacts(const std::vector<Line>& log);

struct Error {
    Line line;  // the first of its message
    uint64_t count = 0;
};

// Each different message at level E or F, of all lines, in order.
std::vector<Error> DifferentErrors(const std::vector<Line>& log);

}  // namespace runlog
