// What literals of fields other than integers may look like, and their values.
#pragma once

#include <optional>
#include <string>

namespace aidlc {

/**
 * Value of a decimal number with or without point, exponent and "f"; as a float, rounded once, or
 * as a double. Nothing if the text is no such number or its value is out of range.
 */
std::optional<double> DecimalValue(const std::string& text, bool isFloat);

/** A double, or with isFloat a float, as the shortest C++ literal that has its exact value. */
std::string DecimalLiteral(double value, bool isFloat);

/** Whether text between single quotes is one character, of which C++ makes one char16_t. */
bool IsCharacter(const std::string& text);

/** Whether text between double quotes has only characters and escapes that mean the same in C++. */
bool IsStringText(const std::string& text);

}  // namespace aidlc
