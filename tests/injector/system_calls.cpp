// Calls to the system that make descriptors or mappings. They go straight to the kernel where that
// is all that libc's own function does: a sanitizer may call them before anything is set up.
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "injector.h"

namespace {

using injector::Kind;

bool noDescriptor(const char* function, const std::string& subject = "") {
    if (!injector::fails(Kind::kDescriptor, function, subject)) return false;
    errno = EMFILE;
    return true;
}

// Closes the descriptors of a message and says that they did not fit, as the kernel does.
void loseDescriptors(msghdr* message) {
    for (cmsghdr* entry = CMSG_FIRSTHDR(message); entry != nullptr;
         entry = CMSG_NXTHDR(message, entry)) {
        const size_t count = (entry->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (size_t i = 0; i < count; ++i) {
            int fd = -1;
            memcpy(&fd, CMSG_DATA(entry) + i * sizeof(int), sizeof(int));
            close(fd);
        }
    }
    message->msg_controllen = 0;
    message->msg_flags |= MSG_CTRUNC;
}

}  // namespace

extern "C" {

int socket(int domain, int type, int protocol) noexcept {
    if (noDescriptor("socket")) return -1;
    return static_cast<int>(syscall(SYS_socket, domain, type, protocol));
}

int dup(int fd) noexcept {
    if (noDescriptor("dup")) return -1;
    return static_cast<int>(syscall(SYS_dup, fd));
}

int fcntl(int fd, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    const long argument = va_arg(arguments, long);
    va_end(arguments);
    const bool makes = command == F_DUPFD || command == F_DUPFD_CLOEXEC;
    if (makes && noDescriptor("fcntl", "F_DUPFD")) return -1;
    return static_cast<int>(syscall(SYS_fcntl, fd, command, argument));
}

FILE* fopen(const char* path, const char* mode) {
    using Open = FILE* (*)(const char*, const char*);
    if (noDescriptor("fopen", path)) return nullptr;
    return injector::next<Open>("fopen")(path, mode);
}

ssize_t recvmsg(int fd, msghdr* message, int flags) {
    const ssize_t received = syscall(SYS_recvmsg, fd, message, flags);
    const cmsghdr* const entry = received >= 0 ? CMSG_FIRSTHDR(message) : nullptr;
    const bool makes =
            entry != nullptr && entry->cmsg_level == SOL_SOCKET && entry->cmsg_type == SCM_RIGHTS;
    if (makes && noDescriptor("recvmsg")) loseDescriptors(message);
    return received;
}

void* mmap(void* address, size_t length, int protection, int flags, int fd, off_t offset) noexcept {
    if (injector::fails(Kind::kMapping, "mmap")) {
        errno = ENOMEM;
        return MAP_FAILED;
    }
    return reinterpret_cast<void*>(
            syscall(SYS_mmap, address, length, protection, flags, fd, offset));
}

// The same functions on a 64-bit system.
int fcntl64(int fd, int command, ...) __attribute__((alias("fcntl")));
FILE* fopen64(const char* path, const char* mode) __attribute__((alias("fopen")));
void* mmap64(void* address, size_t length, int protection, int flags, int fd,
             off64_t offset) noexcept __attribute__((alias("mmap")));

}  // extern "C"
