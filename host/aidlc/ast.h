// What an .aidl file says: declarations, types and constant expressions. The parser builds it; the
// resolver and the constant evaluator fill in the members marked "resolved".
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "diagnostics.h"

namespace aidlc {

struct Declaration;
struct Document;

struct Expression {
    enum class Kind { Integer, Float, String, Character, Boolean, Reference, Unary, Binary, List };
    Kind kind = Kind::Integer;
    Position position;
    /** Literal as written, dotted name of a reference, or the operator. */
    std::string text;
    std::vector<std::unique_ptr<Expression>> operands;
    int height = 1;     // of the tree below, this one included; bounded by the parser
    int64_t value = 0;  // resolved; defaults of integer fields only
    double number = 0;  // resolved; defaults of float and double fields only
};

enum class Builtin {
    None,  // a declared type
    Void,
    Boolean,
    Byte,
    Char,
    Int,
    Long,
    Float,
    Double,
    String,
    IBinder,
    ParcelFileDescriptor,
};

struct TypeReference {
    enum class Shape { Single, List, Array, FixedArray };
    Position position;
    /** Name of the type, or of the element for the array shapes. */
    std::string name;
    Shape shape = Shape::Single;
    std::unique_ptr<Expression> sizeExpression;  // FixedArray only
    bool nullable = false;
    bool utf8InCpp = false;

    Builtin builtin = Builtin::None;           // resolved
    const Declaration* declaration = nullptr;  // resolved; null for a builtin
    int64_t size = 0;                          // resolved; FixedArray only

    bool IsArray() const { return shape != Shape::Single; }
    bool IsEnum() const;  // or an array of one
};

/** A field of a parcelable or a member of a union. */
struct Field {
    TypeReference type;
    std::string name;
    Position position;
    std::unique_ptr<Expression> defaultValue;  // may be null
};

struct Enumerator {
    enum class State { Unknown, InProgress, Known, Bad };
    std::string name;
    Position position;
    std::unique_ptr<Expression> valueExpression;  // null: one more than the one before
    State state = State::Unknown;                 // resolved
    int64_t value = 0;                            // resolved
};

struct Argument {
    enum class Direction { Unspecified, In, Out, InOut };
    Direction direction = Direction::Unspecified;
    TypeReference type;
    std::string name;
    Position position;

    bool GoesIn() const { return direction != Direction::Out; }
    bool ComesOut() const { return direction == Direction::Out || direction == Direction::InOut; }
};

struct Method {
    TypeReference returnType;
    std::string name;
    Position position;
    std::vector<Argument> arguments;
    bool oneway = false;
    bool deprecated = false;
    std::string deprecationNote;
};

struct Declaration {
    enum class Kind { Enum, Parcelable, Union, Interface };
    Kind kind = Kind::Parcelable;
    std::string package;
    std::string name;
    Position position;
    bool vintfStability = false;
    Builtin backing = Builtin::Byte;  // Enum only
    std::vector<Enumerator> enumerators;
    std::vector<Field> fields;
    std::vector<Method> methods;
    const Document* document = nullptr;

    std::string CanonicalName() const { return package + "." + name; }
};

inline bool TypeReference::IsEnum() const {
    return declaration != nullptr && declaration->kind == Declaration::Kind::Enum;
}

struct Import {
    std::string name;
    Position position;
};

/** One file: a package, its imports and exactly one declaration. */
struct Document {
    std::string file;
    std::string package;
    Position packagePosition;
    std::vector<Import> imports;
    Declaration declaration;
};

}  // namespace aidlc
