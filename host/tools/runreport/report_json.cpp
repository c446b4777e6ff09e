// The report's records as JSON objects, in the order in which a person would read them.

#include "report_json.h"

#include <time.h>

#include <nlohmann/json.hpp>

namespace runreport {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kVersion = 1;

// "2026-11-21T21:58:29+0000", local time.
std::string startText(int64_t startedUs) {
    const time_t seconds = startedUs / 1'000'000;
    tm local = {};
    localtime_r(&seconds, &local);
    char text[64];
    strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S%z", &local);
    return text;
}

Json toJson(const Run& run) {
    return {{"command", run.command},
            {"options", run.options},
            {"started", startText(run.startedUs)},
            {"durationUs", run.durationUs},
            {"status", run.status},
            {"ending", name(run.ending())},
            {"signal", run.signalName()}};
}

Json toJson(const Problem& problem) {
    return {{"severity", name(problem.severity)},
            {"text", problem.text},
            {"cause", problem.cause},
            {"cure", problem.cure},
            {"phase", problem.phase},
            {"timeUs", problem.timeUs},
            {"count", problem.count},
            {"logged", problem.logged}};
}

Json toJson(const Phase& phase) {
    return {{"name", phase.name},   {"startUs", phase.startUs}, {"endUs", phase.endUs},
            {"waits", phase.waits}, {"end", name(phase.end)},   {"detail", phase.detail}};
}

Json toJson(const Frame& frame) {
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

Json toJson(const Call& call) {
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

Json toJson(const LogLine& line) {
    return {{"timeUs", line.timeUs},
            {"from", line.ofDevice ? "services" : "tool"},
            {"pid", line.pid},
            {"tid", line.tid},
            {"priority", line.priority == ' ' ? "" : std::string(1, line.priority)},
            {"tag", line.tag},
            {"message", line.message}};
}

template <class Record>
Json list(const std::vector<Record>& records) {
    Json all = Json::array();
    for (const Record& record : records) all.push_back(toJson(record));
    return all;
}

}  // namespace

std::string reportJson(const Report& report) {
    const Json json = {{"report", "run of vexofflinecameratest"},
                       {"version", kVersion},
                       {"run", toJson(report.run)},
                       {"problems", list(report.problems)},
                       {"phases", list(report.phases)},
                       {"sources", list(report.sources)},
                       {"dumps", list(report.dumps)},
                       {"calls", list(report.calls)},
                       {"missing", report.missing},
                       {"omittedLogLines", report.omittedLogLines},
                       {"log", list(report.log)}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace runreport
