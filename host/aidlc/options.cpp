// The command line.
#include "options.h"

#include <cerrno>
#include <cstdlib>
#include <limits>

namespace aidlc {
namespace {

bool ParseVersion(const std::string& text, int32_t* version, std::string* error) {
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (errno != 0 || text.empty() || *end != '\0' || value < 1 ||
        value > std::numeric_limits<int32_t>::max()) {
        *error = "--version '" + text + "' is not a positive number";
        return false;
    }
    *version = static_cast<int32_t>(value);
    return true;
}

bool CheckHash(const std::string& hash, std::string* error) {
    if (hash.empty() ||
        hash.find_first_not_of("0123456789abcdefghijklmnopqrstuvwxyz") != std::string::npos) {
        *error = "--hash '" + hash + "' is not made of lower-case letters and digits";
        return false;
    }
    return true;
}

bool TakeOption(const std::string& name, const std::string& value, Options* options,
                std::string* error) {
    if (name == "-I") {
        options->roots.push_back(value);
    } else if (name == "--out") {
        options->outputFolder = value;
    } else if (name == "--version") {
        return ParseVersion(value, &options->version, error);
    } else if (name == "--hash") {
        options->hash = value;
        return CheckHash(value, error);
    }
    return true;
}

bool IsKnown(const std::string& name) {
    return name == "-I" || name == "--out" || name == "--version" || name == "--hash";
}

}  // namespace

const char* const kUsage =
        "usage: aidlc --out DIR [-I ROOT]... [--version N --hash H] FILE.aidl...\n"
        "  --out DIR     folder for the generated files: DIR/include and DIR/src\n"
        "  -I ROOT       folder in which the folders of a package start; may be repeated\n"
        "  --version N   version of the interfaces, from 1 up\n"
        "  --hash H      hash of that version; needed with --version\n";

bool ParseOptions(const std::vector<std::string>& words, Options* options, std::string* error) {
    for (size_t i = 0; i < words.size(); i++) {
        const std::string& word = words[i];
        if (word == "--help") {
            options->help = true;
            return true;
        }
        if (word.empty() || word[0] != '-') {
            options->files.push_back(word);
            continue;
        }
        if (!IsKnown(word)) {
            *error = "unknown option '" + word + "'";
            return false;
        }
        if (i + 1 == words.size()) {
            *error = "option '" + word + "' needs a value";
            return false;
        }
        if (!TakeOption(word, words[++i], options, error)) {
            return false;
        }
    }
    if (options->outputFolder.empty()) {
        *error = "--out is missing: name a folder for the generated files";
    } else if (options->files.empty()) {
        *error = "no .aidl file is named";
    } else if ((options->version == 0) != options->hash.empty()) {
        *error = "--version and --hash belong together: give both or none";
    }
    return error->empty();
}

}  // namespace aidlc
