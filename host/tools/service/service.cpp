// Tells which services are registered on the device, as the device's command of this name does.

#include <host_service_manager.h>
#include <stdio.h>

#include <string>
#include <vector>

namespace {

constexpr char kHelp[] =
        "usage: service list\n"
        "       service check NAME\n"
        "list numbers the registered services, each with its interface; check tells whether a\n"
        "service is registered. Status 0 where the service manager answered, 1 where it did not,\n"
        "2 for other words.\n";

int Fail(const std::string& sentence, int status) {
    fprintf(stderr, "service: %s\n", sentence.c_str());
    return status;
}

void Append(const char* name, void* names) {
    static_cast<std::vector<std::string>*>(names)->emplace_back(name);
}

void Assign(const char* descriptor, void* interface) {
    *static_cast<std::string*>(interface) = descriptor;
}

int List(const std::vector<std::string>& names) {
    printf("Found %zu services:\n", names.size());
    for (size_t i = 0; i < names.size(); ++i) {
        std::string interface;  // stays empty for one that ended meanwhile
        AServiceManager_readInterface(names[i].c_str(), &interface, Assign);
        printf("%zu\t%s: [%s]\n", i, names[i].c_str(), interface.c_str());
    }
    return 0;
}

int Check(const std::vector<std::string>& names, const std::string& wanted) {
    bool found = false;
    for (const std::string& name : names) found = found || name == wanted;
    printf("Service %s: %s\n", wanted.c_str(), found ? "found" : "not found");
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + (argc > 0 ? 1 : 0), argv + argc);
    if (words == std::vector<std::string>{"--help"}) return fputs(kHelp, stdout) < 0;
    const std::string action = words.empty() ? "" : words[0];
    if (action != "list" && action != "check") {
        return Fail(action.empty() ? "no action given; try 'service --help'"
                                   : "unknown action " + action + "; try 'service --help'",
                    2);
    }
    if (action == "list" && words.size() != 1) return Fail("list takes no further words", 2);
    if (action == "check" && words.size() != 2) return Fail("check takes one name", 2);
    std::vector<std::string> names;
    if (AServiceManager_forEachService(&names, Append) != STATUS_OK) {
        return Fail("the service manager does not answer; is this the stand-in device's shell?", 1);
    }
    return action == "list" ? List(names) : Check(names, words[1]);
}
