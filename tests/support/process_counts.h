// What another process holds.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <string>

struct ProcessCounts {
    size_t descriptors = 0;
    size_t threads = 0;
};

inline size_t CountEntries(const std::string& folder) {
    size_t count = 0;
    std::error_code ignored;  // a process that ends has fewer and fewer
    for (auto entry = std::filesystem::directory_iterator(folder, ignored);
         entry != std::filesystem::directory_iterator(); entry.increment(ignored)) {
        ++count;
    }
    return count;
}

inline ProcessCounts CountsOf(pid_t pid) {
    const std::string folder = "/proc/" + std::to_string(pid);
    return {CountEntries(folder + "/fd"), CountEntries(folder + "/task")};
}
