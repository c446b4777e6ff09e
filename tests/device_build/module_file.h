// A module file of the device build, as the platform's formatter leaves it.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace device_build {

struct Module {
    std::string type;
    // The texts below each property of the module, also those inside maps and lists of it.
    std::map<std::string, std::vector<std::string>> properties;
};

// The modules of the file, by name. Fails the running test when there is none.
std::map<std::string, Module> ReadModules(const std::string& path);

}  // namespace device_build
