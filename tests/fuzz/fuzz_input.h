// What the fuzz targets share: their entry, and the check of a promise.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

// Ends the process if the promise is broken, which is how a fuzzer learns of it; names the line.
inline void Require(bool promise, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE()) {
    if (promise) return;
    fprintf(stderr, "%s:%d: promise broken, errno %d\n", file, line, errno);
    abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
