// How AIDL types, defaults and names look in NDK C++.
#pragma once

#include <cstdint>
#include <string>

#include "ast.h"

namespace aidlc {

/** "::aidl::a::b::Name" for type Name of package a.b. */
std::string CppName(const Declaration& declaration);

/** "aidl::a::b" for package a.b. */
std::string CppNamespace(const Declaration& declaration);

/** Type of a field, a value or the target of an out pointer. */
std::string CppType(const TypeReference& type);

/** int8_t, int32_t or int64_t. */
std::string CppBackingType(const Declaration& declaration);

/** "type name" of a parameter of an interface method, in the form of its direction. */
std::string CppParameter(const Argument& argument);

/** "in_x" for in and inout arguments, "out_x" for out arguments. */
std::string ParameterName(const Argument& argument);

/** A 32- or 64-bit integer literal. */
std::string IntegerLiteral(int64_t value, bool isLong);

/** What follows a field's name up to the semicolon: " = 0", " = {{}}" or nothing. */
std::string FieldInitializer(const Field& field);

/** The value a union's first member starts with, as an expression of the member's type. */
std::string InitialValue(const Field& field);

/** The interface's name without its leading I: IFoo gives Foo. */
std::string BaseName(const Declaration& declaration);

/** "::ndk::AParcel_writeData", or its nullable form. */
std::string WriteFunction(const TypeReference& type);
std::string ReadFunction(const TypeReference& type);

/** "aidl/a/b/Prefix" + name + ".h" for package a.b, as it stands in an #include. */
std::string HeaderPath(const Declaration& declaration, const std::string& className);

}  // namespace aidlc
