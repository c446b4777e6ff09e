// How AIDL types, defaults and names look in NDK C++.
#include "cpp_types.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "literals.h"
#include "text.h"

namespace aidlc {
namespace {

std::string ReplaceDots(const std::string& text, const std::string& by) {
    std::string result;
    for (const char c : text) {
        result += c == '.' ? by : std::string(1, c);
    }
    return result;
}

bool IsKind(const TypeReference& type, Declaration::Kind kind) {
    return type.declaration != nullptr && type.declaration->kind == kind;
}

/** Passed by value, and without a null state of its own. */
bool IsPlainValue(const TypeReference& type) {
    switch (type.builtin) {
        case Builtin::String:
        case Builtin::IBinder:
        case Builtin::ParcelFileDescriptor:
            return false;
        case Builtin::None:
            return IsKind(type, Declaration::Kind::Enum);
        default:
            return true;
    }
}

/** The single or element type, without nullability. */
std::string PlainType(const TypeReference& type) {
    switch (type.builtin) {
        case Builtin::Void:
            return "void";
        case Builtin::Boolean:
            return "bool";
        case Builtin::Byte:
            return type.IsArray() ? "uint8_t" : "int8_t";
        case Builtin::Char:
            return "char16_t";
        case Builtin::Int:
            return "int32_t";
        case Builtin::Long:
            return "int64_t";
        case Builtin::Float:
            return "float";
        case Builtin::Double:
            return "double";
        case Builtin::String:
            return "std::string";
        case Builtin::IBinder:
            return "::ndk::SpAIBinder";
        case Builtin::ParcelFileDescriptor:
            return "::ndk::ScopedFileDescriptor";
        case Builtin::None:
            break;
    }
    const std::string name = CppName(*type.declaration);
    return IsKind(type, Declaration::Kind::Interface) ? "std::shared_ptr<" + name + ">" : name;
}

/** Whether @nullable turns a value of this type into an optional. */
bool BecomesOptional(const TypeReference& type) {
    return type.builtin == Builtin::String || IsKind(type, Declaration::Kind::Parcelable) ||
           IsKind(type, Declaration::Kind::Union);
}

std::string ScalarDefault(const TypeReference& type, const Expression& value) {
    if (IsKind(type, Declaration::Kind::Enum)) {
        return CppName(*type.declaration) + "::" + value.text.substr(value.text.rfind('.') + 1);
    }
    switch (type.builtin) {
        case Builtin::Byte:
            return IntegerLiteral(type.IsArray() ? value.value & 0xff : value.value, false);
        case Builtin::Int:
            return IntegerLiteral(value.value, false);
        case Builtin::Long:
            return IntegerLiteral(value.value, true);
        case Builtin::Boolean:
            return value.text;
        case Builtin::Char:
            return "u'" + value.text + "'";
        case Builtin::String:
            return Quote(value.text);
        default:
            return DecimalLiteral(value.number, type.builtin == Builtin::Float);
    }
}

std::string ListDefault(const Field& field) {
    std::vector<std::string> elements;
    for (const auto& operand : field.defaultValue->operands) {
        elements.push_back(ScalarDefault(field.type, *operand));
    }
    const bool fixed = field.type.shape == TypeReference::Shape::FixedArray;
    return (fixed ? "{{" : "{") + Join(elements, ", ") + (fixed ? "}}" : "}");
}

}  // namespace

std::string CppName(const Declaration& declaration) {
    return "::aidl::" + ReplaceDots(declaration.CanonicalName(), "::");
}

std::string CppNamespace(const Declaration& declaration) {
    return "aidl::" + ReplaceDots(declaration.package, "::");
}

std::string CppType(const TypeReference& type) {
    std::string name = PlainType(type);
    if (type.nullable && BecomesOptional(type)) {
        name = "std::optional<" + name + ">";
    }
    if (!type.IsArray()) {
        return name;
    }
    name = type.shape == TypeReference::Shape::FixedArray
                   ? "std::array<" + name + ", " + std::to_string(type.size) + ">"
                   : "std::vector<" + name + ">";
    return type.nullable ? "std::optional<" + name + ">" : name;
}

std::string CppBackingType(const Declaration& declaration) {
    return declaration.backing == Builtin::Byte  ? "int8_t"
           : declaration.backing == Builtin::Int ? "int32_t"
                                                 : "int64_t";
}

std::string ParameterName(const Argument& argument) {
    return (argument.GoesIn() ? "in_" : "out_") + argument.name;
}

std::string CppParameter(const Argument& argument) {
    const std::string type = CppType(argument.type);
    if (argument.ComesOut()) {
        return type + "* " + ParameterName(argument);
    }
    const bool byValue = !argument.type.IsArray() && IsPlainValue(argument.type);
    return (byValue ? type + " " : "const " + type + "& ") + ParameterName(argument);
}

std::string IntegerLiteral(int64_t value, bool isLong) {
    if (!isLong) {
        return value == std::numeric_limits<int32_t>::min() ? "-2147483647 - 1"
                                                            : std::to_string(value);
    }
    return value == std::numeric_limits<int64_t>::min() ? "-9223372036854775807L - 1"
                                                        : std::to_string(value) + "L";
}

std::string FieldInitializer(const Field& field) {
    const TypeReference& type = field.type;
    if (field.defaultValue != nullptr) {
        return " = " +
               (type.IsArray() ? ListDefault(field) : ScalarDefault(type, *field.defaultValue));
    }
    if (type.shape == TypeReference::Shape::FixedArray && !type.nullable) {
        return " = {{}}";
    }
    if (type.IsArray() || !IsPlainValue(type)) {
        return "";
    }
    switch (type.builtin) {
        case Builtin::None:
            return " = " + CppName(*type.declaration) + "(0)";
        case Builtin::Boolean:
            return " = false";
        case Builtin::Char:
            return " = u'\\0'";
        case Builtin::Float:
            return " = 0.0f";
        case Builtin::Double:
            return " = 0.0";
        case Builtin::Long:
            return " = 0L";
        default:
            return " = 0";
    }
}

std::string InitialValue(const Field& field) {
    if (field.defaultValue == nullptr) {
        return CppType(field.type) + "{}";
    }
    if (field.type.IsArray()) {
        return CppType(field.type) + ListDefault(field);
    }
    return CppType(field.type) + "(" + ScalarDefault(field.type, *field.defaultValue) + ")";
}

std::string BaseName(const Declaration& declaration) {
    return declaration.name.substr(1);
}

std::string WriteFunction(const TypeReference& type) {
    return type.nullable ? "::ndk::AParcel_writeNullableData" : "::ndk::AParcel_writeData";
}

std::string ReadFunction(const TypeReference& type) {
    return type.nullable ? "::ndk::AParcel_readNullableData" : "::ndk::AParcel_readData";
}

std::string HeaderPath(const Declaration& declaration, const std::string& className) {
    return "aidl/" + ReplaceDots(declaration.package, "/") + "/" + className + ".h";
}

}  // namespace aidlc
