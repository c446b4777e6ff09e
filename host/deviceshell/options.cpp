// The command line of deviceshell: reading it, and checking the paths it names.

#include "options.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace deviceshell {

const char* const kHelp =
        "usage: deviceshell [OPTIONS] [--] [COMMAND [ARGUMENTS]]\n"
        "Brings a stand-in device up, runs COMMAND in it and takes the device down. Without\n"
        "COMMAND it runs a shell: at a terminal for you, else for the commands on standard\n"
        "input. In a shell, 'service list', 'logcat -d' and 'trace -d' show the services, the\n"
        "platform log of everything and the binder calls.\n"
        "\n"
        "  --data DIR         folder that the command sees as /data/vendor/camera\n"
        "                     (without it: an empty one that is gone afterwards)\n"
        "  --no-service       leave the offline camera service out\n"
        "  --no-allocator     leave the graphics allocator out\n"
        "  --service PATH     run this program as the offline camera service\n"
        "  --fault NAME[=ARG] let the service or the allocator misbehave; may be repeated;\n"
        "                     'help' lists the names\n"
        "  --planes           vexofflinecameratest is the build that knows plane layouts\n"
        "  --log FILE         write the command's platform log to FILE\n"
        "  --device-log FILE  write the services' platform log and output to FILE\n"
        "                     (those of a shell's device go to its --log without it)\n"
        "  --trace FILE       write one line per binder transaction of the command to FILE\n"
        "  --run-record FILE  in a shell: write the command line, times and status of the last\n"
        "                     run of vexofflinecameratest to FILE\n"
        "  -v                 show the command's platform log on standard error, too\n"
        "  --die-with-parent  end when the calling process ends\n"
        "  --help             show this help\n"
        "\n"
        "Its status is the command's, 128 + n when signal n ended it; 127 or 126 when the\n"
        "command was not found or could not be executed; 125 when the device did not come\n"
        "up; 2 for a usage error, after which nothing was started.\n";

namespace {

struct Flag {
    const char* name;
    bool Options::*member;
};

constexpr Flag kFlags[] = {
        {"--no-service", &Options::withoutService},
        {"--no-allocator", &Options::withoutAllocator},
        {"--planes", &Options::planes},
        {"-v", &Options::verbose},
        {"--die-with-parent", &Options::dieWithParent},
        {"--help", &Options::help},
};

struct Value {
    const char* name;
    std::string Options::*member;  // null: appended to the faults
};

constexpr Value kValues[] = {
        {"--data", &Options::dataFolder},
        {"--service", &Options::serviceProgram},
        {"--log", &Options::logFile},
        {"--device-log", &Options::deviceLogFile},
        {"--trace", &Options::traceFile},
        {"--run-record", &Options::runRecordFile},
        {"--fault", nullptr},
};

bool setFlag(const std::string& word, Options* options) {
    const auto flag = std::find_if(std::begin(kFlags), std::end(kFlags),
                                   [&](const Flag& f) { return word == f.name; });
    if (flag == std::end(kFlags)) return false;
    options->*flag->member = true;
    return true;
}

// What follows from the options taken together.
bool checkCombination(const Options& options, std::string* error) {
    if (options.withoutService && !options.serviceProgram.empty()) {
        *error = "--no-service and --service exclude each other";
    }
    if (!options.runRecordFile.empty() && !options.command.empty()) {
        *error = "--run-record is for a shell and takes no COMMAND";
    }
    return error->empty();
}

}  // namespace

bool asksForFaultList(const Options& options) {
    return std::find(options.faults.begin(), options.faults.end(), "help") != options.faults.end();
}

std::optional<Options> parseOptions(const std::vector<std::string>& arguments, std::string* error) {
    Options options;
    error->clear();
    size_t next = 0;
    while (next < arguments.size()) {
        const std::string& argument = arguments[next];
        if (argument.size() < 2 || argument[0] != '-') break;
        ++next;
        if (argument == "--") break;
        if (setFlag(argument, &options)) continue;

        const size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const auto value = std::find_if(std::begin(kValues), std::end(kValues),
                                        [&](const Value& v) { return name == v.name; });
        if (value == std::end(kValues)) {
            *error = "unknown option " + argument + "; try 'deviceshell --help'";
            return std::nullopt;
        }
        std::string text;
        if (equals != std::string::npos) {
            text = argument.substr(equals + 1);
        } else if (next < arguments.size()) {
            text = arguments[next++];
        }
        if (text.empty()) {
            *error = "option " + name + " needs a value";
            return std::nullopt;
        }
        if (value->member) {
            options.*value->member = text;
        } else {
            options.faults.push_back(text);
        }
    }
    options.command.assign(arguments.begin() + static_cast<std::ptrdiff_t>(next), arguments.end());
    if (!checkCombination(options, error)) return std::nullopt;
    return options;
}

namespace {

bool makeAbsolute(std::string* path) {
    char* const absolute = realpath(path->c_str(), nullptr);
    if (!absolute) return false;
    *path = absolute;
    free(absolute);
    return true;
}

}  // namespace

bool resolvePaths(Options* options, std::string* error) {
    struct stat status = {};
    if (!options->dataFolder.empty()) {
        if (stat(options->dataFolder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) ||
            !makeAbsolute(&options->dataFolder)) {
            *error = "--data " + options->dataFolder + ": no such folder";
            return false;
        }
    }
    if (!options->serviceProgram.empty()) {
        if (stat(options->serviceProgram.c_str(), &status) != 0 || !S_ISREG(status.st_mode) ||
            access(options->serviceProgram.c_str(), X_OK) != 0 ||
            !makeAbsolute(&options->serviceProgram)) {
            *error = "--service " + options->serviceProgram + ": no such program";
            return false;
        }
    }
    return true;
}

}  // namespace deviceshell
