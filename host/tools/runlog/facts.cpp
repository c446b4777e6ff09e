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

// The end of a wait for what had already come is not logged; the next step's line ends it.
void EndWait(int64_t timeUs, bool received, std::vector<Wait>* waits) {
    if (waits->empty() || waits->back().endUs) return;
    waits->back().endUs = timeUs;
    waits->back().received = received;
}

void TakeWaitLine(const Line& line, int* frame, Facts* facts) {
    const char* const text = line.message.c_str();
    int value = 0;
    if (sscanf(text, "WaitForShutter frame %*d time %9d", &value) == 1 ||
        sscanf(text, "WaitForResult result timeout_ms %9d", &value) == 1) {
        EndWait(line.timeUs, true, &facts->waits);
        const bool forShutter = StartsWith(line.message, "WaitForShutter");
        facts->waits.push_back({forShutter, line.timeUs, {}, false, *frame});
    } else if (sscanf(text, "WaitForShutter frame %*d received %9d", &value) == 1 ||
               sscanf(text, "WaitForResult received is %9d", &value) == 1) {
        EndWait(line.timeUs, value != 0, &facts->waits);
    } else if (sscanf(text, "WaitCaptureResultCompleted status is %9d", &value) == 1) {
        EndWait(line.timeUs, value == 0, &facts->waits);
        facts->resultStatus = value;
    } else {
        sscanf(text, "WaitCaptureResultCompleted result frameNum is %9d", frame);
    }
}

// A comparison logs the result's buffers, then the request's.
void TakeResultLine(const Line& line, Facts* facts) {
    const char* const text = line.message.c_str();
    int frame = 0, stream = 0;
    char side[8] = {};
    unsigned long buffer = 0;
    if (sscanf(text, "ProcessOfflineResult: outframeinfo numPartialMetadata %*d frame numbrer %9d",
               &frame) == 1) {
        facts->results.push_back({line.timeUs, frame});
    } else if (StartsWith(line.message, "WaitForResult result") ||
               StartsWith(line.message, "WaitForResult wait_for")) {
        facts->resultBuffers.clear();
        facts->requestBuffers.clear();
    } else if (sscanf(text, "ContainsTheSameBuffers %7s streamId %9d bufferId %15lu", side, &stream,
                      &buffer) == 3) {
        const std::string name = std::to_string(buffer) + " of stream " + std::to_string(stream);
        (side[2] == 's' ? facts->resultBuffers : facts->requestBuffers).push_back(name);
    }
}

void TakeDumpLine(const Line& line, std::optional<int64_t>* trailer, Facts* facts) {
    const char* const text = line.message.c_str();
    unsigned long image = 0, buffer = 0;
    long size = 0;
    if (sscanf(text, "blob structure info Id %*d, JPEGBlobSize %15ld", &size) == 1) {
        *trailer = size;
    } else if (sscanf(text, "imageSize %15lu bufferSize %15lu", &image, &buffer) == 2) {
        facts->dumps.push_back({line.timeUs, *trailer ? image : buffer, *trailer});
        trailer->reset();
    }
}

// The geometry of a source's buffer, which is logged before the source is opened.
struct InputBuffer {
    unsigned stride = 0;
    unsigned scanlines = 0;
    bool allocated = true;
};

void TakeBufferLine(const std::string& message, InputBuffer* buffer) {
    if (sscanf(message.c_str(), "input streamId %*d, bufferStride %9u, bufferScanline %9u",
               &buffer->stride, &buffer->scanlines) != 2) {
        return;
    }
    buffer->allocated = message.find(" buffer (nil) ") == std::string::npos &&
                        message.find(" buffer 0x0 ") == std::string::npos;
}

// Where no buffer was allocated, the tool logs 0 rows too; that source is not `leftUnread`.
void TakeSourceLine(const std::string& message, const InputBuffer& buffer,
                    std::vector<Source>* sources, size_t* last) {
    const std::string opens = ": open input file ";
    const size_t at = message.find(opens);
    unsigned rows = 1;
    if (at != std::string::npos) {
        const std::string path = message.substr(at + opens.size());
        const auto found = std::find_if(sources->begin(), sources->end(),
                                        [&](const Source& known) { return known.path == path; });
        *last = static_cast<size_t>(found - sources->begin());
        if (found == sources->end())
            sources->push_back({path, 0, false, buffer.stride, buffer.scanlines});
        ++(*sources)[*last].timesOpened;
    } else if (*last < sources->size() &&
               sscanf(message.c_str(), "%*[A-Za-z]: f_wxf_h %*ux%9u", &rows) == 1) {
        (*sources)[*last].leftUnread = buffer.allocated && rows == 0;
    }
}

void TakeModeLine(const std::string& message, std::string* mode) {
    constexpr const char* kModes[] = {"B2Y", "Y2J", "Y2Y", "MMF", "QLL", "R2R"};
    unsigned number = 0;
    if (sscanf(message.c_str(), "main: offline camera client opMode %9u", &number) == 1 &&
        number < std::size(kModes)) {
        *mode = kModes[number];
    }
}

}  // namespace

Facts FindFacts(const std::vector<Line>& log) {
    Facts facts;
    size_t lastSource = 0;
    int frame = 0;
    InputBuffer buffer;
    std::optional<int64_t> trailer;
    for (const Line& line : log) {
        if (line.fromServices) continue;
        const std::string& message = line.message;
        facts.sessionOpened |= message == "OpenOfflineSession";
        facts.sessionClosed |= message == "CloseOfflineSession";
        TakeModeLine(message, &facts.mode);
        if (message == "ProcessOfflineRequest") facts.requestUs = line.timeUs;
        if (StartsWith(message, "main: offline camera client exit")) facts.exitUs = line.timeUs;
        TakeWaitLine(line, &frame, &facts);
        TakeResultLine(line, &facts);
        TakeDumpLine(line, &trailer, &facts);
        TakeBufferLine(message, &buffer);
        TakeSourceLine(message, buffer, &facts.sources, &lastSource);
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
