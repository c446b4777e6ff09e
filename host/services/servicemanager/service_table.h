// The services of the stand-in device by name. It holds references only; a service whose process
// dies disappears.
#pragma once

#include <android/binder_auto_utils.h>
#include <sys/types.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "death_watch.h"

class ServiceTable {
  public:
    // Lives as long as the process.
    static ServiceTable& Instance();

    // Replaces a service of the same name. `process`: who asks, for the log. STATUS_BAD_VALUE for a
    // bad name or no object, STATUS_DEAD_OBJECT for an object whose process is gone.
    binder_status_t Add(const std::string& name, const ndk::SpAIBinder& binder, pid_t process);
    // Null if there is none.
    ndk::SpAIBinder Find(const std::string& name);
    std::vector<std::string> Names();

  private:
    struct Service {
        ndk::SpAIBinder binder;
        pid_t process = -1;  // that added it
        uint64_t number = 0;
        services::DeathWatch watch;
    };

    void RemoveDead(const std::string& name, uint64_t number);

    std::mutex m_mutex;  // guards what follows
    uint64_t m_lastNumber = 0;
    std::map<std::string, Service> m_services;
};
