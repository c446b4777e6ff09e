// Checked whole-file reading and atomic writing.

#include "file_io.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace offlineframes {
namespace {

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

// Blocks signals, so that none ends the process before its temporary file is gone. For the calling
// thread; the program has no other then.
class SignalsHeldBack {
  public:
    SignalsHeldBack() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &m_before);
    }
    ~SignalsHeldBack() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

  private:
    sigset_t m_before;
};

base::Failure SystemFailure(const std::string& path, const char* step) {
    return base::Failure{path + ": " + step + ": " + strerror(errno)};
}

int MoveIntoPlace(const std::string& temporary, const std::string& path, Existing existing) {
    if (existing == Existing::kReplace) return rename(temporary.c_str(), path.c_str());
    const int status =
            renameat2(AT_FDCWD, temporary.c_str(), AT_FDCWD, path.c_str(), RENAME_NOREPLACE);
    if (status == 0 || (errno != EINVAL && errno != ENOSYS)) return status;
    // A file system that cannot rename without replacing: a hard link never replaces either.
    if (link(temporary.c_str(), path.c_str()) != 0) return -1;
    return unlink(temporary.c_str());
}

}  // namespace

base::Result<Bytes> ReadFile(const std::string& path) {
    struct stat info = {};
    if (stat(path.c_str(), &info) != 0) return SystemFailure(path, "cannot open");
    // To open a pipe without a writer would hang.
    if (!S_ISREG(info.st_mode)) return base::Failure{path + ": is not a regular file"};
    if (info.st_size == 0) return base::Failure{path + ": is empty"};
    const uint64_t size = static_cast<uint64_t>(info.st_size);
    if (size > kMaxFileBytes) {
        return base::Failure{path + ": has " + std::to_string(size) + " bytes, more than the " +
                             std::to_string(kMaxFileBytes) + " that are read"};
    }
    const File file(fopen(path.c_str(), "rbe"), fclose);
    if (!file) return SystemFailure(path, "cannot open");
    Bytes bytes(size);
    if (fread(bytes.data(), 1, size, file.get()) == size) return bytes;
    if (ferror(file.get())) return SystemFailure(path, "cannot read");
    return base::Failure{path + ": became shorter while it was read"};
}

base::Result<base::Done> CheckWritable(const std::string& path, Existing existing) {
    if (path.empty()) return base::Failure{"the output name is empty"};
    struct stat info = {};
    if (lstat(path.c_str(), &info) == 0) {
        if (!S_ISREG(info.st_mode)) {
            return base::Failure{path + ": exists and is not a regular file; choose another name"};
        }
        if (existing == Existing::kReplace) return base::Done{};
        return base::Failure{path + ": exists already; remove it or give --force"};
    }
    if (errno != ENOENT) return SystemFailure(path, "cannot examine");
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    if (access(folder.c_str(), W_OK | X_OK) != 0) return SystemFailure(folder, "cannot write here");
    if (slash != std::string::npos && slash + 1 == path.size()) {
        return base::Failure{path + ": is a folder; give a file name"};
    }
    return base::Done{};
}

base::Result<base::Done> WriteFile(const std::string& path, const Bytes& bytes, Existing existing) {
    const base::Result<base::Done> check = CheckWritable(path, existing);
    if (!check.Ok()) return check;
    const SignalsHeldBack signals;
    // In the folder of `path` (npos + 1 is 0), and short however long the name of `path` is.
    const std::string temporary =
            path.substr(0, path.rfind('/') + 1) + ".part-" + std::to_string(getpid());
    unlink(temporary.c_str());  // of a killed process that had this number
    File file(fopen(temporary.c_str(), "wbxe"), fclose);
    if (!file) return SystemFailure(path, "cannot create");
    const bool whole = fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    // Closing may report a late error of the system.
    if (whole && fclose(file.release()) == 0 && MoveIntoPlace(temporary, path, existing) == 0) {
        return base::Done{};
    }
    const base::Failure failure = SystemFailure(path, "cannot write");
    unlink(temporary.c_str());
    return failure;
}

}  // namespace offlineframes
