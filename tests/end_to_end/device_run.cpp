// One run of the tool in a device of its own, and what it left.

#include "tests/end_to_end/device_run.h"

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace end_to_end {

namespace fs = std::filesystem;

Subprocess::Environment CrashSettings(const Subprocess::Environment& added) {
    Subprocess::Environment all = {{"ASAN_OPTIONS", "handle_segv=0:handle_abort=0"},
                                   {"TSAN_OPTIONS", "handle_segv=0:handle_abort=0"},
                                   {"UBSAN_OPTIONS", "abort_on_error=1"}};
    for (auto& [name, settings] : all) {  // ./check may have made some already
        if (const char* old = getenv(name.c_str())) settings = std::string(old) + ":" + settings;
    }
    all.insert(all.end(), added.begin(), added.end());
    return all;
}

std::string ReadFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::vector<LogLine> ReadLog(const std::string& path) {
    const auto log = runlog::ReadLog(path);
    if (!log.Ok()) {
        ADD_FAILURE() << log.Error();
        return {};
    }
    for (const LogLine& line : log.Value().lines) {
        if (line.priority == ' ') ADD_FAILURE() << "not a log line: " << line.message;
    }
    return log.Value().lines;
}

double Psnr(const std::string& a, const std::string& b) {
    const Finished compared = RunProgram({OFFLINEFRAMES, "compare", a, b});
    EXPECT_EQ(compared.status, 0) << compared.err;
    const size_t all = compared.out.find("  all ");
    if (all == std::string::npos) return 0;
    return strtod(compared.out.c_str() + all + 6, nullptr);
}

Words RunResult::Messages() const {
    Words texts;
    for (const LogLine& line : log) texts.push_back(line.message);
    return texts;
}

std::string RunResult::AllOutput() const {
    std::string text = "status " + std::to_string(status) + "\n" + out + err;
    for (const LogLine& line : log) {
        text += std::string(1, line.priority) + " " + line.message + "\n";
    }
    return text + "device log:\n" + deviceLog;
}

DeviceRun::DeviceRun() {
    EXPECT_EQ(RunProgram({"cp", "-rs", SOURCE_FOLDER "/.", Folder()}).status, 0);
}

DeviceRun& DeviceRun::With(const Words& options) {
    m_options = Joined({m_options, options});
    return *this;
}

std::string DeviceRun::DumpPath(const std::string& name) const {
    return Folder() + "/offlinecameratest/" + name;
}

RunResult DeviceRun::Tool(const Words& arguments) {
    return Command(Joined({{"vexofflinecameratest"}, arguments}));
}

RunResult DeviceRun::Command(const Words& words) {
    const std::string log = Folder() + "/tool.log";
    const std::string deviceLog = Folder() + "/device.log";
    const Words shell = {DEVICESHELL, "--data", Folder(), "--log", log, "--device-log", deviceLog};
    const Finished finished =
            RunProgram(Joined({shell, m_options, {"--"}, words}), CrashSettings());

    RunResult result{finished.status, finished.out,        finished.err,
                     ReadLog(log),    ReadFile(deviceLog), {}};
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(Folder() + "/offlinecameratest", missing)) {
        if (entry.is_symlink() || !entry.is_regular_file()) continue;
        result.dumps[entry.path().filename()] = entry.file_size();
    }
    EXPECT_FALSE(missing) << "no folder for dumps\n" << result.AllOutput();
    EXPECT_NE(result.status, -1) << "the run did not end\n" << result.AllOutput();
    for (const char* report : {"AddressSanitizer", "LeakSanitizer", "ThreadSanitizer"}) {
        EXPECT_EQ((result.err + result.deviceLog).find(report), std::string::npos)
                << result.AllOutput();
    }
    return result;
}

}  // namespace end_to_end
