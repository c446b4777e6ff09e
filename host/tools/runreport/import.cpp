// Finds what a folder from elsewhere has of a run: its log is the file with most lines of the tool.

#include <algorithm>
#include <filesystem>

#include "report.h"

namespace runreport {

namespace {

namespace fs = std::filesystem;
using base::Failure;
using base::Result;

constexpr size_t kMaxFiles = 2'000;
constexpr int kMaxDepth = 4;

// Sorted by path; links are not followed.
Result<std::vector<std::string>> FilesIn(const std::string& folder) {
    std::vector<std::string> files;
    std::error_code error;
    fs::recursive_directory_iterator at(folder, fs::directory_options::skip_permission_denied,
                                        error);
    for (; !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
        if (at.depth() == kMaxDepth) at.disable_recursion_pending();
        std::error_code none;
        if (at->symlink_status(none).type() != fs::file_type::regular) continue;
        files.push_back(at->path().string());
        if (files.size() > kMaxFiles) {
            return Failure{folder + ": more than " + std::to_string(kMaxFiles) +
                           " files; put the log and the dumps into a folder of their own"};
        }
    }
    if (error) return Failure{folder + ": " + error.message()};
    std::sort(files.begin(), files.end());
    return files;
}

bool IsFrame(const fs::path& path) {
    const std::string extension = path.extension().string();
    return extension == ".yuv" || extension == ".raw" || extension == ".jpg" ||
           extension == ".png" || extension == ".bin";
}

}  // namespace

Result<Inputs> ImportFolder(const std::string& folder, Inputs inputs) {
    const auto files = FilesIn(folder);
    if (!files.Ok()) return files.GetFailure();
    const std::optional<int> pid = inputs.pid;
    inputs.run.place = Place::kImported;
    inputs.run.startedUs = 0;
    inputs.run.durationUs = 0;
    inputs.run.status.reset();
    inputs.dataFolder = folder;
    uint64_t most = 0;
    for (const std::string& file : files.Value()) {
        const std::string name = fs::path(file).filename().string();
        if (name.rfind("OfflineAidl_", 0) == 0) inputs.dumps.push_back(file);
        if (IsFrame(file)) continue;
        const auto run = runlog::FindRun(file, pid);
        if (!run.Ok() || !run.Value() || run.Value()->lines <= most) continue;
        most = run.Value()->lines;
        inputs.log = file;
        inputs.pid = run.Value()->pid;
    }
    if (most > 0) return inputs;
    return Failure{folder + ": no log of the tool" +
                   (pid ? "'s process " + std::to_string(*pid) : "") +
                   " in it; logcat writes one with -v threadtime, time or brief, in UTF-8"};
}

}  // namespace runreport
