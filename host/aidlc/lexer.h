// Splits the text of an .aidl file into tokens.
#pragma once

#include <string>
#include <vector>

#include "diagnostics.h"
#include "token.h"

namespace aidlc {

/**
 * Returns the tokens of text, the last one of kind End. The first malformed element is reported and
 * ends the list early (still with End). fileName must outlive the tokens.
 */
std::vector<Token> Tokenize(const std::string& text, const std::string& fileName,
                            Diagnostics* diagnostics);

}  // namespace aidlc
