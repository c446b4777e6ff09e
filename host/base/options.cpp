// Command lines read by a table of options.
#include "base/options.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace base {
namespace {

Failure Misuse(const std::string& text) {
    return Failure{text, true};
}

// Takes the option at words[*index]; moves the index over a value in the next word.
Result<Done> TakeOption(const std::vector<Option>& options, const std::vector<std::string>& words,
                        size_t* index, std::set<std::string>* given) {
    const std::string& word = words[*index];
    const size_t equals = word.find('=');
    const std::string name = word.substr(0, equals);
    const auto option = std::find_if(options.begin(), options.end(),
                                     [&](const Option& o) { return name == o.name; });
    if (option == options.end()) return Misuse("unknown option " + name);
    if (!given->insert(name).second && !option->repeats) return Misuse(name + " is given twice");
    std::string value;
    if (!option->value) {
        if (equals != std::string::npos) return Misuse("option " + name + " takes no value");
    } else {
        if (equals != std::string::npos) {
            value = word.substr(equals + 1);
        } else if (*index + 1 < words.size()) {
            value = words[++*index];
        }
        if (value.empty()) return Misuse("option " + name + " needs a value: " + option->value);
    }
    const Result<Done> taken = option->take(value);
    if (!taken.Ok()) return Misuse(name + ": \"" + value + "\" is not " + taken.Error());
    return Done{};
}

}  // namespace

Option Switch(const char* name, const char* help, bool* given) {
    return {name, nullptr, help, [given](const std::string&) -> Result<Done> {
                *given = true;
                return Done{};
            }};
}

Option Text(const char* name, const char* value, const char* help, std::string* text) {
    return {name, value, help, [text](const std::string& word) -> Result<Done> {
                *text = word;
                return Done{};
            }};
}

Option Texts(const char* name, const char* value, const char* help,
             std::vector<std::string>* texts) {
    const auto take = [texts](const std::string& word) -> Result<Done> {
        texts->push_back(word);
        return Done{};
    };
    return {name, value, help, take, true};
}

Option Number(const char* name, const char* value, const char* help, uint64_t minimum,
              uint64_t maximum, std::optional<uint64_t>* number) {
    return {name, value, help, [=](const std::string& word) -> Result<Done> {
                uint64_t read = 0;
                const char* const end = word.data() + word.size();
                const auto [stop, error] = std::from_chars(word.data(), end, read);
                if (error != std::errc() || stop != end || read < minimum || read > maximum) {
                    return Failure{"a number from " + std::to_string(minimum) + " to " +
                                   std::to_string(maximum)};
                }
                *number = read;
                return Done{};
            }};
}

Result<std::vector<std::string>> ReadOptions(const std::vector<Option>& options,
                                             const std::vector<std::string>& words, Order order) {
    std::vector<std::string> others;
    std::set<std::string> given;
    bool ended = false;
    for (size_t i = 0; i < words.size(); ++i) {
        const bool isOption = !ended && words[i].size() > 1 && words[i][0] == '-';
        if (isOption && words[i] == "--") {
            ended = true;
        } else if (isOption) {
            const Result<Done> taken = TakeOption(options, words, &i, &given);
            if (!taken.Ok()) return taken.GetFailure();
        } else {
            others.push_back(words[i]);
            ended = ended || order == Order::kBeforeWords;
        }
    }
    return others;
}

std::vector<std::string> WordsOf(int argc, char** argv) {
    return std::vector<std::string>(argv + std::min(argc, 1), argv + argc);
}

std::string OptionHelp(const std::vector<Option>& options) {
    const auto heading = [](const Option& option) {
        return std::string(option.name) + (option.value ? std::string(" ") + option.value : "");
    };
    size_t widest = 0;
    for (const Option& option : options) widest = std::max(widest, heading(option).size());
    std::string text;
    for (const Option& option : options) {
        std::string line = "  " + heading(option);
        line.resize(widest + 4, ' ');
        for (const char* c = option.help; *c != 0; ++c) {
            line += *c;
            if (*c == '\n') line += std::string(widest + 4, ' ');
        }
        text += line + "\n";
    }
    return text;
}

}  // namespace base
