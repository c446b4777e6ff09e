// Brings the stand-in device up, runs one command in it, takes it down.

#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <filesystem>

#include "device_plan.h"
#include "inside.h"
#include "options.h"
#include "outside.h"
#include "process.h"
#include "shell.h"

namespace {

constexpr int kUsage = 2;

// Descriptors 0 to 2 exist from here on, so that no file of ours becomes the command's input.
void fillStandardDescriptors() {
    int number = 0;
    do {
        number = open("/dev/null", O_RDWR | O_CLOEXEC);
        if (number >= 0 && number <= STDERR_FILENO) fcntl(number, F_SETFD, 0);
    } while (number >= 0 && number <= STDERR_FILENO);
    close(number);
}

int refuse(const std::string& sentence) {
    deviceshell::complain(sentence);
    return kUsage;
}

int run(const std::vector<std::string>& arguments, const std::string& self) {
    std::string error;
    std::optional<deviceshell::Options> options = deviceshell::parseOptions(arguments, &error);
    if (!options) return refuse(error);
    if (options->dieWithParent && prctl(PR_SET_PDEATHSIG, SIGTERM) != 0) {
        return refuse("--die-with-parent: not possible here");
    }
    if (options->help) {
        fputs(deviceshell::kHelp, stdout);
        return 0;
    }
    const std::string binaryFolder = self.substr(0, self.rfind('/'));
    if (deviceshell::asksForFaultList(*options)) {
        const std::optional<std::string> list = deviceshell::listFaults(binaryFolder, &error);
        if (!list) return refuse(error);
        fputs(list->c_str(), stdout);
        return 0;
    }
    if (!deviceshell::resolvePaths(&*options, &error)) return refuse(error);
    const std::optional<deviceshell::DevicePlan> plan =
            deviceshell::makePlan(*options, binaryFolder, deviceshell::shellKindHere(), &error);
    if (!plan) return refuse(error);
    if (plan->shell == deviceshell::ShellKind::Terminal && !deviceshell::mayUseTerminal()) {
        return refuse("a shell in the background cannot use the terminal; give a COMMAND");
    }
    return deviceshell::runOutside(*options, *plan, self);
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    if (!arguments.empty() && arguments[0] == deviceshell::kInsideWord) {
        const std::optional<deviceshell::DevicePlan> plan = deviceshell::decodePlan(arguments);
        if (!plan || getpid() != 1) return refuse("--inside: only for deviceshell itself");
        return deviceshell::runInside(*plan);
    }
    fillStandardDescriptors();
    signal(SIGCHLD, SIG_DFL);  // else the ends of children would be lost
    std::error_code error;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return refuse("/proc/self/exe: " + error.message());
    return run(arguments, self.string());
}
