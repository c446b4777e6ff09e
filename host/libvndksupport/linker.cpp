// Opens HAL libraries by name from the vendor's HAL folders.
#include <android/log.h>
#include <dlfcn.h>
#include <unistd.h>
#include <vndksupport/linker.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

constexpr char kDefaultFolder[] = "/vendor/lib64/hw";

void* refuse(const char* name, const char* reason) {
    __android_log_print(ANDROID_LOG_ERROR, "vndksupport",
                        "Could not load %s from %s namespace: %s.", name, "sphal", reason);
    return nullptr;
}

// The part of `list` up to the next colon; moves `list` behind it.
std::string nextFolder(const char*& list) {
    const char* end = std::strchr(list, ':');
    std::string folder = end != nullptr ? std::string(list, end) : std::string(list);
    list = end != nullptr ? end + 1 : list + folder.size();
    return folder;
}

}  // namespace

void* android_load_sphal_library(const char* name, int flag) {
    if (name == nullptr || *name == '\0') return refuse("(no name)", "the name is empty");
    // A path would leave the HAL folders.
    if (std::strchr(name, '/') != nullptr) return refuse(name, "not a plain file name");

    const char* folders = std::getenv("STANDIN_HAL_PATH");
    if (folders == nullptr || *folders == '\0') folders = kDefaultFolder;

    std::string reason;
    while (*folders != '\0') {
        const std::string folder = nextFolder(folders);
        if (folder.empty()) continue;
        const std::string path = folder + "/" + name;
        if (void* library = dlopen(path.c_str(), flag)) return library;
        const char* error = dlerror();
        // A library that is there but does not load says more than one that is missing.
        const bool present = access(path.c_str(), F_OK) == 0;
        if (reason.empty() || present) reason = error != nullptr ? error : path + ": unknown error";
        if (present) break;
    }
    return refuse(name, reason.empty() ? "STANDIN_HAL_PATH names no folder" : reason.c_str());
}

int android_unload_sphal_library(void* handle) {
    return dlclose(handle);
}

int android_is_in_vendor_process(void) {
    return 1;
}
