// Opens HAL libraries by name from the vendor's HAL folders.
#include <android/log.h>
#include <dlfcn.h>
#include <unistd.h>
#include <vndksupport/linker.h>

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>

namespace {

constexpr char kDefaultFolder[] = "/vendor/lib64/hw";

void* Refuse(const char* name, const char* reason) {
    __android_log_print(ANDROID_LOG_ERROR, "vndksupport",
                        "Could not load %s from sphal namespace: %s.", name, reason);
    return nullptr;
}

}  // namespace

void* android_load_sphal_library(const char* name, int flag) {
    if (name == nullptr || *name == '\0') return Refuse("(no name)", "the name is empty");
    // A path would leave the HAL folders.
    if (std::strchr(name, '/') != nullptr) return Refuse(name, "not a plain file name");

    const char* folders = std::getenv("STANDIN_HAL_PATH");
    if (folders == nullptr || *folders == '\0') folders = kDefaultFolder;

    std::istringstream list(folders);
    std::string reason;
    for (std::string folder; std::getline(list, folder, ':');) {
        if (folder.empty()) continue;
        const std::string path = folder + "/" + name;
        if (void* library = dlopen(path.c_str(), flag)) return library;
        const char* error = dlerror();
        // A library that is there but does not load says more than one that is missing.
        const bool present = access(path.c_str(), F_OK) == 0;
        if (reason.empty() || present) reason = error != nullptr ? error : path + ": unknown error";
        if (present) break;
    }
    return Refuse(name, reason.empty() ? "STANDIN_HAL_PATH names no folder" : reason.c_str());
}
