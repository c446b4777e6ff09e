// What runs on the device: decided outside, carried out inside.

#include "device_plan.h"

#include <unistd.h>

#include <charconv>

#include "faults.h"
#include "shell.h"

namespace deviceshell {

namespace {

constexpr const char* kOfflineCameraName =
        "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default";
constexpr const char* kAllocatorName = "android.hardware.graphics.allocator.IAllocator/default";

constexpr const char* kServiceManager = "servicemanager";
constexpr const char* kAllocator = "graphicsallocator";
constexpr const char* kOfflineCamera = "offlinecameraservice";

bool findProgram(const std::string& folder, const char* name, std::string* path,
                 std::string* error) {
    *path = folder + "/" + name;
    if (access(path->c_str(), X_OK) == 0) return true;
    *error = *path + ": no such program; build it first";
    return false;
}

// Adds "--fault F" to the program that knows F.
bool addFault(const Options& options, const std::string& fault, const std::string& folder,
              DeviceProgram* allocator, DeviceProgram* service, std::string* error) {
    for (DeviceProgram* program : {allocator, service}) {
        const bool isAllocator = program == allocator;
        std::string path;
        if (!findProgram(folder, isAllocator ? kAllocator : kOfflineCamera, &path, error)) {
            return false;
        }
        const std::optional<FaultList> list = askForFaults(path);
        if (!list) {
            *error = path + ": does not tell its faults";
            return false;
        }
        if (!knowsFault(*list, fault)) continue;
        if (isAllocator ? options.withoutAllocator : options.withoutService) {
            *error = "--fault " + fault + ": its program is left out";
            return false;
        }
        if (!isAllocator && !options.serviceProgram.empty()) {
            *error = "--fault " + fault + ": a fault of the reference service, not of " +
                     options.serviceProgram;
            return false;
        }
        program->argv.push_back("--fault");
        program->argv.push_back(fault);
        const std::string refusal = refusalOfFaults(program->argv);
        if (!refusal.empty()) *error = "--fault " + fault + ": refused by " + refusal;
        return refusal.empty();
    }
    *error = "--fault " + fault + ": unknown; 'deviceshell --fault help' lists the names";
    return false;
}

}  // namespace

std::optional<DevicePlan> makePlan(const Options& options, const std::string& folder,
                                   ShellKind shell, std::string* error) {
    DevicePlan plan;
    plan.verbose = options.verbose;
    plan.shell = options.command.empty() ? shell : ShellKind::None;
    plan.command = options.command.empty() ? shellCommand() : options.command;
    std::string path;
    if (!findProgram(folder, kServiceManager, &path, error)) return std::nullopt;
    plan.programs.push_back({{path}, ""});
    if (options.planes && !findProgram(folder, "vexofflinecameratest-planes", &path, error)) {
        return std::nullopt;
    }

    DeviceProgram allocator;
    if (!options.withoutAllocator) {
        if (!findProgram(folder, kAllocator, &path, error)) return std::nullopt;
        allocator = {{path}, kAllocatorName};
    }
    DeviceProgram service;
    if (!options.serviceProgram.empty()) {
        service = {{options.serviceProgram}, kOfflineCameraName};
    } else if (!options.withoutService) {
        if (!findProgram(folder, kOfflineCamera, &path, error)) return std::nullopt;
        service = {{path}, kOfflineCameraName};
    }
    for (const std::string& fault : options.faults) {
        if (!addFault(options, fault, folder, &allocator, &service, error)) return std::nullopt;
    }
    if (!allocator.argv.empty()) plan.programs.push_back(allocator);
    if (!service.argv.empty()) plan.programs.push_back(service);
    return plan;
}

std::optional<std::string> listFaults(const std::string& folder, std::string* error) {
    std::string text;
    for (const char* name : {kOfflineCamera, kAllocator}) {
        std::string path;
        if (!findProgram(folder, name, &path, error)) return std::nullopt;
        const std::optional<FaultList> list = askForFaults(path);
        if (!list) {
            *error = path + ": does not tell its faults";
            return std::nullopt;
        }
        text += list->text;
    }
    return text;
}

std::vector<std::string> encodePlan(const DevicePlan& plan) {
    const DeviceDescriptors& numbers = plan.descriptors;
    std::vector<std::string> words = {kInsideWord};
    for (const int number :
         {numbers.status, numbers.control, numbers.log, numbers.deviceLog, numbers.trace,
          numbers.runRecord, plan.verbose ? 1 : 0, static_cast<int>(plan.shell),
          static_cast<int>(plan.programs.size())}) {
        words.push_back(std::to_string(number));
    }
    for (const DeviceProgram& program : plan.programs) {
        words.push_back(program.serviceName);
        words.push_back(std::to_string(program.argv.size()));
        words.insert(words.end(), program.argv.begin(), program.argv.end());
    }
    words.insert(words.end(), plan.command.begin(), plan.command.end());
    return words;
}

namespace {

// Takes words one by one; a missing word or a bad number makes it fail for good.
class WordReader {
  public:
    explicit WordReader(const std::vector<std::string>& words) : m_words(words) {}

    std::string word() {
        if (m_next >= m_words.size()) m_failed = true;
        return m_failed ? "" : m_words[m_next++];
    }

    int number() {
        const std::string text = word();
        int value = -1;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
        if (result.ec != std::errc() || result.ptr != text.data() + text.size()) m_failed = true;
        return value;
    }

    std::vector<std::string> words(int count) {
        std::vector<std::string> taken;
        while (!m_failed && static_cast<int>(taken.size()) < count) taken.push_back(word());
        return taken;
    }

    std::vector<std::string> rest() { return words(static_cast<int>(m_words.size() - m_next)); }
    bool failed() const { return m_failed; }

  private:
    const std::vector<std::string>& m_words;
    size_t m_next = 0;
    bool m_failed = false;
};

}  // namespace

std::optional<DevicePlan> decodePlan(const std::vector<std::string>& words) {
    WordReader reader(words);
    if (reader.word() != kInsideWord) return std::nullopt;
    DevicePlan plan;
    DeviceDescriptors& numbers = plan.descriptors;
    for (int* number : {&numbers.status, &numbers.control, &numbers.log, &numbers.deviceLog,
                        &numbers.trace, &numbers.runRecord}) {
        *number = reader.number();
    }
    plan.verbose = reader.number() != 0;
    const int shell = reader.number();
    if (shell < 0 || shell > static_cast<int>(ShellKind::Terminal)) return std::nullopt;
    plan.shell = static_cast<ShellKind>(shell);
    const int programs = reader.number();
    for (int i = 0; i < programs && !reader.failed(); ++i) {
        DeviceProgram program;
        program.serviceName = reader.word();
        program.argv = reader.words(reader.number());
        if (program.argv.empty()) return std::nullopt;
        plan.programs.push_back(program);
    }
    plan.command = reader.rest();
    if (reader.failed() || plan.programs.empty() || plan.command.empty()) return std::nullopt;
    return plan;
}

}  // namespace deviceshell
