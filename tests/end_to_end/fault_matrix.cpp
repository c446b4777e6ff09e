// Writes the fault matrix: what the tool does under each fault, as tables made of real runs.
// usage: fault_matrix FILE

#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <sstream>
#include <thread>

#include "tests/end_to_end/device_run.h"

namespace end_to_end {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr size_t kWorkers = 12;  // runs at a time: most of them wait

constexpr char kHeading[] =
        R"(# What the tool does under each fault

Written by `./check faults` from real runs with `--planes`. *End*: the status or signal; *waits*: the tool's waits that
timed out; *shutter, result*: what the two waits of the request said, where it got so far (0: result, -110: time-out).
*Closed*: whether it closed its session; *errors*: each different line of the tool's log at level E or F, once.
)";

struct Mode {
    const char* name;
    std::vector<std::string> sources;
    const char* dump;
};

const Mode kModes[] = {{"B2Y",
                        {"4096_3072_RAW10.raw"},
                        "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[3072].yuv"},
                       {"Y2J",
                        {"4000_3000_NV12.yuv"},
                        "OfflineAidl_CameraId_2_Frame_1_Y2J_Width[4000]_Height[3000].jpg"},
                       {"MMF",
                        {"4096_3072_RAW10.raw", "mmf_fd.yuv"},
                        "OfflineAidl_CameraId_2_Frame_1_MMF_Stride[4096]_Scanline[3072].yuv"}};

struct Dump {
    std::string name;
    uint64_t size;
    size_t hash;
    bool operator==(const Dump& other) const {
        return name == other.name && size == other.size && hash == other.hash;
    }
};

struct Outcome {
    std::string end, waits, request, errors;
    std::vector<Dump> dumps;
    bool closed = false;
};

struct Row {
    std::string fault;
    std::vector<std::string> options = {};
    std::function<void(DeviceRun&)> prepare = [](DeviceRun&) {};
    std::string shell = "";  // run before the tool, in its process
    Outcome outcome = {};
};

std::string endOf(int status) {
    if (status <= 128) return std::to_string(status);
    return std::string("SIG") + sigabbrev_np(status - 128);
}

// Seconds of the day of a line that begins "MM-DD HH:MM:SS.uuuuuu".
double timeOf(const std::string& line) {
    unsigned hours = 0, minutes = 0;
    double seconds = 0;
    sscanf(line.c_str(), "%*s %u:%u:%lf", &hours, &minutes, &seconds);
    return hours * 3600 + minutes * 60 + seconds;
}

// Counts the tool's waits of 5 s that lasted so long. A run that goes on for much longer than them
// is slow beyond what a busy machine explains.
std::string waitsOf(const std::string& log, double duration) {
    int waits = 0;
    double begin = 0;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_search(line, std::regex(": Wait.* (time|timeout_ms) 5000$"))) {
            begin = timeOf(line);
        } else if (line.find(" received ") != std::string::npos) {
            const double lasted = timeOf(line) - begin;
            if (lasted > 4.9 || lasted < 0) ++waits;  // below 0: over midnight
        }
    }
    const std::string text = waits == 0 ? "none" : waits == 1 ? "5 s" : "5 s + 5 s";
    return duration < waits * 5 + 30 ? text : text + ", then slow";
}

void fillFromLog(const std::vector<LogLine>& log, Outcome* outcome) {
    static const std::regex& addresses = *new std::regex("0x[0-9a-f]+");
    std::smatch match;
    std::string shutter, result;
    std::vector<std::string> errors;
    for (const LogLine& line : log) {
        static const std::regex& shutterLine =
                *new std::regex("WaitForShutter frame \\d+ received (\\d)");
        static const std::regex& resultLine =
                *new std::regex("WaitCaptureResultCompleted status is (-?\\d+)");
        if (std::regex_match(line.message, match, shutterLine)) {
            shutter = match[1] == "1" ? "yes" : "no";
        } else if (std::regex_match(line.message, match, resultLine)) {
            result = match[1];
        } else if (line.message == "CloseOfflineSession") {
            outcome->closed = true;
        }
        if (!strchr("EF", line.priority)) continue;
        const std::string error = std::string(1, line.priority) + " " +
                                  std::regex_replace(line.message, addresses, "ADDRESS");
        if (std::find(errors.begin(), errors.end(), error) == errors.end()) {
            outcome->errors += (errors.empty() ? "`" : "<br>`") + error + "`";
            errors.push_back(error);
        }
    }
    if (result.empty()) return;
    // A shutter that came before the wait has no line.
    outcome->request = (shutter.empty() ? "yes" : shutter) + ", " + result;
}

void run(const Mode& mode, Row* row) {
    DeviceRun device;
    row->prepare(device);
    const Clock::time_point start = Clock::now();
    const RunResult result =
            device.with({"--planes"})
                    .with(row->options)
                    .command({"sh", "-c", row->shell + "exec vexofflinecameratest -t \"$0\"",
                              mode.name});
    const std::chrono::duration<double> duration = Clock::now() - start;
    row->outcome.end = endOf(result.status);
    row->outcome.waits = waitsOf(readFile(device.folder() + "/tool.log"), duration.count());
    fillFromLog(result.log, &row->outcome);
    for (const auto& [name, size] : result.dumps) {
        if (name.rfind("OfflineAidl_", 0) != 0) continue;
        row->outcome.dumps.push_back(
                {name, size, std::hash<std::string>()(readFile(device.dumpPath(name)))});
    }
}

// Replaces a data file, which is a link, by a copy of another size.
void resize(const fs::path& path, int64_t change) {
    const fs::path original = fs::read_symlink(path);
    fs::remove(path);
    fs::copy_file(original, path);
    fs::resize_file(path, fs::file_size(path) + static_cast<uint64_t>(change));
}

void replace(const fs::path& path, const std::string& content) {
    fs::remove(path);
    std::ofstream(path, std::ios::binary) << content;
}

void addSourceFaults(const std::string& source, std::vector<Row>* rows) {
    const std::vector<std::pair<const char*, std::function<void(const fs::path&)>>> faults = {
            {"absent", [](const fs::path& path) { fs::remove(path); }},
            {"empty", [](const fs::path& path) { replace(path, ""); }},
            {"one byte short", [](const fs::path& path) { resize(path, -1); }},
            {"4096 bytes longer", [](const fs::path& path) { resize(path, 4096); }},
            {"unreadable (a link to itself: permissions do not stop root)",
             [](const fs::path& path) {
                 fs::remove(path);
                 fs::create_symlink(path.filename(), path);
             }},
            {"a directory", [](const fs::path& path) {
                 fs::remove(path);
                 fs::create_directory(path);
             }}};
    for (const auto& [name, fault] : faults) {
        rows->push_back(
                {"source " + source + ": " + name, {}, [source, fault = fault](auto& device) {
                     fault(device.folder() + "/offlinecameratest/" + source);
                 }});
    }
}

void addMetadataFaults(std::vector<Row>* rows) {
    const auto add = [&](const char* name, const std::string& content) {
        rows->push_back({std::string("metadata dump: ") + name, {}, [content](DeviceRun& device) {
                             replace(device.folder() + "/metadata/original_dump.bin", content);
                         }});
    };
    rows->push_back({"metadata dump: absent", {}, [](DeviceRun& device) {
                         device.removeSource("metadata/original_dump.bin");
                     }});
    add("empty", "");
    add("garbage (zeros, then text)", std::string(4, '\0') + "no camera metadata at all");
    std::string blob = readFile(SOURCE_FOLDER "/metadata/original_dump.bin");
    const uint32_t claimed = 65536;
    memcpy(blob.data(), &claimed, sizeof claimed);  // a blob begins with its size
    add("its header claims 65536 bytes", blob);
    const uint32_t tooMuch = 16u << 20;
    memcpy(blob.data(), &tooMuch, sizeof tooMuch);
    add("its header claims 16777216 bytes", blob);
}

void addDumpFaults(const std::string& dump, std::vector<Row>* rows) {
    rows->push_back({"dump: an older, longer file of its name", {}, [dump](DeviceRun& device) {
                         replace(device.dumpPath(dump), "older");
                         fs::resize_file(device.dumpPath(dump), 100'000'000);
                     }});
    rows->push_back({"dump: a directory of its name", {}, [dump](DeviceRun& device) {
                         fs::create_directory(device.dumpPath(dump));
                     }});
    rows->push_back({"dump: read-only directory", {}, [](DeviceRun& device) {
                         const std::string folder = device.folder() + "/offlinecameratest";
                         fs::remove_all(folder);
                         fs::create_directory_symlink(SOURCE_FOLDER "/offlinecameratest", folder);
                     }});
    rows->push_back({"dump: disk full (a link to /dev/full)", {}, [dump](DeviceRun& device) {
                         fs::create_symlink("/dev/full", device.dumpPath(dump));
                     }});
    rows->push_back({"dump: files may not grow beyond 1 MiB",
                     {},
                     [](DeviceRun&) {},
                     "trap '' XFSZ; ulimit -f 2048; "});
}

// Every name that `--fault help` lists, service's and allocator's.
std::vector<std::string> faultNames() {
    std::vector<std::string> names;
    std::istringstream lines(runProgram({DEVICESHELL, "--fault", "help"}).out);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line.back() == ':') continue;
        std::string word;
        std::istringstream(line) >> word;
        names.push_back(word.substr(0, word.find('[')));
    }
    EXPECT_GT(names.size(), 20u);
    return names;
}

std::vector<Row> rowsOf(const Mode& mode) {
    std::vector<Row> rows = {{"(none)"}};
    for (const std::string& name : faultNames()) rows.push_back({name, {"--fault", name}});
    for (const std::string& source : mode.sources) addSourceFaults(source, &rows);
    addMetadataFaults(&rows);
    addDumpFaults(mode.dump, &rows);
    return rows;
}

void runAll(std::vector<std::vector<Row>>* tables) {
    std::vector<std::pair<const Mode*, Row*>> jobs;
    for (size_t i = 0; i < tables->size(); ++i) {
        for (Row& row : (*tables)[i]) jobs.push_back({&kModes[i], &row});
    }
    std::atomic<size_t> next = 0;
    std::vector<std::thread> workers;
    for (size_t i = 0; i < kWorkers; ++i) {
        workers.emplace_back([&] {
            for (size_t job = next++; job < jobs.size(); job = next++) {
                run(*jobs[job].first, jobs[job].second);
            }
        });
    }
    for (std::thread& worker : workers) worker.join();
}

std::string dumpsOf(const Outcome& outcome, const Outcome& usual) {
    if (outcome.dumps.empty()) return "nothing";
    if (&outcome != &usual && outcome.dumps == usual.dumps) return "as without the fault";
    std::string text;
    for (const Dump& dump : outcome.dumps) {
        const bool sameName =
                &outcome != &usual && !usual.dumps.empty() && dump.name == usual.dumps.front().name;
        text += (text.empty() ? "" : "<br>") +
                (sameName ? "other content" : "`" + dump.name + "`") + ", " +
                std::to_string(dump.size) + " bytes";
    }
    return text;
}

void writeTable(const Mode& mode, const std::vector<Row>& rows, std::ostream& stream) {
    stream << "\n## " << mode.name << "\n\n"
           << "| fault | end | waits | shutter, result | dumped | closed | errors |\n"
           << "|---|---|---|---|---|---|---|\n";
    for (const Row& row : rows) {
        const Outcome& outcome = row.outcome;
        stream << "| " << row.fault << " | " << outcome.end << " | " << outcome.waits << " | "
               << outcome.request << " | " << dumpsOf(outcome, rows.front().outcome) << " | "
               << (outcome.closed ? "yes" : "no") << " | " << outcome.errors << " |\n";
    }
}

int writeMatrix(const char* file) {
    std::vector<std::vector<Row>> tables;
    for (const Mode& mode : kModes) tables.push_back(rowsOf(mode));
    runAll(&tables);
    std::ofstream stream(file);
    stream << kHeading;
    for (size_t i = 0; i < tables.size(); ++i) writeTable(kModes[i], tables[i], stream);
    stream.close();
    if (!stream) {
        fprintf(stderr, "cannot write %s\n", file);
        return 2;
    }
    // Runs that did not end, or with a sanitizer's report, have been shown already.
    return ::testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed() ? 1 : 0;
}

}  // namespace
}  // namespace end_to_end

int main(int count, char** words) {
    ::testing::InitGoogleTest(&count, words);
    if (count != 2) {
        fprintf(stderr, "usage: fault_matrix FILE\n");
        return 2;
    }
    return end_to_end::writeMatrix(words[1]);
}
