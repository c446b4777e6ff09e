// Writes the fault matrix: what the tool does under each fault, as tables made of real runs.
// usage: fault_matrix FILE

#include <gtest/gtest.h>
#include <runlog/facts.h>
#include <stdio.h>
#include <string.h>
#include <terminal/terminal.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <mutex>
#include <regex>
#include <sstream>
#include <thread>

#include "tests/end_to_end/device_run.h"

namespace end_to_end {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::seconds;

constexpr size_t kWorkers = 12;  // most of them wait

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

// By name: size in bytes, and a hash of the content.
using Dumps = std::map<std::string, std::pair<uint64_t, size_t>>;

struct Outcome {
    std::string end;      // status or signal
    std::string waits;    // that lasted for their 5 s
    std::string request;  // what the waits for shutter and result said; empty: none began
    std::string errors;   // different lines at level E or F, marked up
    Dumps dumps;
    bool closed = false;  // the session, by the tool
};

struct Row {
    std::string fault;
    std::vector<std::string> options = {};
    std::string shell = "";  // run before the tool, in its process
    Outcome outcome = {};
};

// What happens to $f, a file in a folder of /data/vendor/camera. Source files are links.
struct FileFault {
    const char* name;
    const char* commands;
};

const FileFault kSourceFaults[] = {
        {"absent", "rm $f"},
        {"empty", "rm $f; touch $f"},
        {"one byte short", "cp $f new; mv new $f; truncate -s -1 $f"},
        {"4096 bytes longer", "cp $f new; mv new $f; truncate -s +4096 $f"},
        {"unreadable (a link to itself: permissions do not stop root)", "ln -sf $f $f"},
        {"a directory", "rm $f; mkdir $f"}};

// A blob begins with its size.
const FileFault kMetadataFaults[] = {
        {"absent", "rm $f"},
        {"empty", "rm $f; touch $f"},
        {"garbage (zeros, then text)",
         "rm $f; printf '\\0\\0\\0\\0no camera metadata at all' > $f"},
        {"its header claims 65536 bytes",
         "cp $f new; mv new $f; printf '\\0\\0\\1\\0' | dd of=$f conv=notrunc status=none"},
        {"its header claims 16777216 bytes",
         "cp $f new; mv new $f; printf '\\0\\0\\0\\1' | dd of=$f conv=notrunc status=none"}};

const FileFault kDumpFaults[] = {
        {"an older, longer file of its name", "truncate -s 100000000 \"$f\""},
        {"a directory of its name", "mkdir \"$f\""},
        {"read-only directory",
         "cd ..; rm -r offlinecameratest; ln -s '" SOURCE_FOLDER "/offlinecameratest' ."},
        {"disk full (a link to /dev/full)", "ln -s /dev/full \"$f\""}};

std::string endOf(int status) {
    const char* const name = status > 128 ? sigabbrev_np(status - 128) : nullptr;
    return name ? std::string("SIG") + name : std::to_string(status);
}

// A run that goes on for much longer than its waits is slow beyond what a busy machine explains.
std::string waitsOf(const std::vector<runlog::Wait>& waits, Clock::duration duration) {
    const auto count = std::count_if(waits.begin(), waits.end(), [](const runlog::Wait& wait) {
        return wait.endUs && *wait.endUs - wait.startUs > 4'900'000;
    });
    const std::string text = count == 0 ? "none" : count == 1 ? "5 s" : "5 s + 5 s";
    return duration < seconds(count * 5 + 30) ? text : text + ", then slow";
}

std::string requestOf(const runlog::Facts& facts) {
    if (!facts.resultStatus) return "";
    const bool shutter = std::none_of(
            facts.waits.begin(), facts.waits.end(),
            [](const runlog::Wait& wait) { return wait.forShutter && wait.TimedOut(); });
    return std::string(shutter ? "yes" : "no") + ", " + std::to_string(*facts.resultStatus);
}

// Addresses differ from run to run.
std::string errorsOf(std::vector<LogLine> log) {
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

void run(const Mode& mode, Row* row) {
    DeviceRun device;
    const Clock::time_point start = Clock::now();
    const RunResult result =
            device.with({"--planes"})
                    .with(row->options)
                    .command({"sh", "-ec", row->shell + "exec vexofflinecameratest -t \"$0\"",
                              mode.name});
    const runlog::Facts facts = runlog::FindFacts(result.log);
    row->outcome.end = endOf(result.status);
    row->outcome.waits = waitsOf(facts.waits, Clock::now() - start);
    row->outcome.request = requestOf(facts);
    row->outcome.errors = errorsOf(result.log);
    row->outcome.closed = facts.sessionClosed;
    for (const auto& [name, size] : result.dumps) {
        if (name.rfind("OfflineAidl_", 0) == 0) {
            const std::string content = readFile(device.dumpPath(name));
            row->outcome.dumps[name] = {size, std::hash<std::string>()(content)};
        }
    }
}

template <size_t kCount>
void addFileFaults(const std::string& what, const std::string& folder, const std::string& file,
                   const FileFault (&faults)[kCount], std::vector<Row>* rows) {
    for (const FileFault& fault : faults) {
        rows->push_back({what + ": " + fault.name,
                         {},
                         "(cd /data/vendor/camera/" + folder + "; f='" + file + "'; " +
                                 fault.commands + "); "});
    }
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
    for (const std::string& source : mode.sources) {
        addFileFaults("source " + source, "offlinecameratest", source, kSourceFaults, &rows);
    }
    addFileFaults("metadata dump", "metadata", "original_dump.bin", kMetadataFaults, &rows);
    addFileFaults("dump", "offlinecameratest", mode.dump, kDumpFaults, &rows);
    rows.push_back({"dump: files may not grow beyond 1 MiB", {}, "trap '' XFSZ; ulimit -f 2048; "});
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

std::string dumpsOf(const Dumps& dumps, const Dumps* usual) {
    if (dumps.empty()) return "nothing";
    if (usual && dumps == *usual) return "as without the fault";
    std::string text;
    for (const auto& [name, content] : dumps) {
        text += (text.empty() ? "" : "<br>") +
                (usual && usual->count(name) ? "other content" : "`" + name + "`") + ", " +
                std::to_string(content.first) + " bytes";
    }
    return text;
}

void writeTable(const Mode& mode, const std::vector<Row>& rows, std::ostream& stream) {
    stream << "\n## " << mode.name << "\n\n"
           << "| fault | end | waits | shutter, result | dumped | closed | errors |\n"
           << "|---|---|---|---|---|---|---|\n";
    for (const Row& row : rows) {
        const Outcome& outcome = row.outcome;
        const Dumps* const usual = &row == &rows.front() ? nullptr : &rows.front().outcome.dumps;
        stream << "| " << row.fault << " | " << outcome.end << " | " << outcome.waits << " | "
               << outcome.request << " | " << dumpsOf(outcome.dumps, usual) << " | "
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
