// Options as "--name=value"; what follows "--" is the command of the run.

#include "options.h"

#include <charconv>
#include <cmath>

namespace runreport {

using offlineframes::Failure;
using offlineframes::Result;

const char* const kHelp =
        "usage: runreport --html=FILE --json=FILE [OPTIONS] -- COMMAND [ARGUMENTS]\n"
        "Writes what is known about a run as a page and for programs.\n"
        "\n"
        "  --html=FILE          the page: one file that needs no other and no network\n"
        "  --json=FILE          the same facts\n"
        "  --started=SECONDS    when the run started, since the epoch, with fraction\n"
        "  --ended=SECONDS      when it ended\n"
        "  --status=N           its status\n"
        "  --option=WORD        an option that the device was given; may be repeated\n"
        "  --log=FILE           the tool's platform log\n"
        "  --device-log=FILE    the services' log\n"
        "  --trace=FILE         the binder trace\n"
        "  --data=DIR           what the tool saw as /data/vendor/camera\n"
        "  --dump=FILE          a file that the run wrote; may be repeated\n"
        "  --explanations=FILE  causes and cures of error lines: docs/device.md and\n"
        "                       docs/stand_in.md; may be repeated\n"
        "  --help               show this help\n"
        "\n"
        "Status 0 when the report was written, 1 when not, 2 for a usage error. Inputs that are\n"
        "absent or damaged are named in the report.\n";

namespace {

constexpr double kMicros = 1e6;
constexpr double kLatest = 1e11;  // seconds; some thousand years

struct Text {
    const char* name;
    std::string Options::*member;
};
constexpr Text kTexts[] = {
        {"--html", &Options::htmlFile},   {"--json", &Options::jsonFile},
        {"--log", &Options::logFile},     {"--device-log", &Options::deviceLogFile},
        {"--trace", &Options::traceFile}, {"--data", &Options::dataFolder},
};

// Seconds with a fraction, whichever sign of the locale stands before it, as microseconds.
bool readSeconds(std::string text, int64_t* micros) {
    for (char& letter : text) {
        if (letter == ',') letter = '.';
    }
    char* end = nullptr;
    const double seconds = strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0' || !(seconds >= 0 && seconds < kLatest)) return false;
    *micros = std::llround(seconds * kMicros);
    return true;
}

bool readStatus(const std::string& text, int* status) {
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, *status);
    return error == std::errc() && stop == end && *status >= 0;
}

struct Times {
    int64_t started = 0;
    int64_t ended = 0;
};

// False when the name is unknown or the value none of its kind.
bool take(const std::string& name, const std::string& value, Options* options, Times* times) {
    for (const Text& text : kTexts) {
        if (name == text.name) {
            options->*text.member = value;
            return true;
        }
    }
    if (name == "--started") return readSeconds(value, &times->started);
    if (name == "--ended") return readSeconds(value, &times->ended);
    if (name == "--status") return readStatus(value, &options->run.status);
    if (name == "--option") {
        options->run.options.push_back(value);
    } else if (name == "--explanations") {
        options->explanationsFiles.push_back(value);
    } else if (name == "--dump") {
        options->dumps.push_back(value);
    } else {
        return false;
    }
    return true;
}

}  // namespace

Result<Options> readOptions(const std::vector<std::string>& words) {
    Options options;
    Times times;
    size_t next = 0;
    for (; next < words.size() && words[next] != "--"; ++next) {
        const std::string& word = words[next];
        if (word == "--help") {
            options.help = true;
            return options;
        }
        const size_t equals = word.find('=');
        if (equals == std::string::npos ||
            !take(word.substr(0, equals), word.substr(equals + 1), &options, &times)) {
            return Failure{"cannot use " + word + "; try 'runreport --help'", true};
        }
    }
    for (++next; next < words.size(); ++next) options.run.command.push_back(words[next]);
    if (options.htmlFile.empty() && options.jsonFile.empty()) {
        return Failure{"neither --html nor --json is given; try 'runreport --help'", true};
    }
    options.run.startedUs = times.started;
    options.run.durationUs = std::max<int64_t>(times.ended - times.started, 0);
    return options;
}

}  // namespace runreport
