// Writes the fault matrix: what the tool does under each fault, as tables made of real runs.
// usage: fault_matrix FILE

#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <terminal/terminal.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <mutex>
#include <sstream>
#include <thread>

#include "tests/end_to_end/device_run.h"
#include "tests/end_to_end/fault_outcome.h"

namespace end_to_end {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr size_t kWorkers = RUNS_AT_A_TIME;  // most of them wait

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

struct Row {
    std::string fault;
    std::vector<std::string> options = {};
    std::function<void(DeviceRun&)> prepare = [](DeviceRun&) {};
    std::string shell = "";  // run before the tool, in its process
    Outcome outcome = {};
};

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
    row->outcome = outcomeOf(device, result, duration.count());
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
    std::mutex lock;
    size_t done = 0;
    terminal::Progress progress;
    std::vector<std::thread> workers;
    for (size_t i = 0; i < kWorkers; ++i) {
        workers.emplace_back([&] {
            for (size_t job = next++; job < jobs.size(); job = next++) {
                run(*jobs[job].first, jobs[job].second);
                const std::lock_guard<std::mutex> guard(lock);
                progress.show("run " + std::to_string(++done) + " of " +
                              std::to_string(jobs.size()));
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
