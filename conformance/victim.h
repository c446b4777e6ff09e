// Clients that are killed, and what the service holds.
#pragma once

#include <sys/types.h>

#include <string>

namespace conformance {

// What a client may be in when it dies.
inline constexpr const char* kVictimStates[] = {"registered", "opened",   "configured",
                                                "in-flight",  "callback", "lending"};

// Starts this program as a client, and kills it in the state. Returns what went wrong.
std::string KillClient(const std::string& state);

// The life of such a client.
[[noreturn]] void BeVictim(const std::string& state);

// What a process holds; zeroes where /proc does not tell.
struct Held {
    size_t descriptors = 0, threads = 0, sharedMappings = 0;
};
Held HeldBy(pid_t process);

}  // namespace conformance
