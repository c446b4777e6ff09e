// Reads and lists the names of faults.
#include "fault_set.h"

#include <algorithm>
#include <charconv>

namespace services {

base::Result<base::Done> FaultSet::Add(const std::string& text) {
    const size_t equals = text.find('=');
    const std::string name = text.substr(0, equals);
    const auto fault = std::find_if(m_known.begin(), m_known.end(),
                                    [&](const FaultName& f) { return name == f.name; });
    if (fault == m_known.end()) {
        return base::Failure{"unknown fault '" + name + "': 'help' lists them"};
    }
    if (m_onlyOne && !m_arguments.empty()) return base::Failure{"only one --fault at a time"};
    int64_t argument = fault->defaultArgument;
    if (equals != std::string::npos) {
        if (fault->argument == nullptr) {
            return base::Failure{"fault '" + name + "' takes no argument"};
        }
        const std::string number = text.substr(equals + 1);
        const char* const end = number.data() + number.size();
        const auto [stop, error] = std::from_chars(number.data(), end, argument);
        if (error != std::errc() || stop != end || argument < 1 || argument > fault->maxArgument) {
            return base::Failure{"fault '" + name + "': '" + number + "' is no number of " +
                                 fault->argument + " from 1 to " +
                                 std::to_string(fault->maxArgument)};
        }
    }
    if (!m_arguments.emplace(name, argument).second) {
        return base::Failure{"fault '" + name + "' is given twice"};
    }
    return base::Done{};
}

std::string FaultSet::Help() const {
    std::string help = m_title;
    for (const FaultName& fault : m_known) {
        std::string name = fault.name;
        if (fault.argument != nullptr) name += std::string("[=") + fault.argument + "]";
        name.resize(std::max<size_t>(name.size() + 2, 28), ' ');
        help += name + fault.text + "\n";
    }
    return help;
}

}  // namespace services
