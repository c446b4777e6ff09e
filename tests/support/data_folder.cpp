// Redirects the tool's file calls, which the linker sends here, to a folder of the test's own.

#include "tests/support/data_folder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

constexpr char kDataFolder[] = "/data/vendor/camera";
std::string gFolder;  // empty: no redirection
bool gStatFails = false;

std::string Redirected(const char* path) {
    if (!gFolder.empty() && strncmp(path, kDataFolder, strlen(kDataFolder)) == 0) {
        return gFolder + (path + strlen(kDataFolder));
    }
    return path;
}

}  // namespace

extern "C" {

FILE* __real_fopen64(const char* path, const char* mode);
int __real_stat64(const char* path, struct stat* info);

FILE* __wrap_fopen64(const char* path, const char* mode) {
    return __real_fopen64(Redirected(path).c_str(), mode);
}

int __wrap_stat64(const char* path, struct stat* info) {
    if (gStatFails) {
        errno = EIO;
        return -1;
    }
    return __real_stat64(Redirected(path).c_str(), info);
}

}  // extern "C"

namespace test {

DataFolder::DataFolder() {
    gFolder = m_folder.Path();
    std::filesystem::create_directory(gFolder + "/offlinecameratest");
    std::filesystem::create_directory(gFolder + "/metadata");
}

DataFolder::~DataFolder() {
    gFolder.clear();
    gStatFails = false;
}

void DataFolder::Write(const std::string& path, const std::string& bytes) {
    std::ofstream(gFolder + "/" + path, std::ios::binary) << bytes;
}

std::string DataFolder::Read(const std::string& path) const {
    std::ifstream file(gFolder + "/" + path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> DataFolder::Dumps() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(gFolder + "/offlinecameratest")) {
        const std::string name = entry.path().filename();
        if (name.rfind("OfflineAidl_", 0) == 0) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

void DataFolder::Remove() {
    std::filesystem::remove_all(gFolder);
}

void DataFolder::FailStat() {
    gStatFails = true;
}

}  // namespace test
