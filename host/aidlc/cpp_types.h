// How AIDL types, defaults and names look in NDK C++.
#pragma once

#include <string>

#include "ast.h"

namespace aidlc {

// A type that the language itself names.
struct BasicType {
    const char* name;
    const char* cpp;
    const char* cppElement;  // in an array; null: there are no arrays of it
    const char* zero;        // what a field starts with; empty: what its class says
    int bits;                // of an integer; else 0
};

// Null if the name is not one of them.
const BasicType* FindBasicType(const std::string& name);

// "::aidl::a::b::Name" for type Name of package a.b.
std::string CppName(const Declaration& declaration);

// "aidl::a::b" for package a.b.
std::string CppNamespace(const Declaration& declaration);

// "aidl/a/b/Class.h" for a class of package a.b.
std::string HeaderPath(const Declaration& declaration, const std::string& className);

// The interface's name without its leading I: IFoo gives Foo.
std::string BaseName(const Declaration& declaration);

// Type of a field, a return value or the target of an out pointer.
std::string CppType(const TypeUse& type);

// Type of a parameter of an interface method, in the form of its direction.
std::string CppParameterType(const Argument& argument);

// "in_x" or "out_x".
std::string ParameterName(const Argument& argument);

std::string IntegerLiteral(int64_t value, bool isLong);

// What follows a field's name up to the semicolon: " = 0", " = {{}}" or nothing.
std::string FieldInitializer(const Field& field);

// What follows the name of the server's variable for a return value. A device leaves numbers unset.
std::string ReturnStart(const TypeUse& type);

// The value a union's member starts with, as an expression of the member's type.
std::string InitialValue(const Field& field);

}  // namespace aidlc
