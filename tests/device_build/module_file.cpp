// Reads module files line by line, which their fixed format allows.

#include "tests/device_build/module_file.h"

#include <gmock/gmock.h>

#include <fstream>
#include <regex>

namespace device_build {

namespace {

Module ReadModule(const std::string& type, std::istream& file) {
    static const std::regex& property = *new std::regex("^ {4}(\\w+): .*");
    static const std::regex& text = *new std::regex("\"([^\"]*)\"");
    Module module{type, {}};
    std::vector<std::string>* values = nullptr;
    for (std::string line; std::getline(file, line) && line != "}";) {
        if (line.find_first_not_of(' ') == line.find("//")) {
            continue;
        }
        std::smatch match;
        if (std::regex_match(line, match, property)) {
            values = &module.properties[match[1]];
        }
        for (std::sregex_iterator found(line.begin(), line.end(), text), end; found != end;
             ++found) {
            values->push_back((*found)[1]);
        }
    }
    return module;
}

}  // namespace

std::map<std::string, Module> ReadModules(const std::string& path) {
    static const std::regex& begin = *new std::regex("^(\\w+) \\{$");
    std::map<std::string, Module> modules;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        std::smatch match;
        if (std::regex_match(line, match, begin)) {
            const Module module = ReadModule(match[1], file);
            modules[module.properties.at("name").front()] = module;
        }
    }
    EXPECT_FALSE(modules.empty()) << path;
    return modules;
}

}  // namespace device_build
