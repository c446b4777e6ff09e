// The device's file system, as arguments of bubblewrap.

#include "sandbox.h"

#include <dirent.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace deviceshell {

namespace {

// Names in a folder, sorted; a folder that cannot be read counts as empty.
std::vector<std::string> entriesOf(const std::string& folder) {
    std::vector<std::string> names;
    DIR* const stream = opendir(folder.c_str());
    if (!stream) return names;
    while (const dirent* entry = readdir(stream)) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") names.push_back(name);
    }
    closedir(stream);
    std::sort(names.begin(), names.end());
    return names;
}

std::string linkTarget(const std::string& path) {
    char target[PATH_MAX];
    const ssize_t length = readlink(path.c_str(), target, sizeof target);
    return length < 0 ? "" : std::string(target, static_cast<size_t>(length));
}

// `inside` is the folder's path on the device without a final '/', so "" for the root.
void mirrorFolder(const std::string& outside, const std::string& inside,
                  const std::vector<std::string>& own, std::vector<std::string>* arguments) {
    for (const std::string& name : entriesOf(outside.empty() ? "/" : outside)) {
        const std::string source = outside + "/" + name;
        const std::string place = inside + "/" + name;
        if (std::find(own.begin(), own.end(), place) != own.end()) continue;
        const bool above = std::any_of(own.begin(), own.end(), [&](const std::string& path) {
            return path.compare(0, place.size() + 1, place + "/") == 0;
        });
        struct stat status = {};
        if (lstat(source.c_str(), &status) != 0) continue;
        if (above) {
            // Also where the host has a link here: the device's own place needs a real folder.
            mirrorFolder(source, place, own, arguments);
        } else if (S_ISLNK(status.st_mode)) {
            arguments->insert(arguments->end(), {"--symlink", linkTarget(source), place});
        } else {
            arguments->insert(arguments->end(), {"--ro-bind-try", source, place});
        }
    }
}

// Programs may lie in the host's /dev/shm, say, which the device's own /dev hides: the folder below
// /dev comes back as it is, so that a program finds its libraries, too.
void showAgain(const std::string& program, std::vector<std::string>* arguments) {
    const std::string dev = "/dev/";
    if (program.compare(0, dev.size(), dev) != 0) return;
    const std::string folder = program.substr(0, program.find('/', dev.size()));
    arguments->insert(arguments->end(), {"--ro-bind", folder, folder});
}

}  // namespace

std::vector<std::string> mirrorArguments(const std::string& hostRoot,
                                         const std::vector<std::string>& own) {
    std::vector<std::string> arguments;
    mirrorFolder(hostRoot == "/" ? "" : hostRoot, "", own, &arguments);
    return arguments;
}

std::vector<std::string> sandboxArguments(const Options& options, const std::string& binaryFolder) {
    std::vector<std::string> arguments = {
            "bwrap", "--unshare-pid", "--as-pid-1", "--die-with-parent", "--tmpfs", "/"};
    const std::vector<std::string> mirror = mirrorArguments(
            "/", {"/proc", "/dev", kBinderFolder, kDataFolder, kBinaryFolder, kHalFolder});
    arguments.insert(arguments.end(), mirror.begin(), mirror.end());
    arguments.insert(arguments.end(),
                     {"--proc", "/proc", "--dev", "/dev", "--ro-bind", binaryFolder, kBinaryFolder,
                      "--ro-bind-try", binaryFolder + "/../vendor/lib64/hw", kHalFolder, "--perms",
                      "0700", "--tmpfs", kBinderFolder});
    showAgain(binaryFolder, &arguments);
    showAgain(options.serviceProgram, &arguments);
    if (options.planes) {
        arguments.insert(arguments.end(),
                         {"--ro-bind", binaryFolder + "/vexofflinecameratest-planes",
                          std::string(kBinaryFolder) + "/vexofflinecameratest"});
    }
    if (options.dataFolder.empty()) {
        arguments.insert(arguments.end(), {"--tmpfs", kDataFolder});
    } else {
        arguments.insert(arguments.end(), {"--bind", options.dataFolder, kDataFolder});
    }
    // Last, so that the folders above can still be made.
    arguments.insert(arguments.end(), {"--remount-ro", "/", "--chdir", "/"});
    return arguments;
}

}  // namespace deviceshell
