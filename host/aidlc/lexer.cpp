// Splits the text of an .aidl file into tokens.
#include "lexer.h"

#include <cctype>

namespace aidlc {
namespace {

bool IsWordPart(int c) {
    return std::isalnum(c) != 0 || c == '_';
}
bool IsNumberPart(int c) {
    return IsWordPart(c) || c == '.';
}
bool IsStringPart(int c) {
    return c != '"' && c != '\n' && c != '\0';
}

class Lexer {
  public:
    Lexer(const std::string& text, const std::string& file) : m_text(text), m_file(file) {}

    base::Result<std::vector<Token>> Run() {
        std::vector<Token> tokens;
        do {
            SkipBlanks();
            tokens.push_back(Read());
        } while (tokens.back().kind != TokenKind::kEnd);
        if (!m_error.empty()) return base::Failure{m_error};
        return tokens;
    }

  private:
    // 0 past the end.
    int Peek(size_t ahead = 0) const {
        const size_t at = m_offset + ahead;
        return at < m_text.size() ? static_cast<unsigned char>(m_text[at]) : 0;
    }

    std::string Take(size_t count) {
        const std::string taken = m_text.substr(m_offset, count);
        for (const char c : taken) {
            m_position.column = c == '\n' ? 1 : m_position.column + 1;
            m_position.line += c == '\n' ? 1 : 0;
        }
        m_offset += taken.size();
        return taken;
    }

    std::string TakeWhile(bool (*belongs)(int)) {
        size_t count = 0;
        while (belongs(Peek(count))) count++;
        return Take(count);
    }

    // The first error counts and ends the text.
    void Fail(const Position& position, const std::string& error) {
        m_error = Located(m_file, position, error);
        m_offset = m_text.size();
    }

    void SkipBlanks() {
        while (m_offset < m_text.size()) {
            const std::string mark = m_text.substr(m_offset, 2);
            if (std::isspace(Peek()) != 0) {
                Take(1);
            } else if (mark == "//") {
                TakeWhile([](int c) { return c != '\n' && c != '\0'; });
            } else if (mark == "/*") {
                const size_t end = m_text.find("*/", m_offset + 2);
                if (end == std::string::npos)
                    return Fail(m_position, "comment is not closed: add \"*/\"");
                m_comment = Take(end + 2 - m_offset);
            } else {
                return;
            }
        }
    }

    Token Read() {
        Token token;
        token.position = m_position;
        token.comment.swap(m_comment);
        const int c = Peek();
        if (m_offset == m_text.size()) {
            token.kind = TokenKind::kEnd;
        } else if (std::isdigit(c) != 0) {
            token.kind = TokenKind::kNumber;
            token.text = TakeWhile(IsNumberPart);
        } else if (IsWordPart(c)) {
            token.kind = TokenKind::kWord;
            token.text = TakeWhile(IsWordPart);
        } else if (c == '@') {
            token.kind = TokenKind::kAnnotation;
            Take(1);
            token.text = TakeWhile(IsWordPart);
        } else if (c == '"') {
            token.kind = TokenKind::kString;
            Take(1);
            token.text = TakeWhile(IsStringPart);
            if (Peek() != '"') Fail(token.position, "closing \" is missing on this line");
            Take(1);
        } else if (c > ' ' && c <= '~') {
            token.kind = TokenKind::kSymbol;
            token.text = Take(c == '<' && Peek(1) == '<' ? 2 : 1);
        } else {
            Fail(token.position, "byte " + std::to_string(c) + " is allowed in comments only");
        }
        return token;
    }

    const std::string& m_text;
    const std::string& m_file;
    size_t m_offset = 0;
    Position m_position;
    std::string m_comment;
    std::string m_error;
};

}  // namespace

base::Result<std::vector<Token>> Tokenize(const std::string& text, const std::string& file) {
    return Lexer(text, file).Run();
}

}  // namespace aidlc
