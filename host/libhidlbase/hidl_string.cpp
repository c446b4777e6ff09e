// hidl_string, and the fatal error exit of the HIDL value types.
#include <android/log.h>
#include <hidl/HidlString.h>

#include <limits>
#include <utility>

namespace android::hardware {

namespace details {

void fatal(const char* message) {
    __android_log_assert(nullptr, "HidlSupport", "%s", message);
}

uint32_t checkedSize(size_t size) {
    if (size > std::numeric_limits<uint32_t>::max()) {
        fatal("the size of a HIDL container has more than 32 bits: make it smaller");
    }
    return static_cast<uint32_t>(size);
}

}  // namespace details

hidl_string::hidl_string(const char* text) {
    if (text != nullptr) copyFrom(text, std::strlen(text));
}

void hidl_string::clear() {
    if (m_owns) delete[] m_text;
    m_text = "";
    m_size = 0;
    m_owns = false;
}

void hidl_string::setToExternal(const char* data, size_t size) {
    if (data == nullptr || data[size] != '\0') {
        details::fatal("hidl_string::setToExternal: the characters must be followed by a NUL");
    }
    const uint32_t checked = details::checkedSize(size);
    clear();
    m_text = data;
    m_size = checked;
}

// Takes a copy of `text`; this must hold nothing.
void hidl_string::copyFrom(const char* text, size_t length) {
    if (length == 0) return;
    m_size = details::checkedSize(length);
    char* characters = new char[length + 1];
    std::memcpy(characters, text, length);
    characters[length] = '\0';
    m_text = characters;
    m_owns = true;
}

void hidl_string::swap(hidl_string& other) noexcept {
    std::swap(m_text, other.m_text);
    std::swap(m_size, other.m_size);
    std::swap(m_owns, other.m_owns);
}

}  // namespace android::hardware
