// The report as text: its records as JSON objects, each field under its own name, and the page
// around that.

#include <time.h>

#include <nlohmann/json.hpp>
#include <string_view>

#include "report.h"

using Json = nlohmann::json;

namespace runlog {

NLOHMANN_JSON_SERIALIZE_ENUM(PhaseEnd, {{PhaseEnd::kDone, "done"},
                                        {PhaseEnd::kFailed, "failed"},
                                        {PhaseEnd::kTimedOut, "timed-out"},
                                        {PhaseEnd::kCutShort, "cut-short"}})
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Phase, name, startUs, endUs, waits, end, detail)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Call, startUs, durationUs, incoming, oneway, peer, interface,
                                   method, bytes, descriptors, status, answer)

static void to_json(Json& json, const Line& line) {
    json = {{"timeUs", line.timeUs},
            {"from", line.fromServices ? "services" : "tool"},
            {"pid", line.pid},
            {"tid", line.tid},
            {"priority", line.priority == ' ' ? "" : std::string(1, line.priority)},
            {"tag", line.tag},
            {"message", line.message}};
}

}  // namespace runlog

namespace runreport {

NLOHMANN_JSON_SERIALIZE_ENUM(Place, {{Place::kWorkstation, "workstation"},
                                     {Place::kDevice, "device"},
                                     {Place::kImported, "imported"}})
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Problem, severity, text, cause, cure, phase, timeUs, count,
                                   logged)
NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(Frame, path, bytes, format, width, height, stride, scanlines,
                                   timesOpened, leftUnread, pictureBytes, note, picture)

static void to_json(Json& json, const Run& run) {
    const time_t seconds = run.startedUs / 1'000'000;
    tm local = {};
    localtime_r(&seconds, &local);
    char started[64] = "";
    if (seconds > 0) strftime(started, sizeof started, "%Y-%m-%dT%H:%M:%S%z", &local);
    json = {{"command", run.command},       {"options", run.options}, {"started", started},
            {"durationUs", run.durationUs}, {"ending", run.Ending()}, {"signal", run.SignalName()},
            {"place", run.place},           {"device", run.device}};
    json["status"] = run.status ? Json(*run.status) : Json();
}

static Json JsonOf(const Report& report) {
    return {{"report", "run of vexofflinecameratest"},
            {"version", 3},
            {"run", report.run},
            {"problems", report.problems},
            {"phases", report.phases},
            {"sources", report.sources},
            {"dumps", report.dumps},
            {"calls", report.calls},
            {"missing", report.missing},
            {"omittedLogLines", report.omittedLogLines},
            {"log", report.log}};
}

static std::string TextOf(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string ReportJson(const Report& report) {
    Json json = JsonOf(report);
    for (const char* const list : {"sources", "dumps"}) {
        for (Json& frame : json[list]) frame.erase("picture");
    }
    return TextOf(json);
}

constexpr std::string_view kPage =
#include "page.html.inc"
        ;

std::string ReportPage(const Report& report) {
    constexpr std::string_view kMark = "{report}";
    const size_t at = kPage.find(kMark);
    std::string page(kPage.substr(0, at));
    // In JSON a "<" is only ever part of a string, where its escape means the same. So HTML sees no
    // "</script" or "<!--".
    for (const char letter : TextOf(JsonOf(report))) {
        if (letter == '<') {
            page += "\\u003c";
        } else {
            page += letter;
        }
    }
    page += kPage.substr(at + kMark.size());
    return page;
}

}  // namespace runreport
