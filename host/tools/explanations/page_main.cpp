// Writes a page about statuses and lines for people: explanation_page lines|stand_in >FILE

#include <stdio.h>

#include <string>

#include "explanations.h"

namespace {

using explanations::Explanation;
using explanations::Kind;

constexpr char kLinesHead[] = R"(# Statuses and lines

What each exit status, each conclusion of a report and each error line of the tool's log means. The
lines of the stand-in device are in [stand_in.md](stand_in.md).
)";
constexpr char kStandInHead[] = R"(# The stand-in device

Lines of the stand-in device that need more words than they have: what `./run` says on standard
error, what the workstation's libraries add to the tool's log (`out/run.log`), and what the services
say in theirs (`out/device.log`). The tool's own lines are in [lines.md](lines.md).
)";
constexpr char kWritten[] =
        "\nWritten by `./check pages --accept` from `host/tools/explanations/lines.def`.\n";
constexpr char kStatuses[] = R"(
## Exit statuses

`adb shell` and `./run` hand on the tool's own status.
)";
constexpr char kFindings[] = "\n## Conclusions of a report\n";
constexpr char kToolLines[] = R"(
## Error lines

In the order of a run. Tags are `OfflineCameraTest` and `OfflineCameraClient`; the heading is the
text behind the tag, and `…` stands for a value. The tool goes on after every one of these lines.
)";

std::string Section(const char* head, Kind kind) {
    std::string text = head;
    for (const Explanation& entry : explanations::Table()) {
        if (entry.kind != kind) continue;
        text += "\n";
        for (const std::string_view line : entry.lines) text += "### `" + std::string(line) + "`\n";
        text += "\nCause: " + std::string(entry.cause) + "\n\nCure: " + std::string(entry.cure) +
                "\n";
        if (!entry.onDevice.empty()) text += "\nOn a device: " + std::string(entry.onDevice) + "\n";
    }
    return text;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string page = argc == 2 ? argv[1] : "";
    std::string text;
    if (page == "lines") {
        text = std::string(kLinesHead) + kWritten + Section(kStatuses, Kind::kStatus) +
               Section(kFindings, Kind::kFinding) + Section(kToolLines, Kind::kTool);
    } else if (page == "stand_in") {
        text = std::string(kStandInHead) + kWritten + Section("\n## Lines\n", Kind::kStandIn);
    } else {
        fputs("usage: explanation_page lines|stand_in\n", stderr);
        return 2;
    }
    return fputs(text.c_str(), stdout) < 0 || fflush(stdout) != 0;
}
