// What one run under a fault came to, in the words of the fault matrix.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/end_to_end/device_run.h"

namespace end_to_end {

struct Dump {  // a file that was written; `hash` is of its content
    std::string name;
    uint64_t size;
    size_t hash;
    bool operator==(const Dump& other) const {
        return name == other.name && size == other.size && hash == other.hash;
    }
};

struct Outcome {
    std::string end;      // status or signal
    std::string waits;    // that timed out
    std::string request;  // what the waits for shutter and result said; empty: none began
    std::string errors;   // different lines at level E or F, marked up
    std::vector<Dump> dumps;
    bool closed = false;  // the session, by the tool
};

// `duration` is the whole run's, in seconds.
Outcome outcomeOf(const DeviceRun& device, const RunResult& result, double duration);

}  // namespace end_to_end
