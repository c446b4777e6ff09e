// Reads in blocks, so that neither a long file nor a long line takes memory.

#include "text_lines.h"

#include <errno.h>
#include <fcntl.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

namespace runreport {

namespace {

constexpr size_t kBlockBytes = 64 * 1024;

class LineCutter {
  public:
    explicit LineCutter(const std::function<void(std::string&&)>& take) : mTake(take) {}

    void add(const char* data, size_t size) {
        while (size > 0) {
            const void* const newline = memchr(data, '\n', size);
            const size_t part =
                    newline != nullptr
                            ? static_cast<size_t>(static_cast<const char*>(newline) - data)
                            : size;
            append(data, part);
            mStarted = true;
            if (newline == nullptr) return;
            finish();
            data += part + 1;
            size -= part + 1;
        }
    }

    void finish() {
        if (!mStarted) return;
        if (mLeftOut > 0) mLine += " [" + std::to_string(mLeftOut) + " bytes more]";
        mTake(std::move(mLine));
        mLine.clear();
        mLeftOut = 0;
        mStarted = false;
    }

  private:
    void append(const char* data, size_t size) {
        const size_t kept = std::min(size, kMaxLineBytes - mLine.size());
        mLine.append(data, kept);
        mLeftOut += size - kept;
    }

    const std::function<void(std::string&&)>& mTake;
    std::string mLine;
    uint64_t mLeftOut = 0;
    bool mStarted = false;
};

}  // namespace

std::string forEachLine(const std::string& path, const std::function<void(std::string&&)>& take) {
    // O_NONBLOCK: opening a pipe nobody writes to must not hang.
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return path + ": cannot open: " + strerror(errno);
    struct stat info = {};
    if (fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        close(fd);
        return path + ": is not a regular file";
    }
    LineCutter lines(take);
    std::vector<char> block(kBlockBytes);
    ssize_t count = 0;
    do {
        count = read(fd, block.data(), block.size());
        if (count > 0) lines.add(block.data(), static_cast<size_t>(count));
    } while (count > 0 || (count < 0 && errno == EINTR));
    const std::string problem =
            count < 0 ? path + ": cannot read: " + strerror(errno) : std::string();
    close(fd);
    lines.finish();
    return problem;
}

}  // namespace runreport
