// Finds calls that complain, and puts together what they say from the literals in them.

#include "tests/device_build/stand_in_texts.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>

namespace device_build {

namespace {

namespace fs = std::filesystem;

constexpr char kValue[] = "…";

struct Speaker {
    const char* folder;
    const char* call;  // a regular expression up to where the arguments begin
    int argument;      // the one with the text, from 0 on
    const char* before;
    const char* after;
};

constexpr Speaker kSpeakers[] = {
        {"host/deviceshell", "\\b(?:complain|refuse)\\(", 0, "deviceshell: ", ""},
        {"host/deviceshell", "\\*error = ", 0, "deviceshell: ", ""},
        {"host", "\\bBINDER_LOG[EW]\\(", 0, "", ""},
        {"host", "__android_log_(?:print|write)\\(\\s*ANDROID_LOG_(?:ERROR|WARN),", 1, "", ""},
        {"host/graphics", "\\bReport\\(", 0, "", ": …"},
        {"host/libcamera_metadata", "\\bInvalid\\(", 0, "", ""},
        {"host/services", "\\bLogProblem\\(", 0, "", ""},
        {"host/services", "\\bRefuse\\(", 0, "", " refused: …"},
        {"host/services", "\\bAtCall\\(", 0, "", " refused: …"},
        {"host/services", "\\bfprintf\\(stderr,", 0, "", ""},
};

std::string Replaced(const std::string& text, const char* pattern, const std::string& by) {
    return std::regex_replace(text, std::regex(pattern), by);
}

size_t EndOfLiteral(const std::string& source, size_t begin) {
    size_t end = begin + 1;
    while (source[end] != '"') end += source[end] == '\\' ? 2 : 1;
    return end;
}

// The expression in the place `argument` of a list that begins at `at`.
std::string ArgumentAt(const std::string& source, size_t at, int argument) {
    std::string expression;
    int depth = 0;
    for (; argument >= 0 && depth >= 0 && source[at] != ';'; ++at) {
        const char c = source[at];
        if (c == '"') {
            const size_t end = EndOfLiteral(source, at);
            expression += source.substr(at, end - at);
            at = end;
        }
        depth += c == '(' || c == '{' ? 1 : c == ')' || c == '}' ? -1 : 0;
        if (c == ',' && depth == 0 && argument-- > 0) {
            expression.clear();
        } else {
            expression += source[at];
        }
    }
    return expression;
}

// The literals of an expression, with "…" for whatever stands between them.
std::string TextOf(std::string expression) {
    expression = Replaced(expression, "std::string\\(", "");
    std::string text;
    bool value = false;
    for (size_t at = 0; at < expression.size(); ++at) {
        if (expression[at] == '"') {
            const size_t end = EndOfLiteral(expression, at);
            text += (value ? kValue : "") + expression.substr(at + 1, end - at - 1);
            value = false;
            at = end;
        } else if (std::string(" \n+(),").find(expression[at]) == std::string::npos) {
            value = true;
        }
    }
    return text + (value ? kValue : "");
}

std::string Tidied(const std::string& text) {
    const std::string line = Replaced(WithoutConversions(text), "\\\\n$", "");
    return Replaced(Replaced(line, "\\\\\"", "\""), "(…)+", kValue);
}

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// `constexpr char kName[] = "text"` in the same source: the name as text.
std::string WithConstants(const std::string& expression, const std::string& source) {
    static const std::regex& constant = *new std::regex("char (k\\w+)\\[\\] = (\"[^\"]*\")");
    for (std::sregex_iterator found(source.begin(), source.end(), constant), last; found != last;
         ++found) {
        if (expression.find((*found)[1]) == 0) return (*found)[2];
    }
    return expression;
}

void ReadSource(const fs::path& path, const Speaker& speaker, std::vector<LogText>* texts) {
    const std::string source = ReadFile(path);
    const std::regex call(speaker.call);
    for (std::sregex_iterator found(source.begin(), source.end(), call), last; found != last;
         ++found) {
        const auto begin = static_cast<size_t>(found->position() + found->length());
        const std::string text =
                Tidied(TextOf(WithConstants(ArgumentAt(source, begin, speaker.argument), source)));
        // Declarations, and what is told in the name of another place.
        if (text == kValue || text.empty() || text == "…: …" || text == "… refused: …") continue;
        texts->push_back({'E', speaker.before + text + speaker.after, path.filename()});
    }
}

void ReadScript(const fs::path& path, std::vector<LogText>* texts) {
    static const std::regex& call = *new std::regex(
            "(?:refuse|complain)((?:\\s+(?:\\\\\n\\s*)?\"(?:[^\"\\\\]|\\\\.)*\")+)");
    const std::string script = ReadFile(path);
    for (std::sregex_iterator found(script.begin(), script.end(), call), last; found != last;
         ++found) {
        std::string text = Replaced((*found)[1], "\"\\s+\\\\?\\s*\"", " ");
        text = Replaced(text, "^\\s*\"|\"$", "");
        text = Replaced(text, "\\$(?:\\(.*|\\{[^}]*\\}|\\w+|[*@])", kValue);
        if (text != kValue) texts->push_back({'E', "run: " + text, path.filename()});
    }
}

}  // namespace

std::vector<LogText> ReadStandInTexts(const std::string& project) {
    std::vector<LogText> texts;
    for (const char* script : {"run", "scripts/common.sh", "scripts/report.sh",
                               "scripts/sources.sh", "scripts/waits.sh"}) {
        ReadScript(fs::path(project) / script, &texts);
    }
    for (const Speaker& speaker : kSpeakers) {
        for (const auto& entry :
             fs::recursive_directory_iterator(fs::path(project) / speaker.folder)) {
            if (entry.path().extension() == ".cpp") ReadSource(entry.path(), speaker, &texts);
        }
    }
    return texts;
}

}  // namespace device_build
