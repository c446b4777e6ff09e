// What the tests of descriptor ownership look at.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/process_counts.h"

// Number of descriptors that this process has open.
inline int CountOpenDescriptors() {
    return static_cast<int>(CountsOf(getpid()).descriptors);
}

inline bool IsOpen(int fd) {
    return fcntl(fd, F_GETFD) != -1;
}

inline bool IsSameFile(int first, int second) {
    struct stat a {};
    struct stat b {};
    return fstat(first, &a) == 0 && fstat(second, &b) == 0 && a.st_dev == b.st_dev &&
           a.st_ino == b.st_ino;
}
