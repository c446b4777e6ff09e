// What literals of fields other than integers may look like, and their values.
#include "literals.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

namespace aidlc {
namespace {

template <typename T>
std::string ShortestText(T value) {
    char text[32];
    const std::to_chars_result result = std::to_chars(text, text + sizeof(text), value);
    return std::string(text, result.ptr);
}

/** Length of the escape at a backslash; 0 if C++ knows none such. */
size_t EscapeLength(const std::string& text, size_t at) {
    if (at + 1 >= text.size()) {
        return 0;
    }
    if (text[at + 1] != 'u') {
        return std::string("bfnrt0\\\"'").find(text[at + 1]) != std::string::npos ? 2 : 0;
    }
    const std::string digits = text.substr(at + 2, 4);
    if (digits.size() != 4 ||
        digits.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
        return 0;
    }
    // One half of a surrogate pair is no character.
    const unsigned long code = std::strtoul(digits.c_str(), nullptr, 16);
    return code >= 0xd800 && code <= 0xdfff ? 0 : 6;
}

}  // namespace

std::optional<double> DecimalValue(const std::string& text, bool isFloat) {
    std::string digits = text;
    if (!digits.empty() && (digits.back() == 'f' || digits.back() == 'F')) {
        digits.pop_back();
    }
    if (digits.empty() || digits.find_first_not_of("0123456789.eE+-") != std::string::npos) {
        return std::nullopt;
    }
    char* end = nullptr;
    const double value =
            isFloat ? double{std::strtof(digits.c_str(), &end)} : std::strtod(digits.c_str(), &end);
    return *end == '\0' && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::string DecimalLiteral(double value, bool isFloat) {
    std::string text = isFloat ? ShortestText(static_cast<float>(value)) : ShortestText(value);
    if (text.find_first_of(".e") == std::string::npos) {
        text += ".0";
    }
    return isFloat ? text + "f" : text;
}

bool IsCharacter(const std::string& text) {
    if (!text.empty() && text[0] == '\\') {
        return EscapeLength(text, 0) == text.size();
    }
    return text.size() == 1 && text[0] >= ' ' && text[0] <= '~';
}

bool IsStringText(const std::string& text) {
    for (size_t i = 0; i < text.size();) {
        const auto c = static_cast<unsigned char>(text[i]);
        // A zero, raw or as an escape, would end the C++ literal's value there.
        const bool isZero = c == '\\' && (text.compare(i + 1, 1, "0") == 0 ||
                                          text.compare(i + 1, 5, "u0000") == 0);
        const size_t length = c == '\\' ? EscapeLength(text, i) : c >= ' ' || c == '\t' ? 1 : 0;
        if (isZero || length == 0) {
            return false;
        }
        i += length;
    }
    return true;
}

}  // namespace aidlc
