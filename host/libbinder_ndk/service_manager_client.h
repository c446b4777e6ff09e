// Questions to the service manager process.
#pragma once

#include <android/binder_auto_utils.h>

#include <string>
#include <vector>

namespace hostbinder {

class ServiceManagerClient {
  public:
    // Whether there is a folder of sockets at all.
    static bool isConfigured();
    // Null if there is no such service, or no service manager.
    static ndk::SpAIBinder check(const char* name);
    static binder_exception_t add(const char* name, const ndk::SpAIBinder& binder);
    static binder_status_t list(std::vector<std::string>* names);
};

}  // namespace hostbinder
