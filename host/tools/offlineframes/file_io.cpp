// Checked whole-file reading and atomic writing.

#include "file_io.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

namespace offlineframes {
namespace {

class Descriptor {
  public:
    explicit Descriptor(int fd) : mFd(fd) {}
    ~Descriptor() { close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const { return mFd; }
    // Returns false when the system reports a late write error.
    bool close() {
        const int fd = mFd;
        mFd = -1;
        return fd < 0 || ::close(fd) == 0;
    }

  private:
    int mFd;
};

// While it lives, signals that would end the process in the midst of a write wait, so that the
// write's temporary file is gone first. For the calling thread; the program has no other then.
class SignalsHeldBack {
  public:
    SignalsHeldBack() {
        sigset_t ending;
        sigemptyset(&ending);
        for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXFSZ}) {
            sigaddset(&ending, number);
        }
        pthread_sigmask(SIG_BLOCK, &ending, &mBefore);
    }
    ~SignalsHeldBack() { pthread_sigmask(SIG_SETMASK, &mBefore, nullptr); }
    SignalsHeldBack(const SignalsHeldBack&) = delete;
    SignalsHeldBack& operator=(const SignalsHeldBack&) = delete;

  private:
    sigset_t mBefore;
};

Failure systemFailure(const std::string& path, const char* step) {
    return Failure{path + ": " + step + ": " + strerror(errno)};
}

bool writeAll(int fd, const Bytes& bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

// Creates a new file in the folder of `path`; its name, which is short however long the other is,
// is put in `name`.
int createTemporary(const std::string& path, std::string* name) {
    const std::string folder = path.substr(0, path.rfind('/') + 1);  // npos + 1 is 0
    for (int attempt = 0; attempt < 100; ++attempt) {
        *name = folder + ".part-" + std::to_string(getpid()) + "-" + std::to_string(attempt);
        const int fd = open(name->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST) return fd;
    }
    return -1;
}

int moveIntoPlace(const std::string& temporary, const std::string& path, Existing existing) {
    if (existing == Existing::kReplace) return rename(temporary.c_str(), path.c_str());
    const int status =
            renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE);
    if (status == 0 || (errno != EINVAL && errno != ENOSYS)) return status;
    // A file system that cannot rename without replacing: a hard link never replaces either.
    if (link(temporary.c_str(), path.c_str()) != 0) return -1;
    unlink(temporary.c_str());
    return 0;
}

}  // namespace

Result<Bytes> readFile(const std::string& path) {
    // O_NONBLOCK: opening a pipe nobody writes to must not hang.
    Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.get() < 0) return systemFailure(path, "cannot open");
    struct stat info = {};
    if (fstat(file.get(), &info) != 0) return systemFailure(path, "cannot examine");
    if (!S_ISREG(info.st_mode)) return Failure{path + ": is not a regular file"};
    if (info.st_size == 0) return Failure{path + ": is empty"};
    const uint64_t size = static_cast<uint64_t>(info.st_size);
    if (size > kMaxFileBytes) {
        return Failure{path + ": has " + std::to_string(size) + " bytes, more than the " +
                       std::to_string(kMaxFileBytes) + " that are read"};
    }
    Bytes bytes(size);
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::read(file.get(), bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return systemFailure(path, "cannot read");
        if (n == 0) return Failure{path + ": became shorter while it was read"};
        done += static_cast<size_t>(n);
    }
    return bytes;
}

Result<Done> checkWritable(const std::string& path, Existing existing) {
    if (path.empty()) return Failure{"the output name is empty"};
    struct stat info = {};
    if (lstat(path.c_str(), &info) == 0) {
        if (!S_ISREG(info.st_mode)) {
            return Failure{path + ": exists and is not a regular file; choose another name"};
        }
        if (existing == Existing::kKeep) {
            return Failure{path + ": exists already; remove it or give --force"};
        }
        return Done{};
    }
    if (errno != ENOENT) return systemFailure(path, "cannot examine");
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    if (access(folder.c_str(), W_OK | X_OK) != 0) return systemFailure(folder, "cannot write here");
    if (slash != std::string::npos && slash + 1 == path.size()) {
        return Failure{path + ": is a folder; give a file name"};
    }
    return Done{};
}

Result<Done> writeFile(const std::string& path, const Bytes& bytes, Existing existing) {
    const Result<Done> check = checkWritable(path, existing);
    if (!check.ok()) return check;
    const SignalsHeldBack signals;
    std::string temporary;
    Descriptor file(createTemporary(path, &temporary));
    if (file.get() < 0) return systemFailure(path, "cannot create");
    const bool written = writeAll(file.get(), bytes) && file.close();
    if (!written || moveIntoPlace(temporary, path, existing) != 0) {
        const Failure failure = systemFailure(path, "cannot write");
        unlink(temporary.c_str());
        return failure;
    }
    return Done{};
}

}  // namespace offlineframes
