// The program: writes the report of a run.

#include <offlineframes/file_io.h>
#include <stdio.h>

#include "make_report.h"
#include "options.h"
#include "report_json.h"
#include "report_page.h"

namespace {

// A sentence on standard error when it fails. An empty path is an output that nobody asked for.
bool write(const std::string& path, const std::string& text) {
    if (path.empty()) return true;
    const auto written =
            offlineframes::writeFile(path, offlineframes::Bytes(text.begin(), text.end()),
                                     offlineframes::Existing::kReplace);
    if (!written.Ok()) fprintf(stderr, "runreport: %s\n", written.Error().c_str());
    return written.Ok();
}

}  // namespace

int main(int argc, char** argv) {
    const auto options = runreport::readOptions({argv + 1, argv + argc});
    if (!options.Ok()) {
        fprintf(stderr, "runreport: %s\n", options.Error().c_str());
        return 2;
    }
    if (options.Value().help) {
        fputs(runreport::kHelp, stdout);
        return 0;
    }
    const std::string json = runreport::reportJson(runreport::makeReport(options.Value()));
    const bool jsonWritten = write(options.Value().jsonFile, json);
    const bool pageWritten = write(options.Value().htmlFile, runreport::reportPage(json));
    return jsonWritten && pageWritten ? 0 : 1;
}
