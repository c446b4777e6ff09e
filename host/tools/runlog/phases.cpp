// Each phase begins with a line of the main thread's log or with one of its calls.

#include <algorithm>
#include <string_view>

#include "runlog.h"

namespace runlog {

namespace {

// What the main thread did at a time.
struct Event {
    int64_t timeUs;
    std::string text;  // a line's message, or ">METHOD" of a call
    bool failed;
    int64_t endUs;  // of a call; of a line its time
};

struct Rule {
    std::string_view begins;  // of an event's text
    const char* phase;
    bool tells = false;  // the phase's first such text is its detail
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
        {"stream size:", "configure", true},
        {"ProcessOfflineRequest sucessfully", "submit"},
        {"ProcessOfflineRequest, FAILED", "submit"},
        {"ProcessOfflineRequest", "fill"},
        {">allocate", "allocate", false, true},
        {"buffer allocationsize", "allocate"},
        {"input streamId", "allocate", true},
        {"output streamId", "allocate", true},
        {"LoadOffine", "fill", true},
        {">processOfflineRequest", "submit"},
        {"request id frameNumber", "submit", true},
        {"WaitForShutter frame", "shutter", true},
        {"WaitForResult result", "result", true},
        {"result completed outputResult", "dump"},
        {"imageSize ", "dump", true},
        {">closeOfflineSession", "close"},
        {"CloseOfflineSession", "close"},
};

const Rule* RuleOf(const std::string& text) {
    for (const Rule& rule : kRules) {
        if (std::string_view(text).substr(0, rule.begins.size()) == rule.begins) return &rule;
    }
    return nullptr;
}

// The tool's first line comes from its main thread. While that waits for a call of its own, it
// serves calls from the same peer: what it does for them are no steps of the run.
std::vector<Event> MainThread(const std::vector<Line>& log, const std::vector<Call>& calls) {
    const auto first = std::find_if(log.begin(), log.end(), [](const Line& line) {
        return !line.fromServices && line.priority != ' ';
    });
    if (first == log.end()) return {};
    std::vector<Event> events;
    for (const Line& line : log) {
        const bool ofMain = !line.fromServices && line.pid == first->pid && line.tid == first->tid;
        if (ofMain) events.push_back({line.timeUs, line.message, line.IsError(), line.timeUs});
    }
    for (const Call& call : calls) {
        if (call.pid != first->pid || call.tid != first->tid || call.incoming) continue;
        const int64_t endUs = call.status.empty() ? INT64_MAX : call.startUs + call.durationUs;
        events.push_back({call.startUs, ">" + call.method, !call.Succeeded(), endUs});
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const Event& a, const Event& b) { return a.timeUs < b.timeUs; });
    std::vector<Event> steps;
    for (const Event& event : events) {
        if (steps.empty() || event.timeUs >= steps.back().endUs) steps.push_back(event);
    }
    return steps;
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
        if (rule && rule->tells && phases.back().detail.empty()) phases.back().detail = event.text;
        if (event.failed) phases.back().end = PhaseEnd::kFailed;
    }
    phases.back().endUs = durationUs;
    Judge(facts, &phases);
    if (cutShort) phases.back().end = PhaseEnd::kCutShort;
    return phases;
}

}  // namespace runlog
