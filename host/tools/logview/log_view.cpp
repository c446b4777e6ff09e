// Shows what the device's programs write to an inherited descriptor: NAME is this program's name,
// DESCRIPTOR the variable with the descriptor's number, OPTION what has deviceshell keep it.

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

namespace {

constexpr int kPollMilliseconds = 100;

constexpr char kHelp[] = "usage: " NAME
                         " [-d | -c]\n"
                         "Shows what was written so far, then what is written, until interrupted.\n"
                         "  -d  show what was written so far and end\n"
                         "  -c  forget what was written so far\n";

int fail(const std::string& sentence, int status) {
    fprintf(stderr, NAME ": %s\n", sentence.c_str());
    return status;
}

// The descriptor is for writing; opened again by its name it can be read from the beginning.
int openAgain(int flags) {
    const char* const number = getenv(DESCRIPTOR);
    if (!number) return -1;
    const int file = open((std::string("/proc/self/fd/") + number).c_str(), flags | O_CLOEXEC);
    struct stat status = {};
    if (file >= 0 && fstat(file, &status) == 0 && S_ISREG(status.st_mode)) return file;
    return -1;
}

bool writeAll(const char* bytes, size_t size) {
    while (size > 0) {
        const ssize_t written = write(STDOUT_FILENO, bytes, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        bytes += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

int show(int file, bool follow) {
    char bytes[1 << 16];
    while (true) {
        const ssize_t count = read(file, bytes, sizeof bytes);
        if (count < 0) return fail(std::string("cannot read: ") + strerror(errno), 1);
        if (!writeAll(bytes, static_cast<size_t>(count))) return 1;
        if (count > 0) continue;
        if (!follow) return 0;
        struct stat status = {};
        const bool forgotten =
                fstat(file, &status) == 0 && status.st_size < lseek(file, 0, SEEK_CUR);
        if (forgotten) lseek(file, 0, SEEK_SET);
        // Waits, and ends with who reads the output.
        pollfd output = {STDOUT_FILENO, 0, 0};
        if (poll(&output, 1, kPollMilliseconds) > 0) return 0;
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::string word = argc > 1 ? argv[1] : "";
    if (word == "--help") return fputs(kHelp, stdout) < 0;
    if (argc > 2 || !(word.empty() || word == "-d" || word == "-c")) {
        return fail("unknown word " + std::string(argv[argc - 1]) + "; try '" NAME " --help'", 2);
    }
    const int file = openAgain(word == "-c" ? O_WRONLY | O_TRUNC : O_RDONLY);
    if (file < 0) {
        return fail("nothing is kept here: deviceshell's shell keeps it, and option " OPTION, 1);
    }
    return word == "-c" ? 0 : show(file, word.empty());
}
