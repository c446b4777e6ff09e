// Reads "MM-DD HH:MM:SS.uuuuuu  PID   TID P Tag: message".

#include "log_reader.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <deque>
#include <iterator>

#include "text_lines.h"

namespace runreport {

namespace {

// False when the text is none of the log's own.
bool parseLine(const std::string& text, const RunClock& clock, LogLine* line) {
    int hours = 0, minutes = 0, seconds = 0, micros = 0, used = 0;
    char priority = 0;
    const int fields =
            sscanf(text.c_str(), "%*2d-%*2d %2d:%2d:%2d.%6d %9d %9d %c %n", &hours, &minutes,
                   &seconds, &micros, &line->pid, &line->tid, &priority, &used);
    if (fields != 7 || used == 0 || strchr("VDIWEF", priority) == nullptr) return false;
    const size_t start = static_cast<size_t>(used);
    const size_t colon = text.find(": ", start);
    if (colon == std::string::npos) return false;
    line->timeUs = clock.sinceStart(hours, minutes, seconds, micros);
    line->priority = priority;
    line->tag = text.substr(start, colon - start);
    line->message = text.substr(colon + 2);
    return true;
}

// Holds the beginning and a moving end.
class KeptLines {
  public:
    void add(LogLine&& line) {
        if (mHead.size() < kKeptAtEachEnd) {
            mHead.push_back(std::move(line));
            return;
        }
        mTail.push_back(std::move(line));
        if (mTail.size() > kKeptAtEachEnd) dropOldest();
    }

    std::vector<LogLine> take() {
        std::move(mErrors.begin(), mErrors.end(), std::back_inserter(mHead));
        std::move(mTail.begin(), mTail.end(), std::back_inserter(mHead));
        return std::move(mHead);
    }

    uint64_t omitted() const { return mOmitted; }

  private:
    void dropOldest() {
        LogLine& oldest = mTail.front();
        if (oldest.isError() && mErrors.size() < kKeptErrors) {
            mErrors.push_back(std::move(oldest));
        } else {
            ++mOmitted;
        }
        mTail.pop_front();
    }

    std::vector<LogLine> mHead;
    std::vector<LogLine> mErrors;
    std::deque<LogLine> mTail;
    uint64_t mOmitted = 0;
};

}  // namespace

LogFile readLog(const std::string& path, bool ofDevice, const RunClock& clock) {
    KeptLines kept;
    int64_t timeUs = 0;
    LogFile log;
    log.problem = forEachLine(path, [&](std::string&& text) {
        LogLine line;
        line.ofDevice = ofDevice;
        if (!parseLine(text, clock, &line)) {
            line = LogLine();
            line.ofDevice = ofDevice;
            line.timeUs = timeUs;
            line.message = std::move(text);
        }
        timeUs = line.timeUs;
        kept.add(std::move(line));
    });
    log.omitted = kept.omitted();
    log.lines = kept.take();
    return log;
}

std::vector<LogLine> mergeLogs(std::vector<LogLine> first, std::vector<LogLine> second) {
    std::move(second.begin(), second.end(), std::back_inserter(first));
    std::stable_sort(first.begin(), first.end(),
                     [](const LogLine& a, const LogLine& b) { return a.timeUs < b.timeUs; });
    return first;
}

}  // namespace runreport
