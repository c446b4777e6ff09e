// Walks all documents: imports, names and enums; the other rules are in type_rules.cpp and
// method_rules.cpp.
#include "checker.h"

#include <sstream>

namespace aidlc {
namespace {

const std::set<std::string>& CppKeywords() {
    static const auto* words =
            new std::set<std::string>{"alignas",       "alignof",     "and",
                                      "and_eq",        "asm",         "auto",
                                      "bitand",        "bitor",       "bool",
                                      "break",         "case",        "catch",
                                      "char",          "char8_t",     "char16_t",
                                      "char32_t",      "class",       "co_await",
                                      "co_return",     "co_yield",    "compl",
                                      "concept",       "const",       "consteval",
                                      "constexpr",     "constinit",   "const_cast",
                                      "continue",      "decltype",    "default",
                                      "delete",        "do",          "double",
                                      "dynamic_cast",  "else",        "enum",
                                      "explicit",      "export",      "extern",
                                      "false",         "float",       "for",
                                      "friend",        "goto",        "if",
                                      "inline",        "int",         "long",
                                      "mutable",       "namespace",   "new",
                                      "noexcept",      "not",         "not_eq",
                                      "nullptr",       "operator",    "or",
                                      "or_eq",         "private",     "protected",
                                      "public",        "register",    "reinterpret_cast",
                                      "requires",      "return",      "short",
                                      "signed",        "sizeof",      "static",
                                      "static_assert", "static_cast", "struct",
                                      "switch",        "template",    "this",
                                      "thread_local",  "throw",       "true",
                                      "try",           "typedef",     "typeid",
                                      "typename",      "union",       "unsigned",
                                      "using",         "virtual",     "void",
                                      "volatile",      "wchar_t",     "while",
                                      "xor",           "xor_eq"};
    return *words;
}

}  // namespace

const char* KindName(Declaration::Kind kind) {
    switch (kind) {
        case Declaration::Kind::Enum:
            return "enum";
        case Declaration::Kind::Parcelable:
            return "parcelable";
        case Declaration::Kind::Union:
            return "union";
        case Declaration::Kind::Interface:
            return "interface";
    }
    return "type";
}

void Checker::CheckAll() {
    // Looking names up reads further documents, so the end moves.
    for (size_t i = 0; i < mTree->Documents().size(); i++) {
        CheckDocument(mTree->Documents()[i].get());
    }
    for (size_t i = 0; i < mTree->Documents().size(); i++) {
        CheckSelfContainment(mTree->Documents()[i]->declaration);
    }
}

void Checker::CheckDocument(Document* document) {
    Declaration& declaration = document->declaration;
    std::set<std::string> names;
    CheckPackage(*document);
    CheckName(declaration.name, declaration.position, "type", &names);
    CheckImports(*document);
    switch (declaration.kind) {
        case Declaration::Kind::Enum:
            CheckEnum(&declaration);
            break;
        case Declaration::Kind::Interface:
            CheckInterface(&declaration);
            break;
        default:
            CheckFields(&declaration);
            break;
    }
}

void Checker::CheckPackage(const Document& document) {
    std::istringstream parts(document.package);
    for (std::string part; std::getline(parts, part, '.');) {
        std::set<std::string> unseen;  // a part may come twice
        CheckName(part, document.packagePosition, "part of a package", &unseen);
        if (part == "std") {
            Fail(document.packagePosition, "a package part 'std' would hide C++'s own: rename it");
        }
    }
}

void Checker::CheckImports(const Document& document) {
    for (const Import& import : document.imports) {
        if (mTree->Find(import.name) == nullptr && !mTree->IsReported(document, import.name)) {
            Fail(import.position, "cannot find the import " + import.name +
                                          " (searched: " + mTree->RootList() + ")");
            mTree->MarkReported(import.name);
        }
    }
}

void Checker::CheckName(const std::string& name, const Position& position, const char* what,
                        std::set<std::string>* seen) {
    if (CppKeywords().count(name) != 0) {
        Fail(position, "'" + name + "' is a C++ keyword and cannot name a " + what);
    } else if (name.compare(0, 6, "_aidl_") == 0) {
        Fail(position, "'" + name + "': names that start with _aidl_ are the compiler's own");
    } else if (!seen->insert(name).second) {
        Fail(position, std::string(what) + " '" + name + "' is declared twice");
    }
}

void Checker::CheckEnum(Declaration* declaration) {
    std::set<std::string> names;
    if (declaration->enumerators.empty()) {
        Fail(declaration->position, "enum " + declaration->name + " needs at least one enumerator");
    }
    for (const Enumerator& enumerator : declaration->enumerators) {
        CheckName(enumerator.name, enumerator.position, "enumerator", &names);
    }
    mConstants.EvaluateEnum(declaration);
}

}  // namespace aidlc
