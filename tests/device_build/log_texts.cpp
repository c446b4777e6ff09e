// Finds the calls that print, and what they print, by the form that all of them have.

#include "tests/device_build/log_texts.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

namespace device_build {

namespace {

// The name in the last line before `end` that begins a function: one at the margin.
std::string FunctionAround(const std::string& source, size_t end) {
    static const std::regex& head = *new std::regex("(?:^|\n)[a-z:][^\n;]*?(\\w+)\\([^\n]*");
    std::string name;
    const std::string before = source.substr(0, end);
    for (std::sregex_iterator found(before.begin(), before.end(), head), last; found != last;
         ++found) {
        name = (*found)[1];
    }
    return name;
}

// "a" "b" as one text, without its quotes.
std::string Joined(const std::string& literals) {
    return std::regex_replace(literals.substr(1, literals.size() - 2), std::regex("\"\\s*\""), "");
}

void ReadSource(const std::filesystem::path& path, std::vector<LogText>* texts) {
    static const std::regex& call = *new std::regex(
            "(?:(?:CLIENT|DRIVER)_LOG([DIWE])|PrintLine)\\(\\s*"
            "((?:\"[^\"\n]*\"\\s*)+)(?:,\\s*(\"[^\"\n]*\"|__func__))?");
    std::ifstream file(path);
    const std::string source(std::istreambuf_iterator<char>(file), {});
    for (std::sregex_iterator found(source.begin(), source.end(), call), last; found != last;
         ++found) {
        const std::smatch& match = *found;
        std::string format = Joined(std::regex_replace(match[2].str(), std::regex("\\s+$"), ""));
        if (match[3].matched && format.rfind("%s", 0) == 0) {
            const std::string named =
                    match[3] == "__func__"
                            ? FunctionAround(source, static_cast<size_t>(match.position()))
                            : Joined(match[3]);
            format.replace(0, 2, named);
        }
        texts->push_back({match[1].matched ? match[1].str()[0] : 'P', WithoutConversions(format),
                          path.filename()});
    }
}

}  // namespace

std::string WithoutConversions(const std::string& format) {
    return std::regex_replace(format, std::regex("%[-+0 #.\\d]*(?:hh|h|ll|l|z)?[a-zA-Z]"), "…");
}

std::vector<LogText> ReadLogTexts(const std::string& project) {
    std::vector<LogText> texts;
    for (const char* folder : {"client", "driver", "gralloc"}) {
        for (const auto& entry :
             std::filesystem::directory_iterator(std::filesystem::path(project) / folder)) {
            if (entry.path().extension() == ".cpp") {
                ReadSource(entry.path(), &texts);
            }
        }
    }
    return texts;
}

}  // namespace device_build
