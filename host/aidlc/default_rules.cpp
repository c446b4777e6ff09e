// Rules about the defaults of fields; they also find the values that the emitter writes.
#include <limits>

#include "checker.h"
#include "literals.h"

namespace aidlc {
namespace {

/** Value of a decimal number with any signs before it. */
std::optional<double> SignedDecimal(const Expression& value, bool isFloat) {
    if (value.kind == Expression::Kind::Unary && value.text != "~") {
        const auto operand = SignedDecimal(*value.operands[0], isFloat);
        return operand && value.text == "-" ? std::optional(-*operand) : operand;
    }
    return value.kind == Expression::Kind::Float || value.kind == Expression::Kind::Integer
                   ? DecimalValue(value.text, isFloat)
                   : std::nullopt;
}

}  // namespace

void Checker::CheckDefault(const Document& document, Field* field) {
    Expression& value = *field->defaultValue;
    const TypeReference& type = field->type;
    if (type.nullable) {
        Fail(value.position, "a @nullable field starts as null and takes no default");
    } else if (!type.IsArray()) {
        CheckScalarDefault(document, type, &value);
    } else if (value.kind != Expression::Kind::List) {
        Fail(value.position, "the default of an array is a list in braces");
    } else if (type.shape == TypeReference::Shape::FixedArray &&
               static_cast<int64_t>(value.operands.size()) != type.size) {
        Fail(value.position, "the default has " + std::to_string(value.operands.size()) +
                                     " elements, the array " + std::to_string(type.size));
    } else {
        for (const auto& element : value.operands) {
            CheckScalarDefault(document, type, element.get());
        }
    }
}

void Checker::CheckScalarDefault(const Document& document, const TypeReference& type,
                                 Expression* value) {
    switch (type.builtin) {
        case Builtin::Byte:
        case Builtin::Int:
        case Builtin::Long:
            CheckIntegerDefault(document, type, value);
            return;
        case Builtin::Float:
        case Builtin::Double: {
            const auto number = SignedDecimal(*value, type.builtin == Builtin::Float);
            value->number = number.value_or(0);
            RequireDefault(number.has_value(), *value,
                           "the default is not a decimal number that fits " + type.name);
            return;
        }
        case Builtin::Boolean:
            RequireDefault(value->kind == Expression::Kind::Boolean, *value,
                           "the default of a boolean is true or false");
            return;
        case Builtin::Char:
            RequireDefault(value->kind == Expression::Kind::Character && IsCharacter(value->text),
                           *value,
                           "the default of a char is one ASCII character or one escape in single "
                           "quotes: '\\n', '\\u20ac'");
            return;
        case Builtin::String:
            RequireDefault(value->kind == Expression::Kind::String && IsStringText(value->text),
                           *value,
                           "the default of a String is text in double quotes, with the escapes "
                           "\\b \\f \\n \\r \\t \\\\ \\\" \\' and \\uXXXX only");
            return;
        default:
            break;
    }
    if (type.IsEnum()) {
        CheckEnumDefault(document, type, *value);
    } else {
        Fail(value->position, "a field of type " + type.name + " takes no default");
    }
}

void Checker::RequireDefault(bool good, const Expression& value, const std::string& message) {
    if (!good) {
        Fail(value.position, message);
    }
}

void Checker::CheckIntegerDefault(const Document& document, const TypeReference& type,
                                  Expression* value) {
    const auto result = mConstants.Evaluate(*value, document);
    const int64_t limit = type.builtin == Builtin::Byte  ? std::numeric_limits<int8_t>::max()
                          : type.builtin == Builtin::Int ? std::numeric_limits<int32_t>::max()
                                                         : std::numeric_limits<int64_t>::max();
    if (result && (result->value > limit || result->value < -limit - 1)) {
        Fail(value->position,
             "the default " + std::to_string(result->value) + " does not fit " + type.name);
    }
    value->value = result ? result->value : 0;
}

void Checker::CheckEnumDefault(const Document& document, const TypeReference& type,
                               const Expression& value) {
    Declaration* owner = nullptr;
    if (value.kind != Expression::Kind::Reference) {
        Fail(value.position, "the default of an enum is one of its enumerators");
    } else if (mConstants.FindEnumerator(value, document, &owner) != nullptr &&
               owner != type.declaration) {
        Fail(value.position, "'" + value.text + "' is not of enum " + type.name);
    }
}

}  // namespace aidlc
