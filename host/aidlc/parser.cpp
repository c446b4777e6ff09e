// Builds the syntax tree of one .aidl file by recursive descent and computes its constants.
#include "parser.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "constants.h"
#include "lexer.h"

namespace aidlc {
namespace {

constexpr int64_t kMaxFixedArraySize = 1 << 20;  // elements

std::string Describe(const Token& token) {
    if (token.kind == TokenKind::kEnd) return "end of file";
    return (token.kind == TokenKind::kAnnotation ? "'@" : "'") + token.text + "'";
}

// What a block comment says after "@deprecated", in one line; nothing if it does not have that.
std::optional<std::string> DeprecationNote(const std::string& comment) {
    const std::string mark = "@deprecated";
    const size_t start = comment.find(mark);
    if (start == std::string::npos) return std::nullopt;
    std::istringstream words(comment.substr(0, comment.size() - 2));
    words.ignore(static_cast<std::streamsize>(start + mark.size()));
    std::string note;
    for (std::string word; words >> word && word[0] != '@';) {
        if (word != "*") note += (note.empty() ? "" : " ") + word;
    }
    return note;
}

class Parser {
  public:
    Parser(std::vector<Token> tokens, Declaration* declaration)
        : m_tokens(std::move(tokens)), m_declaration(declaration) {}

    void ParseFile() {
        Expect("package", "at the start of the file");
        m_declaration->package = ParseDottedName("a package name", &m_declaration->packagePosition);
        Expect(";", "after the package name");
        while (TakeIf("import")) {
            Import import;
            import.name = ParseDottedName("the name of a type", &import.position);
            Expect(";", "after the import");
            m_declaration->imports.push_back(import);
        }
        ParseHead();
        if (!AtEnd()) {
            Fail("expected the end of the file after its one type, found " + Describe(Next()));
        }
    }
    const std::string& Error() const { return m_error; }

  private:
    const Token& Next() const { return m_tokens[m_next]; }
    bool AtEnd() const { return Next().kind == TokenKind::kEnd; }
    Token Take() { return AtEnd() ? Next() : m_tokens[m_next++]; }

    // Keeps the first error and moves to the end of the text, where every loop ends.
    void FailAt(const Position& position, const std::string& message) {
        if (m_error.empty()) m_error = Located(m_declaration->file, position, message);
        m_next = m_tokens.size() - 1;
    }
    void Fail(const std::string& message) { FailAt(Next().position, message); }

    bool TakeIf(const std::string& symbolOrWord) {
        if (!Next().Is(symbolOrWord)) return false;
        Take();
        return true;
    }

    void Expect(const std::string& symbolOrWord, const std::string& where) {
        if (!TakeIf(symbolOrWord)) {
            Fail("expected '" + symbolOrWord + "' " + where + ", found " + Describe(Next()));
        }
    }

    // Whether one more item comes before the closing symbol, which is taken.
    bool Until(const std::string& closing) {
        if (TakeIf(closing)) return false;
        if (AtEnd()) Expect(closing, "to close what was opened");
        return !AtEnd();
    }

    std::string ParseName(const std::string& what, Position* position) {
        *position = Next().position;
        if (Next().kind != TokenKind::kWord) {
            Fail("expected " + what + ", found " + Describe(Next()));
        }
        return Take().text;
    }

    std::string ParseDottedName(const std::string& what, Position* position) {
        std::string name = ParseName(what, position);
        Position ignored;
        while (TakeIf(".")) name += "." + ParseName("a name after '.'", &ignored);
        return name;
    }

    Constant Checked(const Position& position, const base::Result<Constant>& result) {
        if (result.Ok()) return result.Value();
        FailAt(position, result.Error());
        return {};
    }

    // AIDL has these where a member or an argument begins; this compiler does not.
    void RefuseUnsupportedWords() {
        for (const char* word : {"const", "inout", "parcelable", "union", "enum", "interface"}) {
            if (Next().Is(word)) Fail(Describe(Next()) + " is not supported here");
        }
    }

    void ParseHead() {
        bool isStable = false;
        std::optional<Position> backing;
        while (Next().kind == TokenKind::kAnnotation) {
            const Token token = Take();
            if (token.text == "VintfStability") {
                isStable = true;
            } else if (token.text == "Backing") {
                backing = token.position;
                ParseBacking();
            } else {
                FailAt(token.position, Describe(token) + " is not supported here");
            }
        }
        using Kind = Declaration::Kind;
        const std::pair<const char*, Kind> kinds[] = {{"interface", Kind::kInterface},
                                                      {"parcelable", Kind::kParcelable},
                                                      {"union", Kind::kUnion},
                                                      {"enum", Kind::kEnum}};
        const bool allOneway = TakeIf("oneway");
        const auto* const kind = std::find_if(std::begin(kinds), std::end(kinds),
                                              [this](const auto& k) { return Next().Is(k.first); });
        if (kind == std::end(kinds) || (allOneway && kind->second != Kind::kInterface)) {
            return Fail("expected 'interface', 'parcelable', 'union' or 'enum', found " +
                        Describe(Next()));
        }
        Take();
        m_declaration->kind = kind->second;
        m_declaration->name = ParseName("the name of the type", &m_declaration->position);
        if (!isStable) {
            FailAt(m_declaration->position, "a type without @VintfStability is not supported here");
        }
        if (backing.has_value() != (m_declaration->kind == Kind::kEnum)) {
            FailAt(backing.value_or(m_declaration->position),
                   "enums, and only they, have @Backing(type=\"int\") or \"long\"");
        }
        Expect("{", "after the name of the type");
        while (Until("}")) {
            RefuseUnsupportedWords();
            if (m_declaration->kind == Kind::kEnum) {
                ParseEnumerator();
            } else if (m_declaration->kind == Kind::kInterface) {
                ParseMethod(allOneway);
            } else {
                ParseField();
            }
        }
    }

    void ParseBacking() {
        Expect("(", "after '@Backing'");
        Expect("type", "as the parameter of '@Backing'");
        Expect("=", "after 'type'");
        const Token token = Take();
        m_declaration->isLong = token.text == "long";
        if (token.kind != TokenKind::kString || (token.text != "int" && token.text != "long")) {
            FailAt(token.position,
                   "a backing type other than \"int\" and \"long\" is not supported here");
        }
        Expect(")", "after the backing type");
    }

    void ParseEnumerator() {
        Enumerator enumerator;
        enumerator.name = ParseName("an enumerator or '}'", &enumerator.position);
        const int bits = m_declaration->isLong ? 64 : 32;
        const std::vector<Enumerator>& before = m_declaration->enumerators;
        if (TakeIf("=")) {
            enumerator.value = ParseConstant().value;
        } else if (!before.empty() && before.back().value == Largest(bits)) {
            FailAt(enumerator.position, "no value is left for '" + enumerator.name + "'");
        } else if (!before.empty()) {
            enumerator.value = before.back().value + 1;
        }
        if (!Fits(enumerator.value, bits)) {
            FailAt(enumerator.position, "the value " + std::to_string(enumerator.value) + " of '" +
                                                enumerator.name + "' does not fit 32 bits");
        }
        if (!Next().Is("}")) Expect(",", "or '}' after an enumerator");
        m_declaration->enumerators.push_back(enumerator);
    }

    void ParseField() {
        Field field;
        field.type = ParseType();
        field.name = ParseName("the name of a field", &field.position);
        if (TakeIf("=")) {
            Default value{Next().position, "", 0};
            if (Next().kind == TokenKind::kWord) {
                value.text = ParseDottedName("a constant", &value.position);
            } else {
                value.number = ParseConstant().value;
            }
            field.defaultValue = value;
        }
        Expect(";", "after a field");
        m_declaration->fields.push_back(field);
    }

    void ParseMethod(bool allOneway) {
        Method method;
        method.deprecation = DeprecationNote(Next().comment);
        method.isOneway = TakeIf("oneway") || allOneway;
        method.returnType = ParseType();
        method.name = ParseName("the name of a method", &method.position);
        Expect("(", "after the name of a method");
        while (Until(")")) ParseArgument(&method);
        if (Next().Is("=")) Fail("a transaction number of one's own is not supported here");
        Expect(";", "after a method");
        m_declaration->methods.push_back(method);
    }

    void ParseArgument(Method* method) {
        Argument argument;
        RefuseUnsupportedWords();
        argument.isOut = TakeIf("out");
        argument.hasDirection = argument.isOut || TakeIf("in");
        argument.type = ParseType();
        argument.name = ParseName("the name of an argument", &argument.position);
        method->arguments.push_back(argument);
        if (Next().Is(")")) return;
        Expect(",", "or ')' after an argument");
        if (Next().Is(")")) Fail("expected an argument after ','");
    }

    TypeUse ParseType() {
        TypeUse type;
        while (Next().kind == TokenKind::kAnnotation) {
            const Token token = Take();
            if (token.text != "utf8InCpp" || !Next().Is("String")) {
                FailAt(token.position, Describe(token) + " is not supported here");
            }
        }
        type.name = ParseDottedName("a type", &type.position);
        if (Next().Is("<")) Fail(type.name + "<...> is not supported here");
        if (!TakeIf("[")) return type;
        type.isArray = true;
        if (!Next().Is("]")) {
            const Position position = Next().position;
            type.fixedSize = ParseConstant().value;
            if (type.fixedSize < 1 || type.fixedSize > kMaxFixedArraySize) {
                FailAt(position, "an array has 1 to " + std::to_string(kMaxFixedArraySize) +
                                         " elements, not " + std::to_string(type.fixedSize));
            }
        }
        Expect("]", "after the size of an array");
        if (Next().Is("[")) Fail("an array of arrays is not supported here");
        return type;
    }

    // Operands joined by '<<' and, more weakly, by '|'.
    Constant ParseConstant() {
        Constant result = ParseShift();
        while (TakeIf("|")) result = Or(result, ParseShift());
        return result;
    }

    Constant ParseShift() {
        Constant result = ParseOperand();
        while (Next().Is("<<")) {
            const Position position = Take().position;
            result = Checked(position, ShiftLeft(result, ParseOperand()));
        }
        return result;
    }

    Constant ParseOperand() {
        const Token token = Take();
        if (token.Is("-") && Next().kind == TokenKind::kNumber) {
            const Position position = Next().position;
            return Negate(Checked(position, ReadInteger(Take().text)));
        }
        if (token.kind == TokenKind::kNumber)
            return Checked(token.position, ReadInteger(token.text));
        if (token.kind == TokenKind::kWord) {
            for (const Enumerator& known : m_declaration->enumerators) {
                if (known.name == token.text) return {known.value, m_declaration->isLong};
            }
            FailAt(token.position, "'" + token.text + "' is not an enumerator above this place");
        }
        FailAt(token.position, Describe(token) +
                                       " is not supported here: a constant is made of integers and "
                                       "names of enumerators with -, << and |");
        return {};
    }

    std::vector<Token> m_tokens;
    size_t m_next = 0;
    std::string m_error;
    Declaration* m_declaration;
};

}  // namespace

base::Result<std::unique_ptr<Declaration>> Parse(const std::string& text, const std::string& file) {
    base::Result<std::vector<Token>> tokens = Tokenize(text, file);
    if (!tokens.Ok()) return tokens.GetFailure();
    auto declaration = std::make_unique<Declaration>();
    declaration->file = file;
    Parser parser(std::move(tokens).Value(), declaration.get());
    parser.ParseFile();
    if (!parser.Error().empty()) return base::Failure{parser.Error()};
    return declaration;
}

}  // namespace aidlc
