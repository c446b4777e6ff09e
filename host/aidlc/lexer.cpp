// Splits the text of an .aidl file into tokens.
#include "lexer.h"

#include <cctype>
#include <cstring>

namespace aidlc {
namespace {

bool IsWordStart(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_';
}
bool IsDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}
bool IsWordPart(char c) {
    return IsWordStart(c) || IsDigit(c);
}

class Lexer {
  public:
    Lexer(const std::string& text, const std::string& fileName, Diagnostics* diagnostics)
        : mText(text), mPosition{&fileName, 1, 1}, mDiagnostics(diagnostics) {}

    std::vector<Token> Run() {
        std::vector<Token> tokens;
        bool good = true;
        while (good) {
            good = SkipBlanks() && mOffset < mText.size();
            if (!good) {
                break;
            }
            Token token;
            token.position = mPosition;
            token.comment.swap(mComment);
            good = ReadToken(&token);
            if (good) {
                tokens.push_back(token);
            }
        }
        Token end;
        end.position = mPosition;
        tokens.push_back(end);
        return tokens;
    }

  private:
    char Peek(size_t ahead = 0) const {
        return mOffset + ahead < mText.size() ? mText[mOffset + ahead] : '\0';
    }

    std::string Take(size_t count) {
        const std::string taken = mText.substr(mOffset, count);
        for (const char c : taken) {
            mPosition.column = c == '\n' ? 1 : mPosition.column + 1;
            mPosition.line += c == '\n' ? 1 : 0;
        }
        mOffset += taken.size();
        return taken;
    }

    bool SkipBlanks() {
        while (mOffset < mText.size()) {
            if (std::isspace(static_cast<unsigned char>(Peek())) != 0) {
                Take(1);
            } else if (Peek() == '/' && Peek(1) == '/') {
                const size_t end = mText.find('\n', mOffset);
                Take(end == std::string::npos ? mText.size() - mOffset : end - mOffset);
            } else if (Peek() == '/' && Peek(1) == '*') {
                const size_t end = mText.find("*/", mOffset + 2);
                if (end == std::string::npos) {
                    mDiagnostics->Report(mPosition, "comment is not closed: add \"*/\"");
                    return false;
                }
                mComment = Take(end + 2 - mOffset);
            } else {
                return true;
            }
        }
        return true;
    }

    size_t WordLength(size_t from) const {
        size_t length = 0;
        while (IsWordPart(Peek(from + length))) {
            length++;
        }
        return length;
    }

    bool ReadToken(Token* token) {
        const char c = Peek();
        if (IsWordStart(c)) {
            token->kind = TokenKind::Identifier;
            token->text = Take(WordLength(0));
            return true;
        }
        if (IsDigit(c) || (c == '.' && IsDigit(Peek(1)))) {
            return ReadNumber(token);
        }
        if (c == '"' || c == '\'') {
            return ReadQuoted(token, c);
        }
        if (c == '@') {
            token->kind = TokenKind::Annotation;
            Take(1);
            token->text = Take(WordLength(0));
            if (token->text.empty()) {
                mDiagnostics->Report(token->position, "annotation name expected after '@'");
            }
            return !token->text.empty();
        }
        return ReadSymbol(token);
    }

    bool ReadNumber(Token* token) {
        size_t length = WordLength(0);
        bool isFloat = false;
        if (Peek(length) == '.' && IsDigit(Peek(length + 1))) {
            isFloat = true;
            length += 1 + WordLength(length + 1);
        }
        // The sign of an exponent is no part of a word.
        const bool isHexadecimal = Peek(1) == 'x' || Peek(1) == 'X';
        const char last = length > 0 ? Peek(length - 1) : '\0';
        if (!isHexadecimal && (last == 'e' || last == 'E') &&
            (Peek(length) == '-' || Peek(length) == '+')) {
            length += 1 + WordLength(length + 1);
        }
        token->text = Take(length);
        isFloat = isFloat ||
                  (!isHexadecimal && token->text.find_first_of("fFeE") != std::string::npos);
        token->kind = isFloat ? TokenKind::Float : TokenKind::Integer;
        return true;
    }

    bool ReadQuoted(Token* token, char quote) {
        size_t length = 1;
        while (Peek(length) != quote) {
            if (mOffset + length >= mText.size() || Peek(length) == '\n') {
                mDiagnostics->Report(token->position,
                                     std::string("closing ") + quote + " is missing on this line");
                return false;
            }
            length += Peek(length) == '\\' ? 2 : 1;
        }
        token->kind = quote == '"' ? TokenKind::String : TokenKind::Character;
        const std::string quoted = Take(length + 1);
        token->text = quoted.substr(1, quoted.size() - 2);
        return true;
    }

    bool ReadSymbol(Token* token) {
        token->kind = TokenKind::Symbol;
        const char c = Peek();
        // ">>" is left as two tokens: it may close two type argument lists.
        if (c == '<' && Peek(1) == '<') {
            token->text = Take(2);
            return true;
        }
        if (std::strchr("(){}[]<>,;=.|^&~+-*", c) != nullptr && c != '\0') {
            token->text = Take(1);
            return true;
        }
        mDiagnostics->Report(token->position, std::string("unexpected character '") + c + "'");
        return false;
    }

    const std::string& mText;
    size_t mOffset = 0;
    Position mPosition;
    std::string mComment;
    Diagnostics* mDiagnostics;
};

}  // namespace

std::vector<Token> Tokenize(const std::string& text, const std::string& fileName,
                            Diagnostics* diagnostics) {
    return Lexer(text, fileName, diagnostics).Run();
}

}  // namespace aidlc
