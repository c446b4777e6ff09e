// The report's records as JSON objects, in the order in which a person would read them.

#include <time.h>

#include <nlohmann/json.hpp>

#include "report.h"

namespace runreport {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kVersion = 1;
constexpr const char* kEndings[] = {"finished", "usage-error", "signal", "no-device", "other"};
constexpr const char* kPhaseEnds[] = {"done", "failed", "timed-out", "cut-short"};

// "2026-11-21T21:58:29+0000", local time.
std::string StartText(int64_t startedUs) {
    const time_t seconds = startedUs / 1'000'000;
    tm local = {};
    localtime_r(&seconds, &local);
    char text[64];
    strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S%z", &local);
    return text;
}

Json ToJson(const Run& run) {
    return {{"command", run.command},
            {"options", run.options},
            {"started", StartText(run.startedUs)},
            {"durationUs", run.durationUs},
            {"status", run.status},
            {"ending", kEndings[static_cast<int>(run.GetEnding())]},
            {"signal", run.SignalName()}};
}

Json ToJson(const Problem& problem) {
    return {{"severity", problem.isError ? "error" : "warning"},
            {"text", problem.text},
            {"cause", problem.cause},
            {"cure", problem.cure},
            {"phase", problem.phase},
            {"timeUs", problem.timeUs},
            {"count", problem.count},
            {"logged", problem.logged}};
}

Json ToJson(const runlog::Phase& phase) {
    return {{"name", phase.name},
            {"startUs", phase.startUs},
            {"endUs", phase.endUs},
            {"waits", phase.waits},
            {"end", kPhaseEnds[static_cast<int>(phase.end)]},
            {"detail", phase.detail}};
}

Json ToJson(const Frame& frame) {
    return {{"path", frame.path},
            {"bytes", frame.bytes},
            {"format", frame.format},
            {"width", frame.width},
            {"height", frame.height},
            {"stride", frame.stride},
            {"scanlines", frame.scanlines},
            {"timesOpened", frame.timesOpened},
            {"leftUnread", frame.leftUnread},
            {"note", frame.note},
            {"picture", frame.picture},
            {"pictureWidth", frame.pictureWidth},
            {"pictureHeight", frame.pictureHeight}};
}

Json ToJson(const runlog::Call& call) {
    return {{"startUs", call.startUs},
            {"durationUs", call.durationUs},
            {"incoming", call.incoming},
            {"oneway", call.oneway},
            {"peer", call.peer},
            {"interface", call.interface},
            {"method", call.method},
            {"bytes", call.bytes},
            {"descriptors", call.descriptors},
            {"status", call.status}};
}

Json ToJson(const runlog::Line& line) {
    return {{"timeUs", line.timeUs},
            {"from", line.fromServices ? "services" : "tool"},
            {"pid", line.pid},
            {"tid", line.tid},
            {"priority", line.priority == ' ' ? "" : std::string(1, line.priority)},
            {"tag", line.tag},
            {"message", line.message}};
}

template <class Record>
Json List(const std::vector<Record>& records) {
    Json all = Json::array();
    for (const Record& record : records) all.push_back(ToJson(record));
    return all;
}

}  // namespace

std::string ReportJson(const Report& report) {
    const Json json = {{"report", "run of vexofflinecameratest"},
                       {"version", kVersion},
                       {"run", ToJson(report.run)},
                       {"problems", List(report.problems)},
                       {"phases", List(report.phases)},
                       {"sources", List(report.sources)},
                       {"dumps", List(report.dumps)},
                       {"calls", List(report.calls)},
                       {"missing", report.missing},
                       {"omittedLogLines", report.omittedLogLines},
                       {"log", List(report.log)}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace runreport
