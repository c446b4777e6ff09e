// Waiting until the device's programs answer.
#pragma once

#include <string>
#include <vector>

namespace deviceshell {

// How long a program may take to answer, in seconds. Generous: an instrumented build on a busy
// machine needs some.
constexpr int kStartSeconds = 30;

// Wait until the service manager accepts connections in the folder of the sockets, and until it
// knows every one of the names. False after kStartSeconds, with a complaint that names what is
// missing. They open binder connections and threads: call them in a process made for it.
bool waitForServiceManager(const std::string& socketFolder);
bool waitForServices(const std::vector<std::string>& names);

}  // namespace deviceshell
