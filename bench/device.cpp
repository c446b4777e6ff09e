// Enters the stand-in device through deviceshell; starts and awaits processes.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "bench.h"

namespace bench {

void GoIntoDevice() {
    constexpr char kInside[] = "BENCH_INSIDE_DEVICE";
    if (getenv(kInside) != nullptr) return;
    const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe");
    // Beside the program, so on the disk that holds the build; kept for the next time.
    const std::string data = self.parent_path() / "data";
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
    const pid_t child = vfork();
    Require(child >= 0, "fork");
    if (child != 0) return child;
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    execvp(argv[0], argv.data());
    _exit(127);
}

int WaitFor(pid_t child) {
    int status = 0;
    if (waitpid(child, &status, 0) != child) return -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace bench
