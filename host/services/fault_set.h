// Faults that a service shows on demand, by name.
#pragma once

#include <base/result.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace services {

struct FaultName {
    const char* name;
    const char* text;                // what happens, one line
    const char* argument = nullptr;  // what "=ARG" means; null where none is taken
    int64_t defaultArgument = 0;     // in the unit of `argument`
    int64_t maxArgument = 0;
};

// All faults that a service knows, and those of them that are switched on.
class FaultSet {
  public:
    // `title`: the first line of the help; may be empty.
    FaultSet(std::string title, std::vector<FaultName> known, bool onlyOne = false)
        : m_title(std::move(title)), m_known(std::move(known)), m_onlyOne(onlyOne) {}

    // Switches "NAME" or "NAME=ARG" on: each name once, and no second one if only one may be.
    base::Result<base::Done> Add(const std::string& text);

    bool Has(const std::string& name) const { return m_arguments.count(name) != 0; }
    // Of a fault that is switched on.
    int64_t Argument(const std::string& name) const { return m_arguments.at(name); }

    // One line for each fault there is.
    std::string Help() const;

  private:
    std::string m_title;
    std::vector<FaultName> m_known;
    bool m_onlyOne;
    std::map<std::string, int64_t> m_arguments;
};

}  // namespace services
