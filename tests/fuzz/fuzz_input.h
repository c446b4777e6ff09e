// What the fuzz targets share: one input, taken from its front, with zeroes after its end.
#pragma once

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

class FuzzInput {
  public:
    FuzzInput(const uint8_t* data, size_t size)
        : m_left(reinterpret_cast<const char*>(data), size) {}

    bool Empty() const { return m_left.empty(); }

    template <typename T>
    T Take() {
        T value{};
        const std::string_view taken = Bytes(sizeof(T));
        memcpy(&value, taken.data(), taken.size());
        return value;
    }
    std::string_view Bytes(size_t count) {
        const std::string_view taken = m_left.substr(0, count);
        m_left.remove_prefix(taken.size());
        return taken;
    }

  private:
    std::string_view m_left;
};

// Ends the process if the promise is broken, which is how a fuzzer learns of it; names the line.
inline void Require(bool promise, const char* file = __builtin_FILE(),
                    int line = __builtin_LINE()) {
    if (promise) return;
    fprintf(stderr, "%s:%d: promise broken, errno %d\n", file, line, errno);
    abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
