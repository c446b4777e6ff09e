// Values of the tool's own lines, in words.

#include "phase_details.h"

#include <stdio.h>

namespace runreport {

namespace {

std::string lastComponent(const std::string& path) {
    return path.substr(path.rfind('/') + 1);  // all of it without a slash
}

// "input stream 0: 4096 x 3072, 15,728,640 bytes"
void describeBuffer(const char* message, std::string* detail) {
    char role[8] = {};
    int stream = 0;
    unsigned width = 0, height = 0;
    unsigned long bytes = 0;
    if (sscanf(message,
               "%7[a-z] streamId %9d, bufferStride %*d, bufferScanline %*d%*[, ]buffer %*s width "
               "%9u, height %9u bufferSize %15lu",
               role, &stream, &width, &height, &bytes) != 5) {
        return;
    }
    *detail = std::string(role) + " stream " + std::to_string(stream) + ": " +
              std::to_string(width) + " × " + std::to_string(height) + ", " + bytesText(bytes);
}

// The limit in the first line of a wait, the outcome in the last.
void describeWait(const char* message, Phase* phase) {
    unsigned limit = 0;
    int received = 0;
    if (sscanf(message, "WaitForShutter frame %*d time %9u", &limit) == 1 ||
        sscanf(message, "WaitForResult result timeout_ms %9u", &limit) == 1) {
        phase->detail = "waits " + std::to_string(limit) + " ms at most";
    } else if ((sscanf(message, "WaitForShutter frame %*d received %9d", &received) == 1 ||
                sscanf(message, "WaitForResult received is %9d", &received) == 1) &&
               received == 0) {
        phase->end = PhaseEnd::kTimedOut;
    }
}

// Settings come from one file, rows from others.
void describeSource(const std::string& message, std::string* detail) {
    const std::string opens = ": open input file ";
    const size_t at = message.find(opens);
    if (at != std::string::npos) {
        *detail = lastComponent(message.substr(at + opens.size()));
    } else if (message.compare(0, 23, "LoadOffineInputMetadata") == 0) {
        *detail = "the request's settings";
    }
}

}  // namespace

std::string bytesText(uint64_t bytes) {
    std::string digits = std::to_string(bytes);
    for (size_t i = digits.size(); i > 3; i -= 3) digits.insert(i - 3, ",");
    return digits + " bytes";
}

void describePhase(const std::string& message, Phase* phase) {
    const char* const text = message.c_str();
    unsigned streams = 0;
    unsigned long bytes = 0;
    int frame = 0;
    if (phase->name == "allocate") {
        describeBuffer(text, &phase->detail);
    } else if (phase->name == "fill") {
        describeSource(message, &phase->detail);
    } else if (phase->waits) {
        describeWait(text, phase);
    } else if (phase->name == "configure" && sscanf(text, "stream size:%9u", &streams) == 1) {
        phase->detail = std::to_string(streams) + " streams";
    } else if (phase->name == "submit" && sscanf(text, "request id frameNumber:%9d", &frame) == 1) {
        phase->detail = "frame " + std::to_string(frame);
    } else if (phase->name == "dump" &&
               sscanf(text, "imageSize %*d bufferSize %15lu", &bytes) == 1) {
        phase->detail = "a buffer of " + bytesText(bytes);
    }
}

}  // namespace runreport
