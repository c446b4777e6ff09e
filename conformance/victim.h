// Clients that are killed, and what the service holds afterwards.
#pragma once

#include <sys/types.h>

#include <string>

namespace conformance {

// What a client may be in when it dies.
inline constexpr const char* kVictimStates[] = {"registered", "opened",   "configured",
                                                "in-flight",  "callback", "lending"};

// Starts this program as a client, waits until it is in the state, and kills it. Returns what went
// wrong; empty when it is dead.
std::string KillClient(const std::string& state);

// The life of such a client: never returns.
[[noreturn]] void BeVictim(const std::string& state);

// What a process holds; zeroes where /proc does not tell.
struct Counts {
    size_t descriptors = 0;
    size_t threads = 0;
    size_t sharedMappings = 0;
};

Counts CountsOf(pid_t process);

}  // namespace conformance
