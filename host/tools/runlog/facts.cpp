// Finds facts by the fixed texts of the tool's lines.

#include <stdio.h>

#include <algorithm>
#include <map>

#include "runlog.h"

namespace runlog {

namespace {

bool StartsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

// What came before a wait leaves no line that says so; then the line of the next step ends it.
void EndWait(int64_t timeUs, bool received, std::vector<Wait>* waits) {
    if (waits->empty() || waits->back().endUs) return;
    waits->back().endUs = timeUs;
    waits->back().received = received;
}

void TakeWaitLine(const Line& line, Facts* facts) {
    const char* const text = line.message.c_str();
    int value = 0;
    if (sscanf(text, "WaitForShutter frame %*d time %9d", &value) == 1 ||
        sscanf(text, "WaitForResult result timeout_ms %9d", &value) == 1) {
        EndWait(line.timeUs, true, &facts->waits);
        facts->waits.push_back({StartsWith(line.message, "WaitForShutter"), line.timeUs, {}});
    } else if (sscanf(text, "WaitForShutter frame %*d received %9d", &value) == 1 ||
               sscanf(text, "WaitForResult received is %9d", &value) == 1) {
        EndWait(line.timeUs, value != 0, &facts->waits);
    } else if (sscanf(text, "WaitCaptureResultCompleted status is %9d", &value) == 1) {
        EndWait(line.timeUs, value == 0, &facts->waits);
        facts->resultStatus = value;
    }
}

void TakeSourceLine(const std::string& message, std::vector<Source>* sources, size_t* last) {
    const std::string opens = ": open input file ";
    const size_t at = message.find(opens);
    unsigned rows = 1;
    if (at != std::string::npos) {
        const std::string path = message.substr(at + opens.size());
        const auto found = std::find_if(sources->begin(), sources->end(),
                                        [&](const Source& known) { return known.path == path; });
        *last = static_cast<size_t>(found - sources->begin());
        if (found == sources->end()) sources->push_back({path});
        ++(*sources)[*last].timesOpened;
    } else if (*last < sources->size() &&
               sscanf(message.c_str(), "%*[A-Za-z]: f_wxf_h %*ux%9u", &rows) == 1) {
        (*sources)[*last].leftUnread = rows == 0;
    }
}

}  // namespace

Facts FindFacts(const std::vector<Line>& log) {
    Facts facts;
    size_t lastSource = 0;
    for (const Line& line : log) {
        if (line.fromServices) continue;
        facts.sessionOpened |= line.message == "OpenOfflineSession";
        facts.sessionClosed |= line.message == "CloseOfflineSession";
        TakeWaitLine(line, &facts);
        TakeSourceLine(line.message, &facts.sources, &lastSource);
        if (!line.IsError()) continue;
        ++facts.errorCount;
        facts.lastError = line.tag + ": " + line.message;
    }
    return facts;
}

std::vector<Error> DifferentErrors(const std::vector<Line>& log) {
    std::vector<Error> errors;
    std::map<std::string, size_t> known;  // index of a message's error
    for (const Line& line : log) {
        if (!line.IsError()) continue;
        const auto [found, added] = known.emplace(line.message, errors.size());
        if (added) errors.push_back({line});
        ++errors[found->second].count;
    }
    return errors;
}

}  // namespace runlog
