// Turns checked declarations into NDK C++ text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ast.h"

namespace aidlc {

struct EmitOptions {
    int32_t version = 0;  // 0: the interface has no version and no hash
    std::string hash;
};

struct GeneratedFile {
    std::string path;  // relative to the output folder: include/aidl/... or src/...
    std::string text;
};

/** All files of one declaration: Name.h, BnName.h, BpName.h (without a leading I) and Name.cpp. */
std::vector<GeneratedFile> Emit(const Declaration& declaration, const EmitOptions& options);

// What the files are made of; each returns complete text inside the package's namespace.
std::string EnumBody(const Declaration& declaration);
std::string EnumValues(const std::string& cppName, const std::vector<std::string>& enumerators);
std::string ParcelableBody(const Declaration& declaration);
std::string ParcelableSource(const Declaration& declaration);
std::string UnionBody(const Declaration& declaration);
std::string UnionSource(const Declaration& declaration);
std::string InterfaceBody(const Declaration& declaration, const EmitOptions& options);
std::string InterfaceSource(const Declaration& declaration, const EmitOptions& options);
std::string StubBody(const Declaration& declaration, const EmitOptions& options);
std::string StubSource(const Declaration& declaration, const EmitOptions& options);
std::string ProxyBody(const Declaration& declaration, const EmitOptions& options);
std::string ProxySource(const Declaration& declaration, const EmitOptions& options);

/** The six comparison operators of a class, from the expressions that stand for both sides. */
std::string Comparisons(const std::string& name, const std::string& left, const std::string& right);

/** "::ndk::ScopedAStatus name(parameters)", name with its class if it has one. */
std::string MethodSignature(const Method& method, const std::string& name);

/** MethodSignature as a declaration, with its deprecation mark; tail is " = 0", " override" ... */
std::string MethodDeclaration(const Method& method, const std::string& tail);

/** "in_a, out_b, _aidl_return": what hands a call on. */
std::string CallArguments(const Method& method);

/** Keeps text that touches deprecated methods quiet. */
std::string WithoutDeprecationWarnings(const std::string& text);

}  // namespace aidlc
