// Builds the syntax tree of one .aidl file.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ast.h"
#include "diagnostics.h"
#include "token.h"

namespace aidlc {

/**
 * Parses text. Returns null after reporting the first syntax error. The file name given to the
 * document, and so to all positions, is fileName.
 */
std::unique_ptr<Document> Parse(const std::string& text, const std::string& fileName,
                                Diagnostics* diagnostics);

/** Recursive descent; every Parse* returns false once an error was reported. */
class Parser {
  public:
    Parser(std::vector<Token> tokens, Document* document, Diagnostics* diagnostics)
        : mTokens(std::move(tokens)), mDocument(document), mDiagnostics(diagnostics) {}

    bool ParseDocument();

  private:
    struct Annotations {
        bool vintfStability = false;
        bool nullable = false;
        bool utf8InCpp = false;
        std::string backing;
        Position backingPosition;
    };

    const Token& Next() const { return mTokens[mIndex]; }
    Token Take();
    bool TakeIf(const char* symbolOrWord);
    bool Expect(const char* symbol, const char* where);
    bool Fail(const std::string& message);
    bool FailAt(const Position& position, const std::string& message);
    bool ParseName(const char* what, std::string* name, Position* position);
    bool ParseQualifiedName(const char* what, std::string* name, Position* position);

    bool ParseAnnotations(Annotations* annotations);
    bool ParseBacking(Annotations* annotations);
    bool ParseDeclaration();
    bool ParseType(const Annotations& annotations, TypeReference* type);
    bool ParseArrayBrackets(TypeReference* type);

    // declaration_parser.cpp
    bool ParseEnum(const Annotations& annotations);
    bool ParseFields();
    bool ParseField();
    bool ParseInterface(bool oneway);
    bool ParseMethod(bool interfaceOneway);
    bool ParseArgument(Method* method);

    // expression_parser.cpp
    bool ParseExpression(std::unique_ptr<Expression>* result);
    bool ParseBinary(size_t level, std::unique_ptr<Expression>* result);
    bool ParseUnary(std::unique_ptr<Expression>* result);
    bool ParsePrimary(std::unique_ptr<Expression>* result);
    bool ParseList(std::unique_ptr<Expression>* result);
    bool TakeOperator(const std::string& symbol);

    std::vector<Token> mTokens;
    size_t mIndex = 0;
    int mDepth = 0;
    Document* mDocument;
    Diagnostics* mDiagnostics;
};

/** A token as a message names it. */
std::string Describe(const Token& token);

/** The text after "@deprecated" in a block comment, in one line; found says whether it is there. */
std::string DeprecationNote(const std::string& comment, bool* found);

}  // namespace aidlc
