// One lexical element of an .aidl file.
#pragma once

#include <string>

#include "diagnostics.h"

namespace aidlc {

enum class TokenKind {
    Identifier,  // also keywords; dots are tokens of their own
    Integer,     // as written, with suffix
    Float,
    String,      // content between the quotes, escapes untouched
    Character,   // likewise
    Annotation,  // name without '@'
    Symbol,      // one of ( ) { } [ ] < > , ; = . | ^ & ~ + - * and <<
    End,
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::string text;
    Position position;
    /** The last block comment before this token, with its marks; empty if none. */
    std::string comment;

    bool Is(const char* symbolOrWord) const {
        return (kind == TokenKind::Symbol || kind == TokenKind::Identifier) && text == symbolOrWord;
    }
};

}  // namespace aidlc
