// Packed values in native byte order: a writer, and a reader that checks every size.
#pragma once

#include <hidl/HidlSupport.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace android {
namespace gralloc4 {

class ByteWriter {
  public:
    template <typename T>
    void put(const T& value) {
        static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>, "not a packed value");
        putBytes(&value, sizeof(value));
    }
    void put(const std::string& text) {
        put(static_cast<int64_t>(text.size()));
        putBytes(text.data(), text.size());
    }

    // Everything written so far.
    ::android::hardware::hidl_vec<uint8_t> bytes() const { return mBytes; }

  private:
    std::vector<uint8_t> mBytes;

    void putBytes(const void* data, size_t size) {
        const auto* first = static_cast<const uint8_t*>(data);
        mBytes.insert(mBytes.end(), first, first + size);
    }
};

// Borrows the bytes. Each get...() returns false, and writes nothing, when too few are left.
class ByteReader {
  public:
    explicit ByteReader(const ::android::hardware::hidl_vec<uint8_t>& bytes)
        : mNext(bytes.data()), mLeft(bytes.size()) {}

    template <typename T>
    bool get(T* value) {
        static_assert(std::is_arithmetic_v<T> || std::is_enum_v<T>, "not a packed value");
        if (mLeft < sizeof(*value)) return false;
        std::memcpy(value, mNext, sizeof(*value));
        skip(sizeof(*value));
        return true;
    }
    bool get(std::string* text) {
        size_t length = 0;
        if (!getCount(1, &length)) return false;
        text->assign(reinterpret_cast<const char*>(mNext), length);
        skip(length);
        return true;
    }

    // Reads the number of elements that follow. Each takes at least `elementSize` bytes, so a
    // number that cannot be true is refused before anything is allocated for it.
    bool getCount(size_t elementSize, size_t* count) {
        int64_t value = 0;
        if (!get(&value)) return false;
        if (value < 0 || static_cast<uint64_t>(value) > mLeft / elementSize) return false;
        *count = static_cast<size_t>(value);
        return true;
    }

    bool atEnd() const { return mLeft == 0; }

  private:
    const uint8_t* mNext;
    size_t mLeft;

    void skip(size_t size) {
        mNext += size;
        mLeft -= size;
    }
};

}  // namespace gralloc4
}  // namespace android
