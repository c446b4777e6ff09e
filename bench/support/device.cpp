// Enters the stand-in device through deviceshell.
#include "device.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "child.h"

namespace bench {

namespace {

constexpr char kInsideVariable[] = "BENCH_INSIDE_DEVICE";

}  // namespace

void GoIntoDevice() {
    if (getenv(kInsideVariable) != nullptr) return;
    std::error_code error;
    const std::string self = std::filesystem::read_symlink("/proc/self/exe", error).string();
    // Beside the program, so on the disk that holds the build; kept for the next time.
    const std::string data = self.substr(0, self.rfind('/')) + "/data";
    std::filesystem::create_directories(data, error);
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (WaitFor(Start({OFFLINEFRAMES_PROGRAM, "sources", data}, null)) != 0) {
        fprintf(stderr, "cannot make source files: '%s sources %s' says why\n",
                OFFLINEFRAMES_PROGRAM, data.c_str());
        exit(1);
    }
    setenv(kInsideVariable, "1", 1);
    execl(DEVICESHELL_PROGRAM, DEVICESHELL_PROGRAM, "--planes", "--data", data.c_str(), "--",
          self.c_str(), nullptr);
    fprintf(stderr, "cannot start %s: %s\n", DEVICESHELL_PROGRAM, strerror(errno));
    exit(1);
}

}  // namespace bench
