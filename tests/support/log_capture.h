// The platform log of this process, as tests look at it.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace test {

// What printf would write; for expected lines that hold addresses.
[[gnu::format(printf, 1, 2)]] std::string Format(const char* format, ...);

// Collects every line from its construction on, at every priority; one at a time. Any thread.
class LogCapture {
  public:
    LogCapture();

    // The lines under the tag since the last call, such as "E Failed to load mapper.zel.so"; with
    // an empty tag, all.
    std::vector<std::string> Take(const std::string& tag = "OfflineCameraClient");

    // Waits until so many lines with this text have come; false after a minute.
    bool WaitFor(const std::string& text, int times = 1);

    // Calls `look`, which must not log, on the thread of each line that begins with `start`, while
    // that thread stands at the line.
    void AtLine(const std::string& start, std::function<void()> look);
};

}  // namespace test
