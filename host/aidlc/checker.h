// Resolves the types of all documents and checks the rules that the grammar does not express.
#pragma once

#include <set>
#include <string>

#include "ast.h"
#include "constants.h"
#include "diagnostics.h"
#include "source_tree.h"

namespace aidlc {

class Checker {
  public:
    Checker(SourceTree* tree, Diagnostics* diagnostics)
        : mTree(tree), mDiagnostics(diagnostics), mConstants(tree, diagnostics) {}

    /** Checks every document in the tree and all that they import, as far as they go. */
    void CheckAll();

  private:
    // checker.cpp
    void CheckDocument(Document* document);
    void CheckPackage(const Document& document);
    void CheckImports(const Document& document);
    void CheckEnum(Declaration* declaration);
    void CheckName(const std::string& name, const Position& position, const char* what,
                   std::set<std::string>* seen);

    // type_rules.cpp
    bool Resolve(const Document& document, TypeReference* type);
    bool ResolveSize(const Document& document, TypeReference* type);
    void CheckNullable(const TypeReference& type);
    void CheckFields(Declaration* declaration);
    void CheckSelfContainment(const Declaration& declaration);

    // default_rules.cpp
    void CheckDefault(const Document& document, Field* field);
    void CheckScalarDefault(const Document& document, const TypeReference& type, Expression* value);
    void CheckIntegerDefault(const Document& document, const TypeReference& type,
                             Expression* value);
    void CheckEnumDefault(const Document& document, const TypeReference& type,
                          const Expression& value);
    void RequireDefault(bool good, const Expression& value, const std::string& message);

    // method_rules.cpp
    void CheckInterface(Declaration* declaration);
    void CheckMethod(const Document& document, Method* method);
    void CheckArgument(const Method& method, const Argument& argument);

    void Fail(const Position& position, const std::string& message) {
        mDiagnostics->Report(position, message);
    }

    SourceTree* mTree;
    Diagnostics* mDiagnostics;
    ConstantEvaluator mConstants;
};

/** "parcelable", "union", "enum" or "interface". */
const char* KindName(Declaration::Kind kind);

}  // namespace aidlc
