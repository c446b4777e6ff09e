// Evaluates constant expressions with AIDL's integer types.
#include "constants.h"

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <string>

namespace aidlc {
namespace {

// Bounds the recursion through values that refer to others, however they are spread over enums.
constexpr int kMaxDepth = 500;

bool FitsInt(int64_t value) {
    return value >= std::numeric_limits<int32_t>::min() &&
           value <= std::numeric_limits<int32_t>::max();
}

bool FitsBacking(Builtin backing, int64_t value) {
    if (backing == Builtin::Byte) {
        return value >= std::numeric_limits<int8_t>::min() &&
               value <= std::numeric_limits<int8_t>::max();
    }
    return backing == Builtin::Long || FitsInt(value);
}

const char* BackingName(Builtin backing) {
    return backing == Builtin::Byte ? "byte" : backing == Builtin::Int ? "int" : "long";
}

}  // namespace

std::nullopt_t ConstantEvaluator::Fail(const Position& position, const std::string& message) {
    mDiagnostics->Report(position, message);
    return std::nullopt;
}

std::optional<IntegerValue> ConstantEvaluator::Evaluate(const Expression& expression,
                                                        const Document& document) {
    if (mDepth >= kMaxDepth) {
        return Fail(expression.position, "the value depends on too many others: write the number");
    }
    mDepth++;
    const auto value = Dispatch(expression, document);
    mDepth--;
    return value;
}

std::optional<IntegerValue> ConstantEvaluator::Dispatch(const Expression& expression,
                                                        const Document& document) {
    switch (expression.kind) {
        case Expression::Kind::Integer:
            return Literal(expression);
        case Expression::Kind::Reference:
            return Reference(expression, document);
        case Expression::Kind::Unary:
            return Unary(expression, document);
        case Expression::Kind::Binary:
            return Binary(expression, document);
        default:
            return Fail(expression.position, "an integer constant is expected here");
    }
}

std::optional<IntegerValue> ConstantEvaluator::Literal(const Expression& expression) {
    std::string digits = expression.text;
    const bool isLong = digits.back() == 'L' || digits.back() == 'l';
    if (isLong) {
        digits.pop_back();
    }
    const bool isHex = digits.size() > 1 && (digits[1] == 'x' || digits[1] == 'X');
    const char* start = digits.c_str() + (isHex ? 2 : 0);
    char* end = nullptr;
    errno = 0;
    const uint64_t magnitude = std::strtoull(start, &end, isHex ? 16 : 10);
    if (end == start || *end != '\0') {
        return Fail(expression.position, "'" + expression.text + "' is not an integer constant");
    }
    if (!isHex && digits.size() > 1 && digits[0] == '0') {
        return Fail(expression.position, "octal constants are not supported: write '" +
                                                 expression.text + "' in decimal or as 0x...");
    }
    // A hexadecimal constant is a bit pattern, so 0xffffffff is the int -1.
    if (errno == ERANGE || (!isHex && magnitude > std::numeric_limits<int64_t>::max())) {
        return Fail(expression.position, "'" + expression.text + "' does not fit 64 bits");
    }
    const uint64_t intLimit = isHex ? std::numeric_limits<uint32_t>::max()
                                    : uint64_t{std::numeric_limits<int32_t>::max()};
    if (isLong || magnitude > intLimit) {
        return IntegerValue{static_cast<int64_t>(magnitude), true};
    }
    return IntegerValue{static_cast<int32_t>(static_cast<uint32_t>(magnitude)), false};
}

std::optional<size_t> ConstantEvaluator::EnumeratorIndex(const Declaration& declaration,
                                                         const std::string& name) {
    const auto [index, isNew] = mIndexes.try_emplace(&declaration);
    for (size_t i = 0; isNew && i < declaration.enumerators.size(); i++) {
        index->second.emplace(declaration.enumerators[i].name, i);
    }
    const auto found = index->second.find(name);
    return found != index->second.end() ? std::optional(found->second) : std::nullopt;
}

const Enumerator* ConstantEvaluator::FindEnumerator(const Expression& reference,
                                                    const Document& document, Declaration** owner) {
    const size_t dot = reference.text.rfind('.');
    const std::string name =
            dot == std::string::npos ? reference.text : reference.text.substr(dot + 1);
    const std::string type =
            dot == std::string::npos ? document.declaration.name : reference.text.substr(0, dot);
    *owner = mTree->Lookup(document, type);
    if (*owner == nullptr && mTree->IsReported(document, type)) {
        return nullptr;
    }
    if (*owner == nullptr) {
        Fail(reference.position, "unknown type '" + type + "': import it or check the spelling");
        return nullptr;
    }
    if (const auto index = EnumeratorIndex(**owner, name)) {
        return EvaluateEnumerator(*owner, *index) ? &(*owner)->enumerators[*index] : nullptr;
    }
    Fail(reference.position, (*owner)->kind == Declaration::Kind::Enum
                                     ? "enum " + type + " has no enumerator '" + name + "'"
                                     : "'" + reference.text + "' is not an enumerator");
    return nullptr;
}

std::optional<IntegerValue> ConstantEvaluator::Reference(const Expression& expression,
                                                         const Document& document) {
    Declaration* owner = nullptr;
    const Enumerator* enumerator = FindEnumerator(expression, document, &owner);
    if (enumerator == nullptr) {
        return std::nullopt;
    }
    return IntegerValue{enumerator->value, owner->backing == Builtin::Long};
}

std::optional<IntegerValue> ConstantEvaluator::Unary(const Expression& expression,
                                                     const Document& document) {
    const auto operand = Evaluate(*expression.operands[0], document);
    if (!operand) {
        return std::nullopt;
    }
    if (expression.text == "+") {
        return operand;
    }
    if (expression.text == "~") {
        return IntegerValue{~operand->value, operand->isLong};
    }
    if (operand->value == std::numeric_limits<int64_t>::min() ||
        (!operand->isLong && !FitsInt(-operand->value))) {
        return Fail(expression.position, "the negated value does not fit its type");
    }
    return IntegerValue{-operand->value, operand->isLong};
}

std::optional<IntegerValue> ConstantEvaluator::Shift(const Expression& expression,
                                                     IntegerValue left, int64_t count) {
    const int64_t width = left.isLong ? 64 : 32;
    if (count < 0 || count >= width) {
        return Fail(expression.position,
                    "a shift by " + std::to_string(count) + " is outside 0.." +
                            std::to_string(width - 1) +
                            (left.isLong ? "" : ": give the left side an L suffix for 64 bits"));
    }
    if (expression.text == ">>") {
        return IntegerValue{left.value >> count, left.isLong};
    }
    const uint64_t shifted = static_cast<uint64_t>(left.value) << count;
    return IntegerValue{left.isLong ? static_cast<int64_t>(shifted)
                                    : static_cast<int32_t>(static_cast<uint32_t>(shifted)),
                        left.isLong};
}

std::optional<IntegerValue> ConstantEvaluator::Binary(const Expression& expression,
                                                      const Document& document) {
    const auto left = Evaluate(*expression.operands[0], document);
    const auto right = Evaluate(*expression.operands[1], document);
    if (!left || !right) {
        return std::nullopt;
    }
    if (expression.text == "<<" || expression.text == ">>") {
        return Shift(expression, *left, right->value);
    }
    IntegerValue result{0, left->isLong || right->isLong};
    bool overflow = false;
    switch (expression.text[0]) {
        case '|':
            result.value = left->value | right->value;
            break;
        case '^':
            result.value = left->value ^ right->value;
            break;
        case '&':
            result.value = left->value & right->value;
            break;
        case '+':
            overflow = __builtin_add_overflow(left->value, right->value, &result.value);
            break;
        case '-':
            overflow = __builtin_sub_overflow(left->value, right->value, &result.value);
            break;
        default:
            overflow = __builtin_mul_overflow(left->value, right->value, &result.value);
            break;
    }
    if (overflow || (!result.isLong && !FitsInt(result.value))) {
        return Fail(expression.position, "the result of '" + expression.text + "' does not fit " +
                                                 (result.isLong ? "long" : "int"));
    }
    return result;
}

bool ConstantEvaluator::EvaluateEnumerator(Declaration* declaration, size_t index) {
    Enumerator& enumerator = declaration->enumerators[index];
    if (enumerator.state == Enumerator::State::InProgress) {
        Fail(enumerator.position, "the value of '" + enumerator.name + "' depends on itself");
        enumerator.state = Enumerator::State::Bad;
    }
    if (enumerator.state != Enumerator::State::Unknown) {
        return enumerator.state == Enumerator::State::Known;
    }
    enumerator.state = Enumerator::State::InProgress;
    std::optional<IntegerValue> value = IntegerValue{};
    if (enumerator.valueExpression != nullptr) {
        value = Evaluate(*enumerator.valueExpression, *declaration->document);
    } else if (index > 0) {
        // From the first unknown one on, so that a long enum is no deep recursion.
        size_t first = index - 1;
        while (first > 0 && declaration->enumerators[first].valueExpression == nullptr &&
               declaration->enumerators[first].state == Enumerator::State::Unknown) {
            first--;
        }
        while (first < index - 1) {
            EvaluateEnumerator(declaration, first++);
        }
        const bool known = EvaluateEnumerator(declaration, index - 1);
        const int64_t before = declaration->enumerators[index - 1].value;
        value.reset();
        if (known && before != std::numeric_limits<int64_t>::max()) {
            value = IntegerValue{before + 1, true};
        } else if (known) {
            Fail(enumerator.position, "no value is left for '" + enumerator.name + "'");
        }
    }
    if (value && !FitsBacking(declaration->backing, value->value)) {
        Fail(enumerator.position,
             "the value " + std::to_string(value->value) + " of '" + enumerator.name +
                     "' does not fit the enum's backing type " + BackingName(declaration->backing));
        value.reset();
    }
    enumerator.value = value ? value->value : 0;
    enumerator.state = value ? Enumerator::State::Known : Enumerator::State::Bad;
    return value.has_value();
}

void ConstantEvaluator::EvaluateEnum(Declaration* declaration) {
    for (size_t i = 0; i < declaration->enumerators.size(); i++) {
        EvaluateEnumerator(declaration, i);
    }
}

}  // namespace aidlc
