// The main program of a service process: options, environment, registration.
#pragma once

#include <android/binder_auto_utils.h>
#include <base/result.h>

#include <cstdint>
#include <functional>

#include "fault_set.h"

namespace services {

struct Program {
    const char* name;
    const char* purpose;     // one sentence, for the help
    const char* faultValue;  // what --fault takes, for the help
    const char* interface;   // of the object, which is registered as its "default"
    uint32_t threads;        // of the pool that takes calls
    FaultSet* faults;
    // The object to serve; called once, after every fault was added.
    std::function<base::Result<ndk::SpAIBinder>()> make;
};

// Serves until the process is ended. Returns main's status where there is nothing to serve, after
// saying why: 0 for a help text, 2 for a misuse, 1 for anything else.
int Serve(const Program& program, int argc, char** argv);

}  // namespace services
