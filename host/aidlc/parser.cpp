// Builds the syntax tree of one .aidl file: package, imports, declarations and types.
#include "parser.h"

#include "lexer.h"

namespace aidlc {
namespace {

std::string Describe(const Token& token) {
    switch (token.kind) {
        case TokenKind::End:
            return "end of file";
        case TokenKind::Annotation:
            return "'@" + token.text + "'";
        case TokenKind::String:
            return "a string";
        default:
            return "'" + token.text + "'";
    }
}

}  // namespace

std::unique_ptr<Document> Parse(const std::string& text, const std::string& fileName,
                                Diagnostics* diagnostics) {
    auto document = std::make_unique<Document>();
    document->file = fileName;
    const size_t before = diagnostics->Messages().size();
    std::vector<Token> tokens = Tokenize(text, document->file, diagnostics);
    if (diagnostics->Messages().size() != before) {
        return nullptr;
    }
    Parser parser(std::move(tokens), document.get(), diagnostics);
    if (!parser.ParseDocument()) {
        return nullptr;
    }
    document->declaration.document = document.get();
    return document;
}

Token Parser::Take() {
    const Token token = mTokens[mIndex];
    if (token.kind != TokenKind::End) {
        mIndex++;
    }
    return token;
}

bool Parser::TakeIf(const char* symbolOrWord) {
    if (!Next().Is(symbolOrWord)) {
        return false;
    }
    Take();
    return true;
}

bool Parser::Fail(const std::string& message) {
    return FailAt(Next().position, message);
}

bool Parser::FailAt(const Position& position, const std::string& message) {
    mDiagnostics->Report(position, message);
    return false;
}

bool Parser::Expect(const char* symbol, const char* where) {
    if (TakeIf(symbol)) {
        return true;
    }
    return Fail(std::string("expected '") + symbol + "' " + where + ", found " + Describe(Next()));
}

bool Parser::ParseName(const char* what, std::string* name, Position* position) {
    if (Next().kind != TokenKind::Identifier) {
        return Fail(std::string("expected ") + what + ", found " + Describe(Next()));
    }
    const Token token = Take();
    *name = token.text;
    *position = token.position;
    return true;
}

bool Parser::ParseQualifiedName(const char* what, std::string* name, Position* position) {
    if (!ParseName(what, name, position)) {
        return false;
    }
    while (TakeIf(".")) {
        std::string part;
        Position ignored;
        if (!ParseName("a name after '.'", &part, &ignored)) {
            return false;
        }
        *name += "." + part;
    }
    return true;
}

bool Parser::ParseDocument() {
    if (!TakeIf("package")) {
        return Fail("expected 'package' at the start of the file, found " + Describe(Next()));
    }
    if (!ParseQualifiedName("a package name", &mDocument->package, &mDocument->packagePosition) ||
        !Expect(";", "after the package name")) {
        return false;
    }
    while (TakeIf("import")) {
        Import import;
        if (!ParseQualifiedName("the name of a type", &import.name, &import.position) ||
            !Expect(";", "after the import")) {
            return false;
        }
        mDocument->imports.push_back(import);
    }
    if (!ParseDeclaration()) {
        return false;
    }
    if (Next().kind != TokenKind::End) {
        return Fail("expected the end of the file after its one type, found " + Describe(Next()));
    }
    return true;
}

bool Parser::ParseAnnotations(Annotations* annotations) {
    while (Next().kind == TokenKind::Annotation) {
        const Token token = Take();
        if (token.text == "VintfStability") {
            annotations->vintfStability = true;
        } else if (token.text == "nullable") {
            annotations->nullable = true;
        } else if (token.text == "utf8InCpp") {
            annotations->utf8InCpp = true;
        } else if (token.text == "Backing") {
            annotations->backingPosition = token.position;
            if (!ParseBacking(annotations)) {
                return false;
            }
        } else {
            return FailAt(token.position, "unknown annotation '@" + token.text +
                                                  "': only VintfStability, Backing, nullable and "
                                                  "utf8InCpp are supported");
        }
    }
    return true;
}

bool Parser::ParseBacking(Annotations* annotations) {
    std::string key;
    Position position;
    if (!Expect("(", "after '@Backing'") || !ParseName("'type'", &key, &position)) {
        return false;
    }
    if (key != "type") {
        return FailAt(position, "'@Backing' has the one parameter 'type', not '" + key + "'");
    }
    if (!Expect("=", "after 'type'")) {
        return false;
    }
    if (Next().kind != TokenKind::String) {
        return Fail("expected \"byte\", \"int\" or \"long\", found " + Describe(Next()));
    }
    const Token token = Take();
    if (token.text != "byte" && token.text != "int" && token.text != "long") {
        return FailAt(token.position, "an enum is backed by \"byte\", \"int\" or \"long\", not \"" +
                                              token.text + "\"");
    }
    annotations->backing = token.text;
    return Expect(")", "after the backing type");
}

bool Parser::ParseDeclaration() {
    Declaration& declaration = mDocument->declaration;
    Annotations annotations;
    if (!ParseAnnotations(&annotations)) {
        return false;
    }
    const Position start = Next().position;
    const bool oneway = TakeIf("oneway");
    if (TakeIf("interface")) {
        declaration.kind = Declaration::Kind::Interface;
    } else if (oneway) {
        return Fail("expected 'interface' after 'oneway', found " + Describe(Next()));
    } else if (TakeIf("parcelable")) {
        declaration.kind = Declaration::Kind::Parcelable;
    } else if (TakeIf("union")) {
        declaration.kind = Declaration::Kind::Union;
    } else if (TakeIf("enum")) {
        declaration.kind = Declaration::Kind::Enum;
    } else {
        return Fail("expected 'interface', 'parcelable', 'union' or 'enum', found " +
                    Describe(Next()));
    }
    if (!annotations.backing.empty() && declaration.kind != Declaration::Kind::Enum) {
        return FailAt(annotations.backingPosition, "'@Backing' belongs to an enum");
    }
    if (annotations.nullable || annotations.utf8InCpp) {
        return FailAt(start, "'@nullable' and '@utf8InCpp' belong to the use of a type");
    }
    declaration.package = mDocument->package;
    declaration.vintfStability = annotations.vintfStability;
    if (!ParseName("the name of the type", &declaration.name, &declaration.position) ||
        !Expect("{", "after the name of the type")) {
        return false;
    }
    switch (declaration.kind) {
        case Declaration::Kind::Enum:
            return ParseEnum(annotations);
        case Declaration::Kind::Interface:
            return ParseInterface(oneway);
        default:
            return ParseFields();
    }
}

bool Parser::ParseEnum(const Annotations& annotations) {
    Declaration& declaration = mDocument->declaration;
    if (annotations.backing == "int") {
        declaration.backing = Builtin::Int;
    } else if (annotations.backing == "long") {
        declaration.backing = Builtin::Long;
    }
    while (!TakeIf("}")) {
        Enumerator enumerator;
        if (!ParseName("an enumerator or '}'", &enumerator.name, &enumerator.position)) {
            return false;
        }
        if (TakeIf("=") && !ParseExpression(&enumerator.valueExpression)) {
            return false;
        }
        declaration.enumerators.push_back(std::move(enumerator));
        if (!TakeIf(",") && !Next().Is("}")) {
            return Fail("expected ',' or '}' after an enumerator, found " + Describe(Next()));
        }
    }
    return true;
}

bool Parser::ParseFields() {
    while (!TakeIf("}")) {
        if (!ParseField()) {
            return false;
        }
    }
    return true;
}

bool Parser::ParseField() {
    Field field;
    Annotations annotations;
    if (!ParseAnnotations(&annotations) || !ParseType(annotations, &field.type) ||
        !ParseName("the name of a field", &field.name, &field.position)) {
        return false;
    }
    if (TakeIf("=") && !ParseExpression(&field.defaultValue)) {
        return false;
    }
    if (!Expect(";", "after a field")) {
        return false;
    }
    mDocument->declaration.fields.push_back(std::move(field));
    return true;
}

bool Parser::ParseInterface(bool oneway) {
    while (!TakeIf("}")) {
        if (!ParseMethod(oneway)) {
            return false;
        }
    }
    return true;
}

bool Parser::ParseMethod(bool interfaceOneway) {
    Method method;
    method.deprecationNote = DeprecationNote(Next().comment, &method.deprecated);
    Annotations annotations;
    if (!ParseAnnotations(&annotations)) {
        return false;
    }
    method.oneway = TakeIf("oneway") || interfaceOneway;
    if (!ParseType(annotations, &method.returnType) ||
        !ParseName("the name of a method", &method.name, &method.position) ||
        !Expect("(", "after the name of a method")) {
        return false;
    }
    while (!TakeIf(")")) {
        if (!ParseArgument(&method)) {
            return false;
        }
    }
    if (Next().Is("=")) {
        return Fail("transaction numbers cannot be chosen: they follow the order of the methods");
    }
    if (!Expect(";", "after a method")) {
        return false;
    }
    mDocument->declaration.methods.push_back(std::move(method));
    return true;
}

bool Parser::ParseArgument(Method* method) {
    Argument argument;
    if (TakeIf("in")) {
        argument.direction = Argument::Direction::In;
    } else if (TakeIf("out")) {
        argument.direction = Argument::Direction::Out;
    } else if (TakeIf("inout")) {
        argument.direction = Argument::Direction::InOut;
    }
    Annotations annotations;
    if (!ParseAnnotations(&annotations) || !ParseType(annotations, &argument.type) ||
        !ParseName("the name of an argument", &argument.name, &argument.position)) {
        return false;
    }
    method->arguments.push_back(std::move(argument));
    if (Next().Is(")")) {
        return true;
    }
    if (!Expect(",", "or ')' after an argument")) {
        return false;
    }
    return !Next().Is(")") || Fail("expected an argument after ','");
}

bool Parser::ParseType(const Annotations& annotations, TypeReference* type) {
    if (annotations.vintfStability || !annotations.backing.empty()) {
        return Fail("'@VintfStability' and '@Backing' belong to the declaration of a type");
    }
    type->nullable = annotations.nullable;
    type->utf8InCpp = annotations.utf8InCpp;
    if (!ParseQualifiedName("a type", &type->name, &type->position)) {
        return false;
    }
    if (type->name == "List") {
        type->shape = TypeReference::Shape::List;
        if (!Expect("<", "and an element type after 'List'") ||
            !ParseQualifiedName("an element type", &type->name, &type->position)) {
            return false;
        }
        return Expect(">", "after the element type") &&
               (!Next().Is("[") || Fail("an array of lists is not supported"));
    }
    return !TakeIf("[") || ParseArrayBrackets(type);
}

bool Parser::ParseArrayBrackets(TypeReference* type) {
    type->shape = TypeReference::Shape::Array;
    if (!Next().Is("]")) {
        type->shape = TypeReference::Shape::FixedArray;
        if (!ParseExpression(&type->sizeExpression)) {
            return false;
        }
    }
    if (!Expect("]", "after the size of an array")) {
        return false;
    }
    return !Next().Is("[") || Fail("an array has one dimension only");
}

std::string DeprecationNote(const std::string& comment, bool* found) {
    const std::string mark = "@deprecated";
    const size_t start = comment.find(mark);
    *found = start != std::string::npos;
    std::string note;
    if (!*found) {
        return note;
    }
    bool gap = false;
    for (size_t i = start + mark.size(); i < comment.size() && comment[i] != '@'; i++) {
        const char c = comment[i];
        if (c == '*' || c == ' ' || c == '\n' || c == '\t' || c == '\r' ||
            (c == '/' && comment[i - 1] == '*')) {
            gap = true;
            continue;
        }
        note += gap && !note.empty() ? " " : "";
        note += c;
        gap = false;
    }
    return note;
}

}  // namespace aidlc
