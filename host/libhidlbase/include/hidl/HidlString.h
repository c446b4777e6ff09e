// hidl_string: a NUL-terminated string that either owns its characters or points at others.
#pragma once

#include <hidl/HidlInternal.h>

#include <cstring>
#include <iosfwd>
#include <string>

namespace android {
namespace hardware {

// Never null: an empty string is "". Sizes are in bytes without the NUL and limited to 32 bits; a
// larger one, or a null pointer with characters, ends the process. Copies own their characters.
struct hidl_string {
    hidl_string();
    hidl_string(const char* text);  // a null pointer counts as ""
    hidl_string(const char* text, size_t length);
    hidl_string(const std::string& text);
    hidl_string(const hidl_string& other);
    hidl_string(hidl_string&& other) noexcept;
    ~hidl_string();

    hidl_string& operator=(const hidl_string& other);
    hidl_string& operator=(hidl_string&& other) noexcept;
    hidl_string& operator=(const char* text);
    hidl_string& operator=(const std::string& text);

    operator std::string() const { return std::string(mBuffer, mSize); }

    const char* c_str() const { return mBuffer; }
    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    void clear();

    // Points at `data` (`size` bytes, followed by a NUL), which the caller keeps alive.
    void setToExternal(const char* data, size_t size);

  private:
    details::hidl_pointer<const char> mBuffer;
    uint32_t mSize;
    bool mOwnsBuffer;

    void copyFrom(const char* text, size_t length);
    void take(hidl_string& other);
};
static_assert(sizeof(hidl_string) == 16, "wrong size");

// Comparisons look at the characters up to the first NUL.
#define HIDL_STRING_COMPARISON(op)                                               \
    inline bool operator op(const hidl_string& left, const hidl_string& right) { \
        return std::strcmp(left.c_str(), right.c_str()) op 0;                    \
    }                                                                            \
    inline bool operator op(const hidl_string& left, const char* right) {        \
        return std::strcmp(left.c_str(), right) op 0;                            \
    }                                                                            \
    inline bool operator op(const char* left, const hidl_string& right) {        \
        return std::strcmp(left, right.c_str()) op 0;                            \
    }
HIDL_STRING_COMPARISON(==)
HIDL_STRING_COMPARISON(!=)
HIDL_STRING_COMPARISON(<)
HIDL_STRING_COMPARISON(<=)
HIDL_STRING_COMPARISON(>)
HIDL_STRING_COMPARISON(>=)
#undef HIDL_STRING_COMPARISON

std::ostream& operator<<(std::ostream& out, const hidl_string& text);

}  // namespace hardware
}  // namespace android
