// The services of the stand-in device by name. It holds references only; a service whose process
// dies disappears.
#pragma once

#include <android/binder_auto_utils.h>
#include <sys/types.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

class ServiceTable {
  public:
    // Lives as long as the process.
    static ServiceTable& instance();

    // A device has a few hundred services.
    static constexpr size_t kMaxServices = 2048;
    static constexpr size_t kMaxOfAProcess = 256;

    // Replaces a service of the same name. `process`: who asks. STATUS_BAD_VALUE for a bad name or
    // no object, STATUS_DEAD_OBJECT for an object whose process is gone, STATUS_NO_MEMORY for more
    // than the table takes.
    binder_status_t add(const std::string& name, const ndk::SpAIBinder& binder, pid_t process);
    // Null if there is none.
    ndk::SpAIBinder find(const std::string& name);
    std::vector<std::string> names();

  private:
    // Belongs to the link to the service's death.
    struct Registration {
        std::string name;
    };
    struct Service {
        ndk::SpAIBinder binder;
        pid_t process = -1;                     // that added it
        const Registration* current = nullptr;  // to compare, and to unlink
    };

    ServiceTable();
    bool hasRoomLocked(const std::string& name, pid_t process) const;
    void removeDead(const Registration* registration);

    ndk::ScopedAIBinder_DeathRecipient mDeathRecipient;
    std::mutex mMutex;  // guards mServices
    std::map<std::string, Service> mServices;
};
