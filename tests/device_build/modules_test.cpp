// The module files against the sources that a device builds from them.

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <regex>
#include <set>

#include "tests/device_build/module_file.h"

namespace device_build {
namespace {

namespace fs = std::filesystem;
using testing::ContainerEq;

const fs::path& Project() {
    static const fs::path& path = *new fs::path(PROJECT_FOLDER);
    return path;
}

std::vector<fs::path> FilesBelow(const fs::path& folder, const std::vector<std::string>& types) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(Project() / folder)) {
        for (const std::string& type : types) {
            if (entry.path().extension() == type) {
                files.push_back(entry.path().lexically_relative(Project()));
            }
        }
    }
    EXPECT_FALSE(files.empty()) << folder;
    return files;
}

// What the first group of the pattern matches in the lines of the files.
std::set<std::string> Matches(const std::vector<fs::path>& files, const std::string& pattern) {
    const std::regex expression(pattern);
    std::set<std::string> found;
    for (const fs::path& path : files) {
        std::ifstream file(Project() / path);
        for (std::string line; std::getline(file, line);) {
            std::smatch match;
            if (std::regex_search(line, match, expression)) {
                found.insert(match[1]);
            }
        }
    }
    return found;
}

// Which module a device takes the headers below a prefix from; null: the C and C++ libraries.
struct Provider {
    const char* prefix;
    const char* module;
};

constexpr Provider kProviders[] = {
        {"aidl/android/hardware/camera/device/", "android.hardware.camera.device-V2-ndk"},
        {"aidl/android/hardware/camera/metadata/", "android.hardware.camera.metadata-V2-ndk"},
        {"aidl/android/hardware/graphics/allocator/",
         "android.hardware.graphics.allocator-ndk_shared"},
        {"aidl/android/hardware/graphics/common/", "android.hardware.graphics.common-ndk_shared"},
        {"aidl/vendor/zel/hardware/camera/offlinecamera/",
         "vendor.zel.hardware.camera.offlinecamera-V1-ndk"},
        {"aidlcommonsupport/", "libaidlcommonsupport"},
        {"android/binder_", "libbinder_ndk"},
        {"android/hardware/graphics/common/1.2/", "android.hardware.graphics.common@1.2"},
        {"android/hardware/graphics/mapper/4.0/", "android.hardware.graphics.mapper@4.0"},
        {"android/hardware/graphics/mapper/IMapper.h", "libimapper_stablec"},
        {"android/hidl/base/1.0/", "libhidlbase"},
        {"android/log.h", "liblog"},
        {"cutils/", "libcutils"},
        {"gralloctypes/", "libgralloctypes"},
        {"hidl/", "libhidlbase"},
        {"system/camera_metadata.h", "libcamera_metadata"},
        {"utils/", "libutils"},
        {"vndksupport/", "libvndksupport"},
        {"zeldisplaymapper.h", "libzeldisplaymapper"},
        {"dlfcn.h", nullptr},
        {"getopt.h", nullptr},
        {"sys/stat.h", nullptr},
        {"unistd.h", nullptr},
};

// Needed by libaidlcommonsupport: a static library hands its own libraries to nobody.
constexpr char kLinkedOnly[] = "android.hardware.common-V2-ndk";

// Nothing for a header that no known module provides.
std::optional<Provider> ProviderOf(const std::string& header) {
    if (header.find_first_of("./") == std::string::npos) {
        return Provider{"", nullptr};  // <string> and the like
    }
    for (const Provider& provider : kProviders) {
        if (header.rfind(provider.prefix, 0) == 0) {
            return provider;
        }
    }
    return std::nullopt;
}

TEST(DeviceBuild, TheToolDependsOnTheModulesOfItsIncludesAndOnNoOther) {
    std::vector<fs::path> files;
    for (const char* folder : {"client", "driver", "gralloc"}) {
        for (const fs::path& file : FilesBelow(folder, {".cpp", ".h"})) {
            files.push_back(file);
        }
    }
    std::set<std::string> headers = Matches(files, "^#include <(.*)>");
    headers.merge(Matches(files, "^#include \"(zeldisplaymapper\\.h)\""));
    std::set<std::string> needed = {kLinkedOnly};
    for (const std::string& header : headers) {
        const std::optional<Provider> provider = ProviderOf(header);
        EXPECT_TRUE(provider) << header << ": no module is known to provide it";
        if (provider && provider->module != nullptr) {
            needed.insert(provider->module);
        }
    }

    Module tool = ReadModules(Project() / "Android.bp")["vexofflinecameratest"];
    std::set<std::string> listed;
    for (const char* list : {"defaults", "header_libs", "static_libs", "shared_libs"}) {
        listed.insert(tool.properties[list].begin(), tool.properties[list].end());
    }
    EXPECT_THAT(listed, ContainerEq(needed));
}

TEST(DeviceBuild, TheToolIsBuiltFromAllItsSources) {
    Module tool = ReadModules(Project() / "Android.bp")["vexofflinecameratest"];
    std::set<std::string> patterns;
    for (const char* folder : {"client", "driver", "gralloc"}) {
        for (const fs::path& file : FilesBelow(folder, {".cpp"})) {
            patterns.insert(file.parent_path() / "*.cpp");
        }
    }
    const std::vector<std::string>& listed = tool.properties["srcs"];
    EXPECT_THAT(std::set<std::string>(listed.begin(), listed.end()), ContainerEq(patterns));
}

TEST(DeviceBuild, ThePackageImportsWhatItsSourcesName) {
    const std::string name = "vendor.zel.hardware.camera.offlinecamera";
    std::set<std::string> needed =
            Matches(FilesBelow("aidl/vendor", {".aidl"}), "^import (.*)\\.\\w+;");
    needed.erase(name);

    Module package = ReadModules(Project() / "aidl/Android.bp")[name];
    std::set<std::string> imported;
    for (const std::string& versioned : package.properties["imports"]) {
        imported.insert(versioned.substr(0, versioned.rfind("-V")));
    }
    EXPECT_THAT(imported, ContainerEq(needed));
    for (const fs::path& source : FilesBelow("aidl/vendor", {".aidl"})) {
        EXPECT_EQ(Matches({source}, "^@(VintfStability)").size(), 1u) << source;
    }
}

}  // namespace
}  // namespace device_build
