// Each phase begins with a line of the main thread's log or with one of its calls.

#include "timeline.h"

#include <algorithm>
#include <string_view>

#include "phase_details.h"

namespace runreport {

namespace {

enum class Mark { kLine, kCall };

struct Rule {
    Mark mark;
    std::string_view begins;  // of the line's message, or of the call's method
    const char* phase;
    bool again = false;  // begins a new one even within a phase of the same name
};

// The first rule that matches counts.
constexpr Rule kRules[] = {
        {Mark::kLine, "main: offline camera client connect to service", "start-up"},
        {Mark::kLine, "main: offline camera client opMode", "open"},
        {Mark::kLine, "main: offline camera client exit", "exit"},
        {Mark::kCall, "registerClient", "register"},
        {Mark::kLine, "OpenOfflineSession", "configure"},
        {Mark::kLine, "dataspace ", "configure"},
        {Mark::kLine, "stream size:", "configure"},
        {Mark::kLine, "ProcessOfflineRequest sucessfully", "submit"},
        {Mark::kLine, "ProcessOfflineRequest, FAILED", "submit"},
        {Mark::kLine, "ProcessOfflineRequest", "fill"},
        {Mark::kCall, "allocate", "allocate", true},
        {Mark::kLine, "buffer allocationsize", "allocate"},
        {Mark::kLine, "LoadOffine", "fill"},
        {Mark::kCall, "processOfflineRequest", "submit"},
        {Mark::kLine, "WaitForShutter frame", "shutter"},
        {Mark::kLine, "WaitForResult result", "result"},
        {Mark::kLine, "result completed outputResult", "dump"},
        {Mark::kCall, "closeOfflineSession", "close"},
        {Mark::kLine, "CloseOfflineSession", "close"},
};

bool isWait(const std::string& phase) {
    return phase == "shutter" || phase == "result";
}

// What the main thread did at a time: exactly one of both is set.
struct Event {
    int64_t timeUs;
    const LogLine* line;
    const Call* call;
};

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

const Rule* ruleOf(const Event& event) {
    const Mark mark = event.line != nullptr ? Mark::kLine : Mark::kCall;
    const std::string& text = event.line != nullptr ? event.line->message : event.call->method;
    for (const Rule& rule : kRules) {
        const bool matches =
                mark == Mark::kLine ? startsWith(text, rule.begins) : text == rule.begins;
        if (rule.mark == mark && matches) return &rule;
    }
    return nullptr;
}

const LogLine* firstLineOfTool(const Report& report) {
    const auto found = std::find_if(report.log.begin(), report.log.end(), [](const LogLine& line) {
        return !line.ofDevice && line.priority != ' ';
    });
    return found == report.log.end() ? nullptr : &*found;
}

// Made by a thread of the pool while it handles a call from a service.
bool isNested(const Call& call, const std::vector<Call>& calls) {
    return std::any_of(calls.begin(), calls.end(), [&](const Call& other) {
        return other.incoming && other.pid == call.pid && other.startUs <= call.startUs &&
               call.startUs <= other.startUs + other.durationUs;
    });
}

// The tool's first line comes from its main thread.
std::vector<Event> mainThread(const Report& report, const LogLine& first) {
    std::vector<Event> events;
    for (const LogLine& line : report.log) {
        const bool ofMain = !line.ofDevice && line.pid == first.pid && line.tid == first.tid;
        if (ofMain) events.push_back({line.timeUs, &line, nullptr});
    }
    for (const Call& call : report.calls) {
        if (call.pid == first.pid && !call.incoming && !isNested(call, report.calls)) {
            events.push_back({call.startUs, nullptr, &call});
        }
    }
    std::stable_sort(events.begin(), events.end(),
                     [](const Event& a, const Event& b) { return a.timeUs < b.timeUs; });
    return events;
}

class PhaseCollector {
  public:
    explicit PhaseCollector(int64_t endUs) : mEndUs(endUs) { begin("device", 0); }

    void take(const Event& event) {
        const Rule* const rule = ruleOf(event);
        if (rule != nullptr && (mPhases.back().name != rule->phase || rule->again)) {
            begin(rule->phase, std::clamp(event.timeUs, mPhases.back().startUs, mEndUs));
        }
        if (event.line != nullptr) describePhase(event.line->message, &mPhases.back());
        if (event.line != nullptr && event.line->isError()) {
            mPhases.back().end = PhaseEnd::kFailed;
        }
    }

    std::vector<Phase> finish(bool cutShort) {
        mPhases.back().endUs = mEndUs;
        if (cutShort) mPhases.back().end = PhaseEnd::kCutShort;
        return std::move(mPhases);
    }

  private:
    void begin(const char* name, int64_t timeUs) {
        if (!mPhases.empty()) mPhases.back().endUs = timeUs;
        Phase phase;
        phase.name = name;
        phase.startUs = timeUs;
        phase.waits = isWait(phase.name);
        mPhases.push_back(std::move(phase));
    }

    const int64_t mEndUs;
    std::vector<Phase> mPhases;
};

// Opening logs success alone.
void judgeOpening(const Report& report, std::vector<Phase>* phases) {
    const bool opened = std::any_of(report.log.begin(), report.log.end(), [](const LogLine& line) {
        return !line.ofDevice && line.message == "OpenOfflineSession";
    });
    if (opened || report.run.command.empty()) return;
    for (size_t i = 0; i + 1 < phases->size(); ++i) {
        Phase& phase = (*phases)[i];
        if (phase.name == "open" && (*phases)[i + 1].name == "configure") {
            phase.end = PhaseEnd::kFailed;
            phase.detail = "no session was opened";
        }
    }
}

}  // namespace

std::vector<Phase> makePhases(const Report& report) {
    const LogLine* const first = firstLineOfTool(report);
    if (first == nullptr) return {};
    PhaseCollector collector(report.run.durationUs);
    for (const Event& event : mainThread(report, *first)) collector.take(event);
    std::vector<Phase> phases = collector.finish(report.run.ending() == Ending::kSignal);
    judgeOpening(report, &phases);
    return phases;
}

const Phase* phaseAt(const std::vector<Phase>& phases, int64_t timeUs) {
    const Phase* found = phases.empty() ? nullptr : &phases.front();
    for (const Phase& phase : phases) {
        if (phase.startUs <= timeUs) found = &phase;
    }
    return found;
}

}  // namespace runreport
