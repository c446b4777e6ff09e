// Builds the syntax tree of one .aidl file: package, imports, the type's head, types in use.
#include "parser.h"

#include "lexer.h"

namespace aidlc {

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

}  // namespace aidlc
