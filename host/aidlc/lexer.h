// Splits the text of an .aidl file into tokens, which know their places.
#pragma once

#include <base/result.h>

#include <string>
#include <vector>

namespace aidlc {

// Both count from 1; a column is a byte.
struct Position {
    int line = 1;
    int column = 1;
};

// "file:line:column: message", as editors read it.
inline std::string Located(const std::string& file, const Position& position,
                           const std::string& message) {
    return file + ":" + std::to_string(position.line) + ":" + std::to_string(position.column) +
           ": " + message;
}

enum class TokenKind {
    kWord,        // also keywords; dots are symbols
    kNumber,      // as written, whatever its form
    kString,      // what is between the quotes
    kAnnotation,  // name without '@'
    kSymbol,      // one character, or "<<"
    kEnd,
};

struct Token {
    TokenKind kind = TokenKind::kEnd;
    std::string text;
    Position position;
    std::string comment;  // the last block comment before it, with its marks

    bool Is(const std::string& symbolOrWord) const {
        return (kind == TokenKind::kSymbol || kind == TokenKind::kWord) && text == symbolOrWord;
    }
};

// The last token is of kind kEnd. Fails with the place of the first malformed element.
base::Result<std::vector<Token>> Tokenize(const std::string& text, const std::string& file);

}  // namespace aidlc
