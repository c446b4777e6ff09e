// One run of the tool in a device of its own, and what it left.
#pragma once

#include <gmock/gmock.h>
#include <runlog/runlog.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "tests/support/subprocess.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/words.h"

namespace end_to_end {

using LogLine = runlog::Line;

struct RunResult {
    int status = -1;  // deviceshell's; -1: did not end in time
    std::string out;  // standard output and error of the run
    std::string err;
    std::vector<LogLine> log;               // the tool's platform log, in order
    std::string deviceLog;                  // log and output of the services
    std::map<std::string, uint64_t> dumps;  // size of each file that was written, by its name

    Words Messages() const;         // of `log`
    std::string AllOutput() const;  // everything for a failure's explanation
};

// A fresh data folder with the source files and the options of a run to come. After a run, the
// folder's dumps can be read until the object goes.
class DeviceRun {
  public:
    DeviceRun();

    // deviceshell's options, appended.
    DeviceRun& With(const Words& options);

    // Runs "vexofflinecameratest ARGUMENTS" or another command. A test fails here when the run
    // does not end in time or a sanitizer reported something in any process.
    RunResult Tool(const Words& arguments);
    RunResult Command(const Words& words);

    // Folder on the host that the run sees as /data/vendor/camera, and paths in it.
    std::string Folder() const { return m_folder.Path(); }
    std::string DumpPath(const std::string& name) const;

  private:
    const TemporaryFolder m_folder{"device-run"};
    Words m_options;
};

// The messages contain these, in this order, with any others between.
MATCHER_P(InOrder, wanted, "has in order " + ::testing::PrintToString(wanted)) {
    auto next = arg.begin();
    for (const std::string& message : wanted) {
        next = std::find(next, arg.end(), message);
        if (next == arg.end()) {
            *result_listener << "which lacks, at its place, \"" << message << "\"";
            return false;
        }
        ++next;
    }
    return true;
}

// PSNR of all channels in dB between two frames or pictures; 0 when they cannot be compared.
double Psnr(const std::string& a, const std::string& b);

// Lines of a log file of the stand-in device; a test fails here when one has another form.
std::vector<LogLine> ReadLog(const std::string& path);

std::string ReadFile(const std::string& path);

// Environment in which a crash looks as it does without a sanitizer (a signal, not a report and
// status 1), and with these settings.
Subprocess::Environment CrashSettings(const Subprocess::Environment& added = {});

}  // namespace end_to_end
