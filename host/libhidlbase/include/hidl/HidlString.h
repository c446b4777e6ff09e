// hidl_string: a NUL-terminated string that either owns its characters or points at others.
#pragma once

#include <hidl/HidlInternal.h>

#include <cstring>
#include <string>

namespace android::hardware {

// Never null: an empty string is "". Sizes are in bytes without the NUL and limited to 32 bits; a
// larger one ends the process. Copies own their characters.
struct hidl_string {
    hidl_string() = default;
    hidl_string(const char* text);  // a null pointer counts as ""
    hidl_string(const std::string& text) { copyFrom(text.data(), text.size()); }
    hidl_string(const hidl_string& other) { copyFrom(other.c_str(), other.size()); }
    hidl_string(hidl_string&& other) noexcept { swap(other); }
    hidl_string& operator=(hidl_string other) noexcept {
        swap(other);
        return *this;
    }
    ~hidl_string() { clear(); }

    operator std::string() const { return std::string(m_text, m_size); }

    const char* c_str() const { return m_text; }
    size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    void clear();

    // Points at `data` (`size` bytes, followed by a NUL), which the caller keeps alive.
    void setToExternal(const char* data, size_t size);

  private:
    const char* m_text = "";
    uint32_t m_size = 0;
    bool m_owns = false;

    void copyFrom(const char* text, size_t length);
    void swap(hidl_string& other) noexcept;
};
static_assert(sizeof(hidl_string) == 16, "wrong size");

// Comparisons look at the characters up to the first NUL.
inline bool operator==(const hidl_string& left, const hidl_string& right) {
    return std::strcmp(left.c_str(), right.c_str()) == 0;
}
inline bool operator!=(const hidl_string& left, const hidl_string& right) {
    return !(left == right);
}

}  // namespace android::hardware
