// What the fuzz targets share: one input, taken from its front, with zeroes after its end.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

class FuzzInput {
  public:
    FuzzInput(const uint8_t* data, size_t size) : mData(data), mSize(size) {}

    size_t left() const { return mSize; }
    const uint8_t* data() const { return mData; }

    template <typename T>
    T take() {
        T value{};
        const size_t count = std::min(sizeof(T), mSize);
        if (count > 0) memcpy(&value, mData, count);
        mData += count;
        mSize -= count;
        return value;
    }
    std::string bytes(size_t count) {
        count = std::min(count, mSize);
        std::string taken(reinterpret_cast<const char*>(mData), count);
        mData += count;
        mSize -= count;
        return taken;
    }
    std::string rest() { return bytes(mSize); }

  private:
    const uint8_t* mData;
    size_t mSize;
};

// Ends the process if the promise is broken, which is how a fuzzer learns of it; names the line.
inline void require(bool promise, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE()) {
    if (promise) return;
    fprintf(stderr, "%s:%d: promise broken, errno %d\n", file, line, errno);
    abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
