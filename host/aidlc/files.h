// Whole-file reading and writing.
#pragma once

#include <string>

namespace aidlc {

/** Reads a regular file. False with a sentence in error otherwise. */
bool ReadFile(const std::string& path, std::string* text, std::string* error);

/** Makes the folders above path and writes the file. False with a sentence in error otherwise. */
bool WriteFile(const std::string& path, const std::string& text, std::string* error);

}  // namespace aidlc
