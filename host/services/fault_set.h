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

// Those that are switched on, out of all that a service knows.
class FaultSet {
  public:
    // `title`: the first line of the help; may be empty.
    FaultSet(std::string title, std::vector<FaultName> known, size_t most = SIZE_MAX)
        : m_title(std::move(title)), m_known(std::move(known)), m_most(most) {}

    // Switches "NAME" or "NAME=ARG" on; fails after `most` of them.
    base::Result<base::Done> Add(const std::string& text);

    bool Has(const char* name) const { return m_arguments.count(name) != 0; }
    // Of a fault that is switched on.
    int64_t Argument(const char* name) const { return m_arguments.at(name); }

    // One line for each fault there is.
    std::string Help() const;

  private:
    std::string m_title;
    std::vector<FaultName> m_known;
    size_t m_most;
    std::map<std::string, int64_t> m_arguments;
};

}  // namespace services
