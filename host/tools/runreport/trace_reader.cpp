// Reads "HH:MM:SS.uuuuuu PID -> PEER INTERFACE.METHOD [oneway] N bytes N fds N us STATUS".

#include "trace_reader.h"

#include <stdio.h>

#include <algorithm>

#include "text_lines.h"

namespace runreport {

namespace {

// Interface and method of "host.os.IServiceManager.checkService"; the dots of the first stay.
void splitName(const std::string& name, Call* call) {
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos) {
        call->method = name;
        return;
    }
    call->interface = name.substr(0, dot);
    call->method = name.substr(dot + 1);
}

bool parseCall(const std::string& text, const RunClock& clock, Call* call) {
    int hours = 0, minutes = 0, seconds = 0, micros = 0, used = 0;
    char arrow[3] = {}, peer[257] = {}, name[1025] = {};
    if (sscanf(text.c_str(), "%2d:%2d:%2d.%6d %9d %2s %256s %1024s %n", &hours, &minutes, &seconds,
               &micros, &call->pid, arrow, peer, name, &used) != 8 ||
        used == 0) {
        return false;
    }
    std::string rest = text.substr(static_cast<size_t>(used));
    const std::string oneway = "oneway ";
    call->oneway = rest.compare(0, oneway.size(), oneway) == 0;
    if (call->oneway) rest.erase(0, oneway.size());
    unsigned long bytes = 0, descriptors = 0, took = 0;
    int end = 0;
    if (sscanf(rest.c_str(), "%15lu bytes %15lu fds %15lu us %n", &bytes, &descriptors, &took,
               &end) != 3 ||
        end == 0) {
        return false;
    }
    call->startUs = clock.sinceStart(hours, minutes, seconds, micros);
    call->durationUs = static_cast<int64_t>(took);
    call->incoming = arrow[0] == '<';
    call->peer = peer;
    splitName(name, call);
    call->bytes = bytes;
    call->descriptors = descriptors;
    call->status = rest.substr(static_cast<size_t>(end));
    return !call->status.empty();
}

}  // namespace

TraceFile readTrace(const std::string& path, const RunClock& clock) {
    TraceFile trace;
    size_t unreadable = 0;
    size_t surplus = 0;
    trace.problem = forEachLine(path, [&](std::string&& text) {
        Call call;
        if (!parseCall(text, clock, &call)) {
            ++unreadable;
        } else if (trace.calls.size() == kMaxCalls) {
            ++surplus;
        } else {
            trace.calls.push_back(std::move(call));
        }
    });
    std::stable_sort(trace.calls.begin(), trace.calls.end(),
                     [](const Call& a, const Call& b) { return a.startUs < b.startUs; });
    if (trace.problem.empty() && unreadable + surplus > 0) {
        trace.problem = path + ": " + std::to_string(unreadable) + " lines are no transactions, " +
                        std::to_string(surplus) + " are too many";
    }
    return trace;
}

}  // namespace runreport
