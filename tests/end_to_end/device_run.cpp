// One run of the tool in a device of its own, and what it left.

#include "tests/end_to_end/device_run.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace end_to_end {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSourceFiles[] = {
        "offlinecameratest/4096_3072_RAW10.raw", "offlinecameratest/4000_3000_NV12.yuv",
        "offlinecameratest/mmf_fd.yuv", "metadata/original_dump.bin"};

// Appends to a sanitizer's settings, which ./check may have made already.
std::pair<std::string, std::string> extended(const char* name, const std::string& settings) {
    const char* const old = getenv(name);
    return {name, old ? std::string(old) + ":" + settings : settings};
}

void expectNoSanitizerReport(const std::string& text) {
    for (const char* report : {"AddressSanitizer", "LeakSanitizer", "ThreadSanitizer"}) {
        EXPECT_EQ(text.find(report), std::string::npos) << text;
    }
}

}  // namespace

Subprocess::Environment crashSettings() {
    return {extended("ASAN_OPTIONS", "handle_segv=0:handle_abort=0"),
            extended("TSAN_OPTIONS", "handle_segv=0:handle_abort=0"),
            extended("UBSAN_OPTIONS", "abort_on_error=1")};
}

std::string readFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::vector<LogLine> readLog(const std::string& path) {
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

std::vector<std::string> RunResult::messages() const {
    std::vector<std::string> texts;
    for (const LogLine& line : log) texts.push_back(line.message);
    return texts;
}

std::string RunResult::allOutput() const {
    std::string text = "status " + std::to_string(status) + "\n" + out + err;
    for (const LogLine& line : log)
        text += std::string(1, line.priority) + " " + line.message + "\n";
    return text + "device log:\n" + deviceLog;
}

void linkSources(const std::string& folder) {
    for (const std::string file : kSourceFiles) {
        fs::create_directories(fs::path(folder + "/" + file).parent_path());
        fs::create_symlink(std::string(SOURCE_FOLDER) + "/" + file, folder + "/" + file);
    }
}

DeviceRun::DeviceRun() {
    linkSources(folder());
}

DeviceRun& DeviceRun::with(const std::vector<std::string>& options) {
    m_options.insert(m_options.end(), options.begin(), options.end());
    return *this;
}

std::string DeviceRun::dumpPath(const std::string& name) const {
    return folder() + "/offlinecameratest/" + name;
}

RunResult DeviceRun::tool(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"vexofflinecameratest"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return command(words);
}

RunResult DeviceRun::command(const std::vector<std::string>& words) {
    const std::string log = folder() + "/tool.log";
    const std::string deviceLog = folder() + "/device.log";
    std::vector<std::string> argv = {DEVICESHELL, "--data",       folder(), "--log",
                                     log,         "--device-log", deviceLog};
    argv.insert(argv.end(), m_options.begin(), m_options.end());
    argv.push_back("--");
    argv.insert(argv.end(), words.begin(), words.end());
    const Finished finished = runProgram(argv, crashSettings());

    RunResult result;
    result.status = finished.status;
    result.out = finished.out;
    result.err = finished.err;
    result.log = readLog(log);
    result.deviceLog = readFile(deviceLog);
    std::error_code missing;
    for (const auto& entry : fs::directory_iterator(folder() + "/offlinecameratest", missing)) {
        if (entry.is_symlink() || !entry.is_regular_file()) continue;
        result.dumps[entry.path().filename()] = entry.file_size();
    }
    EXPECT_FALSE(missing) << "no folder for dumps\n" << result.allOutput();
    EXPECT_NE(result.status, -1) << "the run did not end\n" << result.allOutput();
    expectNoSanitizerReport(result.err + result.deviceLog);
    return result;
}

}  // namespace end_to_end
