// What the processes of a stand-in device hold, as seen from inside it.

#include "tests/end_to_end/device_state.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>

#include "tests/end_to_end/device_run.h"
#include "tests/support/eventually.h"

namespace end_to_end {

namespace {

namespace fs = std::filesystem;

// "socket:[123]" is a socket; other names stay.
std::map<std::string, int> descriptorsOf(const fs::path& process) {
    std::map<std::string, int> counts;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(process / "fd", error)) {
        const std::string target = fs::read_symlink(entry.path(), error);
        if (!error) ++counts[target.substr(0, target.find(":["))];
    }
    return counts;
}

// Each service listens and is connected to the service manager, which listens, too.
bool hasOnlyIdleSockets(const DeviceState& state) {
    size_t services = 0, servicesAtRest = 0, managersSockets = 0;
    for (const auto& [name, descriptors] : state) {
        const auto sockets = descriptors.find("socket");
        const size_t count =
                sockets == descriptors.end() ? 0 : static_cast<size_t>(sockets->second);
        if (name.rfind("servicemanager ", 0) == 0) managersSockets = count;
        if (name.rfind("graphicsallocat ", 0) != 0 && name.rfind("offlinecamerase ", 0) != 0)
            continue;
        ++services;
        servicesAtRest += count == 2;
    }
    return services == 2 && servicesAtRest == services && managersSockets == 1 + services;
}

// A session whose client died may be at work for a moment longer.
bool hasNoBuffers(const DeviceState& state) {
    return std::all_of(state.begin(), state.end(), [](const auto& process) {
        return process.second.count("/memfd:graphics_buffer (deleted)") == 0;
    });
}

int linesWith(const std::string& text, const char* pattern) {
    const std::regex wanted(pattern);
    return static_cast<int>(std::distance(std::sregex_iterator(text.begin(), text.end(), wanted),
                                          std::sregex_iterator()));
}

bool everySessionHasEnded() {
    const std::string log = readFile("/data/vendor/camera/device.log");
    return linesWith(log, "session \\S+: opened\n") <=
           linesWith(log, "session \\S+: (closed|released|client died)\n");
}

DeviceState deviceState() {
    DeviceState state;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        const std::string id = entry.path().filename();
        if (id.find_first_not_of("0123456789") != std::string::npos) continue;
        std::ifstream file(entry.path() / "comm");
        std::string name;
        std::getline(file, name);
        if (id != std::to_string(getpid())) state[name + " " + id] = descriptorsOf(entry.path());
    }
    return state;
}

}  // namespace

DeviceState idleDeviceState() {
    DeviceState state;
    EXPECT_TRUE(eventually([&] {
        // Twice the same: a service manager that tidies has its folder open for a moment.
        const DeviceState earlier = std::exchange(state, deviceState());
        return state == earlier && hasOnlyIdleSockets(state) && hasNoBuffers(state) &&
               everySessionHasEnded();
    })) << "connections, sessions or buffers are left: "
        << ::testing::PrintToString(state);
    return state;
}

}  // namespace end_to_end
