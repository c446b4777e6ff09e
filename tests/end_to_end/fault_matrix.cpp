// Writes the fault matrix: what the tool does under each fault, as tables made of real runs.
// usage: fault_matrix FILE

#include <runlog/runlog.h>
#include <stdio.h>
#include <string.h>

#include <atomic>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>

#include "tests/end_to_end/device_run.h"

namespace end_to_end {
namespace {

constexpr char kDumpStart[] = "OfflineAidl_";
constexpr size_t kWorkers = 12;  // most of them wait

constexpr char kHeading[] =
        R"(# What the tool does under each fault

Written by `./check faults` from real runs with `--planes`. *End*: the status or signal; *waits*: the tool's waits that
timed out; *shutter, result*: what the two waits of the request said, where it got so far (0: result, -110: time-out).
*Closed*: whether it closed its session; *errors*: each different line of the tool's log at level E or F, once.
)";

struct Mode {
    std::string name;
    Words sources;
    std::string dump;  // the end of its name
};

const Mode kModes[] = {
        {"B2Y", {"4096_3072_RAW10.raw"}, "B2Y_Stride[4096]_Scanline[3072].yuv"},
        {"Y2J", {"4000_3000_NV12.yuv"}, "Y2J_Width[4000]_Height[3000].jpg"},
        {"MMF", {"4096_3072_RAW10.raw", "mmf_fd.yuv"}, "MMF_Stride[4096]_Scanline[3072].yuv"}};

// By name, the commands that do it to $f, a file in a folder of /data/vendor/camera. Source files
// are links.
using FileFaults = std::vector<std::pair<std::string, std::string>>;

const FileFaults kSourceFaults = {
        {"absent", "rm $f"},
        {"empty", "rm $f; touch $f"},
        {"one byte short", "cp $f new; mv new $f; truncate -s -1 $f"},
        {"4096 bytes longer", "cp $f new; mv new $f; truncate -s +4096 $f"},
        {"unreadable (a link to itself: permissions do not stop root)", "ln -sf $f $f"},
        {"a directory", "rm $f; mkdir $f"}};

// A blob begins with its size.
const FileFaults kMetadataFaults = {
        {"absent", "rm $f"},
        {"empty", "rm $f; touch $f"},
        {"garbage (zeros, then text)",
         "rm $f; printf '\\0\\0\\0\\0no camera metadata at all' > $f"},
        {"its header claims 65536 bytes",
         "cp $f new; mv new $f; printf '\\0\\0\\1\\0' | dd of=$f conv=notrunc status=none"},
        {"its header claims 16777216 bytes",
         "cp $f new; mv new $f; printf '\\0\\0\\0\\1' | dd of=$f conv=notrunc status=none"}};

const FileFaults kDumpFaults = {
        {"an older, longer file of its name", "truncate -s 100000000 \"$f\""},
        {"a directory of its name", "mkdir \"$f\""},
        {"read-only directory",
         "cd ..; rm -r offlinecameratest; ln -s '" SOURCE_FOLDER "/offlinecameratest' ."},
        {"disk full (a link to /dev/full)", "ln -s /dev/full \"$f\""}};

// One run under one fault, and what its row shows.
struct Row {
    const Mode* mode;
    std::string fault;
    Words options = {};
    std::string shell = "";  // run before the tool, in its process
    std::string end = "", waits = "", request = "", closed = "", errors = "";
    std::map<std::string, std::pair<uint64_t, size_t>> dumps = {};  // size and hash by name
};

std::string RequestOf(const runlog::Facts& facts) {
    if (!facts.resultStatus) return "";
    const bool shutter = std::none_of(
            facts.waits.begin(), facts.waits.end(),
            [](const runlog::Wait& wait) { return wait.forShutter && wait.TimedOut(); });
    return std::string(shutter ? "yes" : "no") + ", " + std::to_string(*facts.resultStatus);
}

// Addresses differ from run to run.
std::string ErrorsOf(std::vector<LogLine> log) {
    for (LogLine& line : log) {
        line.message = std::regex_replace(line.message, std::regex("0x[0-9a-f]+"), "ADDRESS");
    }
    std::string text;
    for (const auto& [line, count] : runlog::DifferentErrors(log)) {
        text += (text.empty() ? "`" : "<br>`") + std::string(1, line.priority) + " " +
                line.message + "`";
    }
    return text;
}

void RunOne(Row* row) {
    DeviceRun device;
    const std::string tool = "exec vexofflinecameratest -t " + row->mode->name;
    const RunResult result =
            device.With({"--planes"}).With(row->options).Command({"sh", "-ec", row->shell + tool});
    const char* const signal = result.status > 128 ? sigabbrev_np(result.status - 128) : nullptr;
    row->end = signal ? std::string("SIG") + signal : std::to_string(result.status);
    const runlog::Facts facts = runlog::FindFacts(result.log);
    for (const runlog::Wait& wait : facts.waits) {
        if (!wait.endUs || *wait.endUs - wait.startUs < 4'900'000) continue;
        row->waits += row->waits.empty() ? "5 s" : " + 5 s";
    }
    if (row->waits.empty()) row->waits = "none";
    row->request = RequestOf(facts);
    row->closed = facts.sessionClosed ? "yes" : "no";
    row->errors = ErrorsOf(result.log);
    for (const auto& [name, size] : result.dumps) {
        if (name.rfind(kDumpStart, 0) != 0) continue;
        row->dumps[name] = {size, std::hash<std::string>()(ReadFile(device.DumpPath(name)))};
    }
}

void RunAll(std::vector<Row>* rows) {
    std::atomic<size_t> next = 0;
    std::vector<std::thread> workers;
    for (size_t i = 0; i < kWorkers; ++i) {
        workers.emplace_back([&] {
            for (size_t job = next++; job < rows->size(); job = next++) RunOne(&(*rows)[job]);
        });
    }
    for (std::thread& worker : workers) worker.join();
}

// Every name that `--fault help` lists, service's and allocator's.
Words FaultNames() {
    Words names;
    std::istringstream lines(RunProgram({DEVICESHELL, "--fault", "help"}).out);
    const std::regex name("^ *([a-z-]+).*[^:]$");
    std::smatch found;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_search(line, found, name)) names.push_back(found[1]);
    }
    EXPECT_GT(names.size(), 20u);
    return names;
}

void AddRows(const Mode& mode, const Words& faults, std::vector<Row>* rows) {
    rows->push_back({&mode, "(none)"});
    for (const std::string& name : faults) rows->push_back({&mode, name, {"--fault", name}});
    const auto addFileFaults = [&](const std::string& what, const std::string& folder,
                                   const std::string& file, const FileFaults& fileFaults) {
        const std::string at = "(cd /data/vendor/camera/" + folder + "; f='" + file + "'; ";
        for (const auto& [name, commands] : fileFaults) {
            rows->push_back({&mode, what + ": " + name, {}, at + commands + "); "});
        }
    };
    const std::string frames = "offlinecameratest";
    for (const std::string& source : mode.sources) {
        addFileFaults("source " + source, frames, source, kSourceFaults);
    }
    addFileFaults("metadata dump", "metadata", "original_dump.bin", kMetadataFaults);
    addFileFaults("dump", frames, kDumpStart + ("CameraId_2_Frame_1_" + mode.dump), kDumpFaults);
    rows->push_back(
            {&mode, "dump: files may not grow beyond 1 MiB", {}, "trap '' XFSZ; ulimit -f 2048; "});
}

std::string DumpsOf(const Row& row, const Row& usual) {
    if (row.dumps.empty()) return "nothing";
    if (&row != &usual && row.dumps == usual.dumps) return "as without the fault";
    std::string text;
    for (const auto& [name, content] : row.dumps) {
        const bool known = &row != &usual && usual.dumps.count(name) > 0;
        text += (text.empty() ? "" : "<br>") + (known ? "other content" : "`" + name + "`") + ", " +
                std::to_string(content.first) + " bytes";
    }
    return text;
}

// The first row of each mode is the run without a fault.
std::string Tables(const std::vector<Row>& rows) {
    std::string text = kHeading;
    const Row* first = nullptr;
    for (const Row& row : rows) {
        if (!first || first->mode != row.mode) {
            first = &row;
            text += "\n## " + row.mode->name +
                    "\n\n| fault | end | waits | shutter, result | dumped | closed | errors |\n"
                    "|---|---|---|---|---|---|---|\n";
        }
        const std::string dumps = DumpsOf(row, *first);
        for (const std::string& cell :
             {row.fault, row.end, row.waits, row.request, dumps, row.closed, row.errors}) {
            text += "| " + cell + " ";
        }
        text += "|\n";
    }
    return text;
}

}  // namespace
}  // namespace end_to_end

int main(int count, char** words) {
    using namespace end_to_end;
    ::testing::InitGoogleTest(&count, words);
    const Words faults = FaultNames();
    std::vector<Row> rows;
    for (const Mode& mode : kModes) AddRows(mode, faults, &rows);
    RunAll(&rows);
    std::ofstream stream(count == 2 ? words[1] : "");
    stream << Tables(rows) << std::flush;
    if (!stream) fprintf(stderr, "fault_matrix: no FILE given that can be written\n");
    // Runs that did not end, or with a sanitizer's report, have been shown already.
    const bool failed = ::testing::UnitTest::GetInstance()->ad_hoc_test_result().Failed();
    return failed || !stream ? 1 : 0;
}
