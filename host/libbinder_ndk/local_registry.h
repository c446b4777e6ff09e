// Services by name inside one process: what takes the place of the service manager when there is
// no folder of sockets.
#pragma once

#include <android/binder_auto_utils.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace hostbinder {

class LocalRegistry {
  public:
    // Lives as long as the process.
    static LocalRegistry& instance();

    void add(const std::string& name, const ndk::SpAIBinder& binder);
    ndk::SpAIBinder find(const std::string& name);
    std::vector<std::string> names();

  private:
    std::mutex mMutex;  // guards mServices
    std::map<std::string, ndk::SpAIBinder> mServices;
};

}  // namespace hostbinder
