// Filling in templates of C++ text.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace aidlc {

using Substitutions = std::map<std::string, std::string>;

/**
 * Replaces each $NAME$ by its substitution. A line that consists of one placeholder whose
 * substitution is empty disappears. An unknown name ends the program: it is a fault of the
 * compiler.
 */
std::string Expand(const std::string& pattern, const Substitutions& substitutions);

/** Puts separator between the parts. */
std::string Join(const std::vector<std::string>& parts, const std::string& separator);

/** text as a C++ string literal, quotes included; escapes in text are kept. */
std::string Quote(const std::string& text);

/** text with a backslash before each quote and backslash: what Quote() takes. */
std::string Escape(const std::string& text);

}  // namespace aidlc
