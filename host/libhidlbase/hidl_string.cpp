// hidl_string, and the fatal error exit of the HIDL value types.
#include <android/log.h>
#include <hidl/HidlString.h>

#include <limits>
#include <ostream>

namespace android {
namespace hardware {

namespace details {

void fatal(const char* message) {
    __android_log_assert(nullptr, "HidlSupport", "%s", message);
}

uint32_t checkedSize(size_t size) {
    if (size > std::numeric_limits<uint32_t>::max()) {
        fatal("a HIDL container of more than 32 bits of size: make it smaller");
    }
    return static_cast<uint32_t>(size);
}

}  // namespace details

hidl_string::hidl_string() : mBuffer(""), mSize(0), mOwnsBuffer(false) {}

hidl_string::hidl_string(const char* text) : hidl_string() {
    if (text != nullptr) copyFrom(text, std::strlen(text));
}

hidl_string::hidl_string(const char* text, size_t length) : hidl_string() {
    copyFrom(text, length);
}

hidl_string::hidl_string(const std::string& text) : hidl_string() {
    copyFrom(text.data(), text.size());
}

hidl_string::hidl_string(const hidl_string& other) : hidl_string() {
    copyFrom(other.c_str(), other.size());
}

hidl_string::hidl_string(hidl_string&& other) noexcept : hidl_string() {
    take(other);
}

hidl_string::~hidl_string() {
    if (mOwnsBuffer) delete[] static_cast<const char*>(mBuffer);
}

hidl_string& hidl_string::operator=(const hidl_string& other) {
    // The copy comes first: `other` may be a view of this object's characters.
    return *this = hidl_string(other);
}

hidl_string& hidl_string::operator=(hidl_string&& other) noexcept {
    if (this != &other) {
        clear();
        take(other);
    }
    return *this;
}

hidl_string& hidl_string::operator=(const char* text) {
    return *this = hidl_string(text);
}

hidl_string& hidl_string::operator=(const std::string& text) {
    return *this = hidl_string(text);
}

void hidl_string::clear() {
    if (mOwnsBuffer) delete[] static_cast<const char*>(mBuffer);
    mBuffer = "";
    mSize = 0;
    mOwnsBuffer = false;
}

void hidl_string::setToExternal(const char* data, size_t size) {
    if (data == nullptr || data[size] != '\0') {
        details::fatal("hidl_string::setToExternal: the characters must be followed by a NUL");
    }
    const uint32_t checked = details::checkedSize(size);
    clear();
    mBuffer = data;
    mSize = checked;
}

// Takes a copy of `text`; this must hold nothing.
void hidl_string::copyFrom(const char* text, size_t length) {
    if (length == 0) return;
    if (text == nullptr) details::fatal("hidl_string: a null pointer with a length above zero");
    const uint32_t checked = details::checkedSize(length);
    char* characters = new char[length + 1];
    std::memcpy(characters, text, length);
    characters[length] = '\0';
    mBuffer = characters;
    mSize = checked;
    mOwnsBuffer = true;
}

// Takes over what `other` holds; this must hold nothing.
void hidl_string::take(hidl_string& other) {
    mBuffer = static_cast<const char*>(other.mBuffer);
    mSize = other.mSize;
    mOwnsBuffer = other.mOwnsBuffer;
    other.mOwnsBuffer = false;
    other.clear();
}

std::ostream& operator<<(std::ostream& out, const hidl_string& text) {
    return out.write(text.c_str(), static_cast<std::streamsize>(text.size()));
}

}  // namespace hardware
}  // namespace android
