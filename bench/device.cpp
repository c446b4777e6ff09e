// Enters the stand-in device through deviceshell; starts and awaits processes.
#include "device.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "measure.h"

namespace bench {

void GoIntoDevice() {
    constexpr char kInside[] = "BENCH_INSIDE_DEVICE";
    if (getenv(kInside) != nullptr) return;
    std::error_code error;
    const std::string self = std::filesystem::read_symlink("/proc/self/exe", error).string();
    // Beside the program, so on the disk that holds the build; kept for the next time.
    const std::string data = self.substr(0, self.rfind('/')) + "/data";
    std::filesystem::create_directories(data, error);
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    Require(WaitFor(Start({OFFLINEFRAMES_PROGRAM, "sources", data}, null)) == 0,
            "make source files: '" OFFLINEFRAMES_PROGRAM " sources " + data + "' says why");
    setenv(kInside, "1", 1);
    execl(DEVICESHELL_PROGRAM, DEVICESHELL_PROGRAM, "--planes", "--data", data.c_str(), "--",
          self.c_str(), nullptr);
    Require(false, std::string("start " DEVICESHELL_PROGRAM ": ") + strerror(errno));
}

pid_t Start(const std::vector<std::string>& command, int output) {
    std::vector<char*> argv;
    for (const std::string& word : command) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, output, STDERR_FILENO);
    pid_t child = -1;
    const int error = posix_spawnp(&child, argv[0], &files, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    Require(error == 0, "start " + command[0] + ": " + strerror(error));
    return child;
}

int WaitFor(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) != child) return -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace bench
