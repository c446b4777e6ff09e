// Checked whole-file reading and atomic writing.

#include "file_io.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace offlineframes {
namespace {

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

Failure SystemFailure(const std::string& path, const char* step) {
    return Failure{path + ": " + step + ": " + strerror(errno)};
}

Result<Done> WriteAndRename(const std::string& path, const Bytes& bytes) {
    // In the folder of `path` (npos + 1 is 0), and short however long the name of `path` is.
    const std::string temporary =
            path.substr(0, path.rfind('/') + 1) + ".part-" + std::to_string(getpid());
    unlink(temporary.c_str());  // of a killed process that had this number
    File file(fopen(temporary.c_str(), "wbxe"), fclose);
    if (!file) return SystemFailure(path, "cannot create");
    const bool whole = fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    // Closing may report a late error of the system.
    if (whole && fclose(file.release()) == 0 && rename(temporary.c_str(), path.c_str()) == 0) {
        return Done{};
    }
    const Failure failure = SystemFailure(path, "cannot write");
    unlink(temporary.c_str());
    return failure;
}

}  // namespace

Result<Bytes> ReadFile(const std::string& path) {
    struct stat info = {};
    if (stat(path.c_str(), &info) != 0) return SystemFailure(path, "cannot open");
    // To open a pipe without a writer would hang.
    if (!S_ISREG(info.st_mode)) return Failure{path + ": is not a regular file"};
    if (info.st_size == 0) return Failure{path + ": is empty"};
    const uint64_t size = static_cast<uint64_t>(info.st_size);
    if (size > kMaxFileBytes) {
        return Failure{path + ": has " + std::to_string(size) + " bytes, more than the " +
                       std::to_string(kMaxFileBytes) + " that are read"};
    }
    const File file(fopen(path.c_str(), "rbe"), fclose);
    if (!file) return SystemFailure(path, "cannot open");
    Bytes bytes(size);
    if (fread(bytes.data(), 1, size, file.get()) == size) return bytes;
    if (ferror(file.get())) return SystemFailure(path, "cannot read");
    return Failure{path + ": became shorter while it was read"};
}

Result<Done> CheckWritable(const std::string& path, bool replace) {
    if (path.empty()) return Failure{"the output name is empty"};
    struct stat info = {};
    if (lstat(path.c_str(), &info) == 0) {
        if (!S_ISREG(info.st_mode)) {
            return Failure{path + ": exists and is not a regular file; choose another name"};
        }
        if (replace) return Done{};
        return Failure{path + ": exists already; remove it or give --force"};
    }
    if (errno != ENOENT) return SystemFailure(path, "cannot examine");
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    if (access(folder.c_str(), W_OK | X_OK) != 0) return SystemFailure(folder, "cannot write here");
    return Done{};
}

Result<Done> WriteFile(const std::string& path, const Bytes& bytes) {
    const Result<Done> check = CheckWritable(path, true);
    if (!check.Ok()) return check;
    // A signal ends the process only when its temporary file is gone. The program has no other
    // thread then.
    sigset_t all, before;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &before);
    const Result<Done> written = WriteAndRename(path, bytes);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return written;
}

}  // namespace offlineframes
