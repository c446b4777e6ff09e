// The services of the stand-in device by name. It holds references only; a service whose process
// dies disappears.
#pragma once

#include <android/binder_auto_utils.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

class ServiceTable {
  public:
    // Lives as long as the process.
    static ServiceTable& instance();

    // Replaces a service of the same name. STATUS_BAD_VALUE for a bad name or no object,
    // STATUS_DEAD_OBJECT for an object whose process is gone.
    binder_status_t add(const std::string& name, const ndk::SpAIBinder& binder);
    // Null if there is none.
    ndk::SpAIBinder find(const std::string& name);
    std::vector<std::string> names();

  private:
    struct Registration {
        std::string name;
        AIBinder* binder;  // to compare only
    };

    ServiceTable();
    void removeDead(const Registration& registration);

    ndk::ScopedAIBinder_DeathRecipient mDeathRecipient;
    std::mutex mMutex;  // guards mServices
    std::map<std::string, ndk::SpAIBinder> mServices;
};
