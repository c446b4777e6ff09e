// Conclusions from calls, waits and dumps.

#include "conclusions.h"

#include <host_unset_return.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>

namespace runreport {

namespace {

using runlog::Call;
using runlog::Line;
using runlog::Wait;
using Words = std::vector<std::string>;

constexpr char kServiceName[] =
        "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default";
constexpr size_t kCommBytes = 15;          // of a process's name, as far as the system keeps it
constexpr int64_t kMinJpegBytes = 262152;  // of a smaller JPEG the tool writes more than that

std::string Code(const std::string& text) {
    return "`" + text + "`";
}

// "5.01 s" or "12.5 ms"
std::string Duration(int64_t micros) {
    char text[32];
    const bool seconds = micros >= 1'000'000;
    snprintf(text, sizeof text, seconds ? "%.2f s" : "%.1f ms",
             static_cast<double>(micros) / (seconds ? 1e6 : 1e3));
    return text;
}

std::string Joined(const Words& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
    return text;
}

int64_t EndOf(const Call& call) {
    return call.startUs + call.durationUs;
}

bool IsAfterExit(const Report& report, int64_t timeUs) {
    return report.facts.exitUs && timeUs > *report.facts.exitUs;
}

// Of the vendor's and the platform's interfaces; others are the binder library's own.
bool IsOfService(const Call& call) {
    return call.interface.find("IServiceManager") == std::string::npos && call.method[0] != '(';
}

// "NAME was ended by signal 9 (Killed)": a program of the device that ended.
bool IsDeath(const Line& line) {
    return line.fromServices && line.tag == "deviceshell" && line.IsError();
}

// The process at the other end of the call is the one that this line is about.
bool IsOf(const Call& call, const Line& death) {
    const std::string program = death.message.substr(0, death.message.find(' '));
    return call.peer.substr(call.peer.find('/') + 1) == program.substr(0, kCommBytes);
}

// The first line that passes the test; null when none does.
template <class Test>
const Line* FindLine(const Report& report, Test test) {
    const auto found = std::find_if(report.log.begin(), report.log.end(), test);
    return found == report.log.end() ? nullptr : &*found;
}

const Line* FindText(const Report& report, const std::string& text) {
    return FindLine(report, [&](const Line& line) { return line.message.find(text) != text.npos; });
}

// The end of the process at the other end of the call.
const Line* DeathOf(const Report& report, const Call& call) {
    return FindLine(report, [&](const Line& line) { return IsDeath(line) && IsOf(call, line); });
}

// The last line before the death of that process, or of a program that printed it.
std::string LastWords(const Report& report, const Line& death) {
    int pid = -1;
    for (const Call& call : report.calls) {
        if (IsOf(call, death)) pid = atoi(call.peer.c_str());
    }
    std::string words;
    for (const Line& line : report.log) {
        if (line.timeUs > death.timeUs) break;
        if (line.fromServices && (line.pid == pid || line.priority == ' ')) words = line.message;
    }
    return words.empty() ? "" : " Its last line in the log: " + Code(words) + ".";
}

void ConcludeDeath(const Report& report, const Line& death, Problem* problem) {
    const Call* last = nullptr;  // that it answered
    for (const Call& call : report.calls) {
        if (call.incoming || call.startUs > death.timeUs || !IsOf(call, death)) continue;
        if (call.status == "DEAD_OBJECT") {
            problem->timeUs = std::min(death.timeUs, EndOf(call));
            problem->cause =
                    "It ended without an answer to the tool's call " + Code(call.method) + ".";
            break;
        }
        if (IsOfService(call) && call.status == "OK") last = &call;
    }
    problem->isRoot = !problem->cause.empty() || !IsAfterExit(report, death.timeUs);
    if (!problem->isRoot) {
        problem->cause = "Its end was noticed when the tool's work was done.";
    } else if (problem->cause.empty()) {
        problem->cause = "It ended between the tool's calls" +
                         (last ? "; the last one that it answered is " + Code(last->method) : "") +
                         ".";
    }
    problem->cause += LastWords(report, death);
}

// What the service called of `method` after the request: "in time" is before a wait's end.
struct Callbacks {
    size_t inTime = 0;
    std::string none;  // without one in time: what there is to say
};

Callbacks CallbacksOf(const Report& report, const std::string& method, int64_t endUs) {
    Callbacks found;
    const Call* late = nullptr;
    const Line* death = nullptr;
    bool anyEarly = false;
    for (const Call& call : report.calls) {
        if (call.method == "processOfflineRequest") death = DeathOf(report, call);
        if (!call.incoming || call.method != method || !call.answer.empty()) continue;
        const bool early = call.startUs < report.facts.requestUs.value_or(0);
        anyEarly |= early;
        found.inTime += !early && call.startUs <= endUs;
        if (!late && call.startUs > endUs) late = &call;
    }
    found.none = "No " + Code(method) + " reached the tool";
    if (late) {
        found.none += " before the wait was over; one came " + Duration(late->startUs - endUs) +
                      " after it";
    } else if (death && death->timeUs <= endUs) {
        found.none += ": " + death->message;
    } else if (anyEarly) {
        found.none += " after the request; what came before it is forgotten";
    }
    found.none += ".";
    return found;
}

std::string CauseOfNoShutter(size_t calls, const Wait& wait) {
    const std::string shutter = "shutter of frame " + std::to_string(wait.frame);
    if (calls == 1) return "One `notify` reached the tool in time, without a " + shutter + ".";
    return std::to_string(calls) +
           " calls of `notify` reached the tool in time. It keeps the messages of the last call "
           "only, and had no " +
           shutter + " when it looked: a later call replaced it, or it was in none.";
}

std::string CauseOfNoResult(const runlog::Facts& facts, const Wait& wait) {
    const std::string frame = "frame " + std::to_string(wait.frame);
    Words others;
    size_t ofFrame = 0;
    for (const runlog::CaptureResult& result : facts.results) {
        if (result.timeUs > *wait.endUs) continue;
        ofFrame += result.frame == wait.frame;
        if (result.frame != wait.frame) others.push_back(std::to_string(result.frame));
    }
    if (ofFrame == 0)
        return "The results were of frame " + Joined(others) + ", not of " + frame + ".";
    const bool none = facts.resultBuffers.empty();
    return "The result of " + frame + " names " +
           (none ? "no buffer" : "buffer " + Joined(facts.resultBuffers)) +
           "; the request has buffer " + Joined(facts.requestBuffers) + "." +
           (ofFrame > 1 ? " Of several results of a frame, the first one with buffers counts."
                        : "");
}

// Empty where log and trace are not whole.
std::string CauseOfTimeOut(const Report& report, const Wait& wait) {
    if (!report.traceIsWhole || report.omittedLogLines != 0) return "";
    const char* const method = wait.forShutter ? "notify" : "processCaptureResult";
    const Callbacks calls = CallbacksOf(report, method, *wait.endUs);
    if (calls.inTime == 0) return calls.none;
    return wait.forShutter ? CauseOfNoShutter(calls.inTime, wait)
                           : CauseOfNoResult(report.facts, wait);
}

// The last call of the thread before a time.
const Call* CallBefore(const Report& report, int tid, int64_t timeUs) {
    const Call* last = nullptr;
    for (const Call& call : report.calls) {
        if (!call.incoming && call.tid == tid && call.startUs <= timeUs) last = &call;
    }
    return last;
}

// Where and why it crashed.
std::string Backtrace(const runlog::Crash& crash) {
    std::string text = "It crashed in process " + std::to_string(crash.pid);
    if (!crash.reason.empty()) text += ": " + crash.reason;
    text += ".";
    for (const std::string& frame : crash.frames) text += " " + Code(frame);
    return text;
}

// Collects the problems of one report.
class Conclusions {
  public:
    explicit Conclusions(const Report& report) : m_report(report), m_facts(report.facts) {}

    std::vector<Problem> All() {
        for (const Wait& wait : m_facts.waits) AddWait(wait);
        AddLateCallbacks();
        AddDoubleBuffer();
        AddUnsetReturn();
        // With more, it is not known which dump is in which file.
        if (m_facts.dumps.size() == 1 && m_report.dumps.size() <= 1) AddDump(m_facts.dumps[0]);
        AddUnreadSources();
        AddCrashes();
        AddEndOfLog();
        for (const Call& call : m_report.calls) AddCall(call);
        return m_problems;
    }

  private:
    void Add(const char* severity, const std::string& text, int64_t timeUs,
             const std::string& cause) {
        m_problems.push_back({severity, text, timeUs, cause});
    }

    void AddCall(const Call& call) {
        const std::string name = "The call " + call.method;
        const bool opens = call.method == "openOfflineSession";
        if (!IsOfService(call)) return;
        if (opens && call.Succeeded() && !m_facts.sessionOpened) {
            Add("error", name + " gave no session", EndOf(call), "It was answered OK.");
        } else if (!call.answer.empty() && call.incoming) {
            Add("warning", "The tool refused " + call.method + ": " + call.answer, EndOf(call),
                "The list in the call was empty.");
        } else if (!call.answer.empty()) {
            Add("error", name + " was refused: " + call.answer, EndOf(call), "");
        } else if (call.status.empty() && !call.incoming) {
            Add("error", name + " was not answered", call.startUs,
                "It went on for " + Duration(call.durationUs) + ", until the run was ended.");
        } else if (!call.Succeeded() && !call.status.empty() && !DeathOf(m_report, call)) {
            Add("error", name + " failed with " + call.status, EndOf(call), "");
        }
    }

    void AddWait(const Wait& wait) {
        if (!wait.TimedOut()) return;
        Add(wait.forShutter ? "warning" : "error",
            wait.forShutter ? "No shutter message came in time" : "No complete result came in time",
            *wait.endUs, CauseOfTimeOut(m_report, wait));
    }

    void AddLateCallbacks() {
        const Call* close = nullptr;
        const Call* first = nullptr;
        size_t count = 0;
        for (const Call& call : m_report.calls) {
            if (call.method == "closeOfflineSession" && call.status == "OK") close = &call;
            if (!close || !call.incoming || call.startUs <= EndOf(*close) || !IsOfService(call))
                continue;
            if (count++ == 0) first = &call;
        }
        if (!first) return;
        Add("warning", "A callback came after the session was closed", first->startUs,
            Code(first->method) + " came " + Duration(first->startUs - EndOf(*close)) +
                    " after the answer to `closeOfflineSession`" +
                    (count > 1 ? ", the first of " + std::to_string(count) + " such calls." : "."));
    }

    void AddDoubleBuffer() {
        Words named = m_facts.resultBuffers;
        std::sort(named.begin(), named.end());
        const auto twice = std::adjacent_find(named.begin(), named.end());
        if (twice == named.end() || m_facts.dumps.empty()) return;
        Add("error", "The result names a buffer twice", m_facts.dumps[0].timeUs,
            "It names buffer " + *twice + " more than once. The first dump of a buffer frees it.");
    }

    // Seen only where a program shows the number.
    void AddUnsetReturn() {
        const std::string unset = std::to_string(host::kUnsetReturn);
        const Line* const line = FindText(m_report, unset);
        if (!line) return;
        Add("error", "An unset return value was taken for an answer", line->timeUs,
            "It is the " + unset + " in the line " + Code(line->message) + ".");
    }

    void AddDump(const runlog::Dump& meant) {
        if (m_report.dumps.empty() && m_report.run.place == Place::kImported) return;
        const std::string trailer = " The blob's trailer says " +
                                    std::to_string(meant.trailerBytes.value_or(0)) + " bytes";
        const Frame file = m_report.dumps.empty() ? Frame() : m_report.dumps[0];
        const std::string size = std::to_string(file.bytes);
        if (file.bytes < meant.bytes) {
            Add("error", "The dump was cut short", meant.timeUs,
                "The tool set out to write " + std::to_string(meant.bytes) + " bytes, and " +
                        (file.bytes == 0 ? "no file has any" : "the file has " + size) + "." +
                        (meant.trailerBytes ? trailer + "." : ""));
        }
        if (file.pictureBytes == 0 || file.pictureBytes == file.bytes) return;
        const std::string tool = "; for less than " + std::to_string(kMinJpegBytes) +
                                 " the tool writes width × height × 4";
        const bool small = meant.trailerBytes.value_or(0) < kMinJpegBytes;
        Add("warning", "The picture is only the beginning of the file", meant.timeUs,
            "The JPEG is the first " + std::to_string(file.pictureBytes) + " of the file's " +
                    size + " bytes." + trailer + (small ? tool : "") + ".");
    }

    void AddUnreadSources() {
        for (const runlog::Source& source : m_facts.sources) {
            if (!source.leftUnread) continue;
            Add("warning", "The input frames were left empty", m_facts.requestUs.value_or(0),
                "Nothing answers the tool's plane-layout query, so it read no row of its source "
                "files.");
            return;
        }
    }

    // On a device.
    void AddCrashes() {
        for (const runlog::Crash& crash : m_report.crashes) {
            if (crash.pid == m_report.toolPid) continue;  // it is how the run ended
            const std::string name = crash.program.empty() ? "A process" : crash.program;
            const char* const signal = sigabbrev_np(crash.signal);
            Add("error",
                name + " was ended by signal " + std::to_string(crash.signal) +
                        (signal ? std::string(" (SIG") + signal + ")" : ""),
                crash.timeUs, Backtrace(crash));
            m_problems.back().isRoot = true;
        }
    }

    void AddEndOfLog() {
        if (m_report.run.Ending() != "unknown" || m_facts.exitUs || m_report.log.empty()) return;
        Add("error", "The log ends before the run did", m_report.run.durationUs,
            "Its last line is " + Code(m_report.log.back().message) + ".");
    }

    const Report& m_report;
    const runlog::Facts& m_facts;
    std::vector<Problem> m_problems;
};

}  // namespace

std::vector<Problem> FindConclusions(const Report& report) {
    return Conclusions(report).All();
}

bool IsToldElsewhere(const Report& report, const Line& line) {
    const std::string& text = line.message;
    if (report.run.place != Place::kWorkstation && runlog::IsOfCrash(line)) return true;
    for (const Call& call : report.calls) {
        const size_t at = call.answer.find(": ");
        if (at == std::string::npos || !line.fromServices) continue;
        const std::string reason = call.answer.substr(at + 2);
        const bool inCall = call.startUs <= line.timeUs && line.timeUs <= EndOf(call);
        const size_t begin = text.size() - std::min(reason.size(), text.size());
        if (inCall && text.substr(begin) == reason) return true;
    }
    return false;
}

void ConcludeLine(const Report& report, const Line& line, Problem* problem) {
    const std::string& text = line.message;
    if (IsDeath(line)) ConcludeDeath(report, line, problem);
    const Call* const call =
            line.fromServices ? nullptr : CallBefore(report, line.tid, line.timeUs);
    if (!call) return;
    if (text.rfind("getService is NULL", 0) == 0 && call->Succeeded()) {
        const bool found = call->method == "(descriptor)";
        problem->cause = found ? "A service is registered by that name, in process " + call->peer +
                                         ", but it has another interface."
                               : "No service was registered by its name, `" +
                                         std::string(kServiceName) + "`, when the tool started.";
    }
    for (const auto& [begins, method] :
         {std::pair("ConfigureOfflineStreams, FAILED", "configureOff"),
          std::pair("ProcessOfflineRequest, FAILED", "processOff"),
          std::pair("Failed to allocate buffer: ", "allocate")}) {
        if (text.rfind(begins, 0) != 0 || call->method.rfind(method, 0) != 0) continue;
        problem->cause = "A consequence: " + Code(call->method) +
                         (call->answer.empty() ? " failed with " + call->status : " was refused") +
                         ".";
        problem->cure = "As for that call.";
    }
}

std::string CauseOfSignal(const Report& report) {
    for (const runlog::Crash& crash : report.crashes) {
        if (crash.pid == report.toolPid) return Backtrace(crash);
    }
    for (const Call& call : report.calls) {
        if (!call.status.empty()) continue;
        const bool late = IsAfterExit(report, call.startUs);
        return (call.incoming ? "It came while the tool served the service's call "
                              : "It came while the tool waited for an answer to its call ") +
               Code(call.method) + (late ? ", after the tool's work was done." : ".");
    }
    const std::string phase = report.phases.empty() ? "" : report.phases.back().name;
    if (phase == "shutter" || phase == "result")
        return "It came while the tool waited for the " + phase + ".";
    if (report.run.SignalName() != "SIGSEGV") return "";
    if (FindText(report, "getService is NULL") && (phase == "open" || phase == "register")) {
        return "The tool called the service that it had not found.";
    }
    if (!report.facts.sessionOpened && phase == "configure") {
        return "The tool configured streams on the session that it did not get.";
    }
    if (FindText(report, "zelAllocator getService failed") &&
        (phase == "fill" || phase == "allocate")) {
        return "The tool asked the allocator that it had not found for a buffer.";
    }
    return "";
}

}  // namespace runreport
