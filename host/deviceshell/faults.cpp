// The faults that the reference service and the allocator can be told to show.

#include "faults.h"

#include <algorithm>

#include "process.h"

namespace deviceshell {

std::optional<FaultList> askForFaults(const std::string& program) {
    const std::optional<ProgramOutput> output = readProgram({program, "--fault", "help"});
    if (!output || output->status != 0) return std::nullopt;
    return FaultList{output->text, faultNames(output->text)};
}

std::vector<std::string> faultNames(const std::string& text) {
    std::vector<std::string> names;
    size_t begin = 0;
    while (begin < text.size()) {
        const size_t end = std::min(text.find('\n', begin), text.size());
        const std::string line = text.substr(begin, end - begin);
        begin = end + 1;
        const size_t word = line.find_first_not_of(" \t");
        if (word == std::string::npos || line[word] < 'a' || line[word] > 'z') continue;
        names.push_back(line.substr(word, line.find_first_of(" \t:=[", word) - word));
    }
    return names;
}

bool knowsFault(const FaultList& list, const std::string& fault) {
    const std::string name = fault.substr(0, fault.find('='));
    return std::find(list.names.begin(), list.names.end(), name) != list.names.end();
}

std::string refusalOfFaults(std::vector<std::string> argv) {
    // The request for the list ends the program, but only after the faults before it were read.
    argv.insert(argv.end(), {"--fault", "help"});
    const std::optional<ProgramOutput> output = readProgram(argv, ReadErrors::Too);
    if (output && output->status == 0) return "";
    const std::string said = output ? output->text.substr(0, output->text.find('\n')) : "";
    return said.empty() ? argv[0] + ": no reason told" : said;
}

}  // namespace deviceshell
