// Table-driven reading of command lines.

#include "option_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "picture.h"

namespace offlineframes {
namespace {

Failure misuse(const std::string& text) {
    return Failure{text, true};
}

// The whole of `text` as a plain decimal number.
template <class Number>
std::optional<Number> wholeNumber(const std::string& text) {
    Number number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end) return std::nullopt;
    return number;
}

Failure badValue(const std::string& option, const std::string& value, const std::string& wanted) {
    return misuse(option + ": \"" + value + "\" is not " + wanted);
}

const OptionSpec* findOption(const CommandSpec& command, const std::string& name) {
    for (const OptionSpec& option : command.options) {
        if (name == option.name) return &option;
    }
    return nullptr;
}

// Takes the option at words[*index] into `line`; moves the index over a value in the next word.
Result<Done> takeOption(const CommandSpec& command, const std::vector<std::string>& words,
                        size_t* index, CommandLine* line) {
    const std::string& word = words[*index];
    const size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const OptionSpec* const option = findOption(command, name);
    if (!option) return misuse("unknown option " + name);
    if (line->has(name)) return misuse(name + " is given twice");
    std::string value;
    if (!option->value) {
        if (equals != std::string::npos) return misuse(name + " takes no value");
    } else if (equals != std::string::npos) {
        value = word.substr(equals + 1);
    } else if (*index + 1 < words.size()) {
        value = words[++*index];
    } else {
        return misuse(name + " needs a value: " + option->value);
    }
    line->options[name] = value;
    return Done{};
}

}  // namespace

Result<std::optional<uint64_t>> CommandLine::number(const std::string& option, uint64_t minimum,
                                                    uint64_t maximum) const {
    const auto found = options.find(option);
    if (found == options.end()) return std::optional<uint64_t>();
    const std::optional<uint64_t> number = wholeNumber<uint64_t>(found->second);
    if (!number || *number < minimum || *number > maximum) {
        return badValue(
                option, found->second,
                "a number from " + std::to_string(minimum) + " to " + std::to_string(maximum));
    }
    return number;
}

Result<std::optional<double>> CommandLine::positiveReal(const std::string& option,
                                                        double maximum) const {
    const auto found = options.find(option);
    if (found == options.end()) return std::optional<double>();
    char* stop = nullptr;
    const double number = strtod(found->second.c_str(), &stop);
    if (found->second.empty() || *stop != 0 || !(number > 0) || number > maximum) {
        return badValue(option, found->second,
                        "a number above 0, up to " + std::to_string(static_cast<int>(maximum)));
    }
    return std::optional<double>(number);
}

Result<std::optional<PictureSize>> CommandLine::size(const std::string& option) const {
    const auto found = options.find(option);
    if (found == options.end()) return std::optional<PictureSize>();
    const std::string& text = found->second;
    const size_t cross = text.find('x');
    if (cross != std::string::npos) {
        const auto width = wholeNumber<uint32_t>(text.substr(0, cross));
        const auto height = wholeNumber<uint32_t>(text.substr(cross + 1));
        if (width && height && isUsableSize(*width, *height)) {
            return std::optional<PictureSize>({*width, *height});
        }
    }
    return badValue(option, text,
                    "a size like 4096x3072, of at most " + std::to_string(kMaxPixels) +
                            " pixels and " + std::to_string(kMaxSide) + " a side");
}

Result<std::optional<FrameFormat>> CommandLine::format(const std::string& option) const {
    const auto found = options.find(option);
    if (found == options.end()) return std::optional<FrameFormat>();
    const std::optional<FrameFormat> format = formatFromName(found->second);
    if (!format) return badValue(option, found->second, "raw10 or nv12");
    return format;
}

Result<CommandLine> readCommandLine(const CommandSpec& command,
                                    const std::vector<std::string>& words) {
    CommandLine line;
    bool optionsEnded = false;
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (!optionsEnded && word == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && word.size() > 1 && word[0] == '-') {
            const Result<Done> taken = takeOption(command, words, &i, &line);
            if (!taken.ok()) return taken.failure();
        } else if (line.arguments.size() == command.arguments.size()) {
            return misuse("unexpected word \"" + word + "\"");
        } else {
            line.arguments.push_back(word);
        }
    }
    if (line.arguments.size() < command.arguments.size()) {
        return misuse(std::string("missing ") + command.arguments[line.arguments.size()]);
    }
    return line;
}

std::string helpText(const CommandSpec& command) {
    std::string text = std::string("usage: offlineframes ") + command.name;
    if (!command.options.empty()) text += " [OPTION...]";
    for (const char* argument : command.arguments) text += std::string(" ") + argument;
    text += std::string("\n\n") + command.purpose + "\n";
    size_t widest = 0;
    const auto heading = [](const OptionSpec& option) {
        return std::string(option.name) + (option.value ? std::string(" ") + option.value : "");
    };
    for (const OptionSpec& option : command.options) {
        widest = std::max(widest, heading(option).size());
    }
    if (!command.options.empty()) text += "\n";
    for (const OptionSpec& option : command.options) {
        const std::string head = heading(option);
        text += "  " + head + std::string(widest - head.size() + 2, ' ') + option.help + "\n";
    }
    return text;
}

}  // namespace offlineframes
