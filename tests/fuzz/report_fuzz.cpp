// Logs and traces of a run: whatever they hold, the report stands and shows it as text.
#include <sys/mman.h>
#include <unistd.h>

#include "fuzz_input.h"
#include "host/tools/runreport/make_report.h"
#include "host/tools/runreport/report_json.h"
#include "host/tools/runreport/report_page.h"

namespace {

// A file in memory, by a path.
class TextFile {
  public:
    explicit TextFile(const std::string& text) : mFd(memfd_create("text", MFD_CLOEXEC)) {
        require(write(mFd, text.data(), text.size()) == static_cast<ssize_t>(text.size()));
    }
    ~TextFile() { close(mFd); }
    TextFile(const TextFile&) = delete;
    TextFile& operator=(const TextFile&) = delete;
    std::string path() const { return "/proc/self/fd/" + std::to_string(mFd); }

  private:
    const int mFd;
};

size_t countOf(const std::string& text, const std::string& word) {
    size_t count = 0;
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
        ++count;
    return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput input(data, size);
    runreport::Options options;
    options.run.status = input.take<uint8_t>();
    options.run.durationUs = input.take<uint32_t>();
    const size_t logSize = input.take<uint16_t>();
    const TextFile log(input.bytes(logSize));
    const TextFile trace(input.rest());
    options.logFile = options.deviceLogFile = log.path();
    options.traceFile = trace.path();
    options.dataFolder = "/proc/self/no such folder";  // whatever the log names, no picture is read

    const runreport::Report report = runreport::makeReport(options);
    int64_t end = 0;
    for (const runreport::Phase& phase : report.phases) {
        require(phase.startUs == end && phase.endUs >= phase.startUs);
        end = phase.endUs;
    }
    require(report.phases.empty() || end == options.run.durationUs);
    const std::string json = runreport::reportJson(report);
    static const size_t kScripts = countOf(runreport::reportPage(""), "</script>");
    require(countOf(runreport::reportPage(json), "</script>") == kScripts);
    return 0;
}
