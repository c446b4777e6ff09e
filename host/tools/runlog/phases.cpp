// Each phase begins with a line of the main thread's log or with one of its calls.

#include <stdio.h>

#include <algorithm>
#include <string_view>

#include "runlog.h"

namespace runlog {

namespace {

// What the main thread did at a time.
struct Event {
    int64_t timeUs;
    std::string text;  // a line's message, or ">METHOD" of a call
    bool isError;
};

struct Rule {
    std::string_view begins;  // of an event's text
    const char* phase;
    bool again = false;  // begins a new one even within a phase of the same name
};

// The first rule that matches counts.
constexpr Rule kRules[] = {
        {"main: offline camera client connect to service", "start-up"},
        {"main: offline camera client opMode", "open"},
        {"main: offline camera client exit", "exit"},
        {">registerClient", "register"},
        {"OpenOfflineSession", "configure"},
        {"dataspace ", "configure"},
        {"stream size:", "configure"},
        {"ProcessOfflineRequest sucessfully", "submit"},
        {"ProcessOfflineRequest, FAILED", "submit"},
        {"ProcessOfflineRequest", "fill"},
        {">allocate", "allocate", true},
        {"buffer allocationsize", "allocate"},
        {"LoadOffine", "fill"},
        {">processOfflineRequest", "submit"},
        {"WaitForShutter frame", "shutter"},
        {"WaitForResult result", "result"},
        {"result completed outputResult", "dump"},
        {">closeOfflineSession", "close"},
        {"CloseOfflineSession", "close"},
};

// A number in a line of a phase, as the phase's detail.
struct Detail {
    std::string_view phase;
    const char* format;  // of the line
    const char* before;
    const char* after;
    bool grouped = false;  // "18,874,368"
};

constexpr Detail kDetails[] = {
        {"configure", "stream size:%15lu", "", " streams"},
        {"submit", "request id frameNumber:%15lu", "frame ", ""},
        {"shutter", "WaitForShutter frame %*d time %15lu", "waits ", " ms at most"},
        {"result", "WaitForResult result timeout_ms %15lu", "waits ", " ms at most"},
        {"dump", "imageSize %*d bufferSize %15lu", "a buffer of ", " bytes", true},
};

const Rule* RuleOf(const std::string& text) {
    for (const Rule& rule : kRules) {
        if (std::string_view(text).substr(0, rule.begins.size()) == rule.begins) return &rule;
    }
    return nullptr;
}

// "18,874,368"
std::string Grouped(unsigned long number) {
    std::string digits = std::to_string(number);
    for (size_t i = digits.size(); i > 3; i -= 3) digits.insert(i - 3, ",");
    return digits;
}

void DescribeBuffer(const char* message, std::string* detail) {
    char role[8] = {};
    int stream = 0;
    unsigned width = 0, height = 0;
    unsigned long bytes = 0;
    if (sscanf(message,
               "%7[a-z] streamId %9d, bufferStride %*d, bufferScanline %*d%*[, ]buffer %*s width "
               "%9u, height %9u bufferSize %15lu",
               role, &stream, &width, &height, &bytes) != 5) {
        return;
    }
    *detail = std::string(role) + " stream " + std::to_string(stream) + ": " +
              std::to_string(width) + " × " + std::to_string(height) + ", " + Grouped(bytes) +
              " bytes";
}

// Sets the detail from lines that tell something about the phase; others change nothing.
void Describe(const std::string& message, Phase* phase) {
    const std::string opens = ": open input file ";
    if (phase->name == "allocate") {
        DescribeBuffer(message.c_str(), &phase->detail);
    } else if (phase->name == "fill" && message.find(opens) != std::string::npos) {
        phase->detail = message.substr(message.rfind('/') + 1);
    } else if (phase->name == "fill" && message.rfind("LoadOffineInputMetadata", 0) == 0) {
        phase->detail = "the request's settings";
    }
    for (const Detail& detail : kDetails) {
        unsigned long number = 0;
        if (detail.phase != phase->name) continue;
        if (sscanf(message.c_str(), detail.format, &number) != 1) continue;
        phase->detail = detail.before +
                        (detail.grouped ? Grouped(number) : std::to_string(number)) + detail.after;
    }
}

// Calls that a thread of the pool made while it handled a call from a service.
bool IsNested(const Call& call, const std::vector<Call>& calls) {
    return std::any_of(calls.begin(), calls.end(), [&](const Call& other) {
        return other.incoming && other.pid == call.pid && other.startUs <= call.startUs &&
               call.startUs <= other.startUs + other.durationUs;
    });
}

// The tool's first line comes from its main thread.
std::vector<Event> MainThread(const std::vector<Line>& log, const std::vector<Call>& calls) {
    const auto first = std::find_if(log.begin(), log.end(), [](const Line& line) {
        return !line.fromServices && line.priority != ' ';
    });
    if (first == log.end()) return {};
    std::vector<Event> events;
    for (const Line& line : log) {
        const bool ofMain = !line.fromServices && line.pid == first->pid && line.tid == first->tid;
        if (ofMain) events.push_back({line.timeUs, line.message, line.IsError()});
    }
    for (const Call& call : calls) {
        if (call.pid == first->pid && !call.incoming && !IsNested(call, calls)) {
            events.push_back({call.startUs, ">" + call.method, false});
        }
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const Event& a, const Event& b) { return a.timeUs < b.timeUs; });
    return events;
}

// Ends the last phase and begins one. A clock that jumps leaves phases in order and in the run.
void Begin(const char* name, int64_t timeUs, int64_t durationUs, std::vector<Phase>* phases) {
    Phase phase;
    phase.name = name;
    phase.waits = phase.name == "shutter" || phase.name == "result";
    if (!phases->empty()) {
        phase.startUs = std::clamp(timeUs, phases->back().startUs, durationUs);
        phases->back().endUs = phase.startUs;
    }
    phases->push_back(std::move(phase));
}

// What no line of the phase itself says: opening logs success alone.
void Judge(const Facts& facts, std::vector<Phase>* phases) {
    for (size_t i = 0; i < phases->size(); ++i) {
        Phase& phase = (*phases)[i];
        const bool configured = i + 1 < phases->size() && (*phases)[i + 1].name == "configure";
        if (!facts.sessionOpened && phase.name == "open" && configured) {
            phase.end = PhaseEnd::kFailed;
            phase.detail = "no session was opened";
        }
        for (const Wait& wait : facts.waits) {
            const bool inside = phase.startUs <= wait.startUs && wait.startUs < phase.endUs;
            if (phase.waits && inside && wait.TimedOut()) phase.end = PhaseEnd::kTimedOut;
        }
    }
}

}  // namespace

std::vector<Phase> FindPhases(const std::vector<Line>& log, const std::vector<Call>& calls,
                              const Facts& facts, int64_t durationUs, bool cutShort) {
    const std::vector<Event> events = MainThread(log, calls);
    if (events.empty()) return {};
    std::vector<Phase> phases;
    Begin("device", 0, durationUs, &phases);
    for (const Event& event : events) {
        const Rule* const rule = RuleOf(event.text);
        if (rule && (phases.back().name != rule->phase || rule->again)) {
            Begin(rule->phase, event.timeUs, durationUs, &phases);
        }
        Describe(event.text, &phases.back());
        if (event.isError) phases.back().end = PhaseEnd::kFailed;
    }
    phases.back().endUs = durationUs;
    Judge(facts, &phases);
    if (cutShort) phases.back().end = PhaseEnd::kCutShort;
    return phases;
}

}  // namespace runlog
