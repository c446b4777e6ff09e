// How AIDL types, defaults and names look in NDK C++.
#include "cpp_types.h"

namespace aidlc {
namespace {

// Arrays are those that the binder NDK under host/ can send.
constexpr BasicType kBasicTypes[] = {{"void", "void", nullptr, "", 0},
                                     {"boolean", "bool", nullptr, " = false", 0},
                                     {"byte", "int8_t", "uint8_t", " = 0", 8},
                                     {"int", "int32_t", "int32_t", " = 0", 32},
                                     {"long", "int64_t", "int64_t", " = 0L", 64},
                                     {"float", "float", "float", " = 0.0f", 0},
                                     {"double", "double", "double", " = 0.0", 0},
                                     {"String", "std::string", "std::string", "", 0},
                                     {"ParcelFileDescriptor", "::ndk::ScopedFileDescriptor",
                                      "::ndk::ScopedFileDescriptor", "", 0}};

std::string ReplaceDots(const std::string& text, const std::string& by) {
    std::string result;
    for (const char c : text) result += c == '.' ? by : std::string(1, c);
    return result;
}

// Passed by value and initialised with zero.
bool IsValue(const TypeUse& type) {
    if (type.isArray) return false;
    return type.basic ? type.basic->zero[0] != '\0'
                      : type.declaration->kind == Declaration::Kind::kEnum;
}

std::string DefaultText(const TypeUse& type, const Default& value) {
    if (type.declaration) {
        return CppName(*type.declaration) + "::" + value.text.substr(value.text.rfind('.') + 1);
    }
    return value.text.empty() ? IntegerLiteral(value.number, type.basic->bits == 64) : value.text;
}

}  // namespace

const BasicType* FindBasicType(const std::string& name) {
    for (const BasicType& type : kBasicTypes) {
        if (name == type.name) return &type;
    }
    return nullptr;
}

std::string CppName(const Declaration& declaration) {
    return "::aidl::" + ReplaceDots(declaration.FullName(), "::");
}

std::string CppNamespace(const Declaration& declaration) {
    return "aidl::" + ReplaceDots(declaration.package, "::");
}

std::string HeaderPath(const Declaration& declaration, const std::string& className) {
    return "aidl/" + ReplaceDots(declaration.package, "/") + "/" + className + ".h";
}

std::string BaseName(const Declaration& declaration) {
    return declaration.name.substr(1);
}

std::string CppType(const TypeUse& type) {
    std::string name;
    if (type.basic) {
        name = type.isArray ? type.basic->cppElement : type.basic->cpp;
    } else {
        const bool isInterface = type.declaration->kind == Declaration::Kind::kInterface;
        name = CppName(*type.declaration);
        if (isInterface) name = "std::shared_ptr<" + name + ">";
    }
    if (type.fixedSize != 0) {
        return "std::array<" + name + ", " + std::to_string(type.fixedSize) + ">";
    }
    return type.isArray ? "std::vector<" + name + ">" : name;
}

std::string CppParameterType(const Argument& argument) {
    const std::string type = CppType(argument.type);
    if (argument.isOut) return type + "*";
    return IsValue(argument.type) ? type : "const " + type + "&";
}

std::string ParameterName(const Argument& argument) {
    return (argument.isOut ? "out_" : "in_") + argument.name;
}

std::string IntegerLiteral(int64_t value, bool isLong) {
    if (value == INT64_MIN) return "INT64_MIN";  // the literal would be a negated 2^63
    return std::to_string(value) + (isLong ? "L" : "");
}

std::string FieldInitializer(const Field& field) {
    const TypeUse& type = field.type;
    if (field.defaultValue) return " = " + DefaultText(type, *field.defaultValue);
    if (type.fixedSize != 0) return " = {{}}";
    if (!IsValue(type)) return "";
    return type.basic ? type.basic->zero : " = " + CppName(*type.declaration) + "(0)";
}

std::string ReturnStart(const TypeUse& type) {
    return IsValue(type) ? " = host::UnsetReturn<" + CppType(type) + ">()" : "";
}

std::string InitialValue(const Field& field) {
    const std::string type = CppType(field.type);
    if (!field.defaultValue) return type + "{}";
    return type + "(" + DefaultText(field.type, *field.defaultValue) + ")";
}

}  // namespace aidlc
