// What an .aidl file says. The parser builds it; the checker resolves the names of types.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "lexer.h"

namespace aidlc {

struct BasicType;
struct Declaration;

struct TypeUse {
    Position position;
    std::string name;  // of the element for an array
    bool isArray = false;
    int64_t fixedSize = 0;  // elements; 0: an array of any length

    // Resolved: one of the two.
    const BasicType* basic = nullptr;
    const Declaration* declaration = nullptr;
};

struct Default {
    Position position;
    std::string text;    // "true", "false" or an enumerator; empty for an integer
    int64_t number = 0;  // of an integer
};

// A field of a parcelable or a member of a union.
struct Field {
    TypeUse type;
    std::string name;
    Position position;
    std::optional<Default> defaultValue;
};

struct Enumerator {
    std::string name;
    Position position;
    int64_t value = 0;
};

struct Argument {
    TypeUse type;
    std::string name;
    Position position;
    bool isOut = false;
    bool hasDirection = false;  // "in" or "out" is written
};

struct Method {
    TypeUse returnType;
    std::string name;
    Position position;
    std::vector<Argument> arguments;
    bool isOneway = false;
    std::optional<std::string> deprecation;  // the note of its @deprecated
};

struct Import {
    std::string name;
    Position position;
};

// One file: a package, its imports and exactly one type.
struct Declaration {
    enum class Kind { kEnum, kParcelable, kUnion, kInterface };
    Kind kind = Kind::kParcelable;
    std::string file;
    std::string package;
    Position packagePosition;
    std::vector<Import> imports;
    std::string name;
    Position position;
    bool isLong = false;  // an enum's values have 64 bits, not 32
    std::vector<Enumerator> enumerators;
    std::vector<Field> fields;
    std::vector<Method> methods;

    std::string FullName() const { return package + "." + name; }
};

}  // namespace aidlc
