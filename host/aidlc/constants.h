// Evaluates constant expressions with AIDL's integer types.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>

#include "ast.h"
#include "diagnostics.h"
#include "source_tree.h"

namespace aidlc {

/** An integer constant; isLong says whether it is a 64-bit one. */
struct IntegerValue {
    int64_t value = 0;
    bool isLong = false;
};

/**
 * Arithmetic is done in 32 bits unless an operand is long; sums and products that do not fit are
 * errors, shifts drop the bits that leave the type.
 */
class ConstantEvaluator {
  public:
    ConstantEvaluator(SourceTree* tree, Diagnostics* diagnostics)
        : mTree(tree), mDiagnostics(diagnostics) {}

    /** The value of an integer expression found in document; nothing after reporting an error. */
    std::optional<IntegerValue> Evaluate(const Expression& expression, const Document& document);

    /** Gives every enumerator of an enum its value, reporting values that do not fit. */
    void EvaluateEnum(Declaration* declaration);

    /** The enumerator that "Enum.NAME" or, inside its enum, "NAME" means; null after a report. */
    const Enumerator* FindEnumerator(const Expression& reference, const Document& document,
                                     Declaration** owner);

  private:
    std::optional<IntegerValue> Dispatch(const Expression& expression, const Document& document);
    std::optional<IntegerValue> Literal(const Expression& expression);
    std::optional<IntegerValue> Reference(const Expression& expression, const Document& document);
    std::optional<IntegerValue> Unary(const Expression& expression, const Document& document);
    std::optional<IntegerValue> Binary(const Expression& expression, const Document& document);
    std::optional<IntegerValue> Shift(const Expression& expression, IntegerValue left,
                                      int64_t count);
    bool EvaluateEnumerator(Declaration* declaration, size_t index);
    /** By name; of a name that is there twice, the first. Nothing if there is none. */
    std::optional<size_t> EnumeratorIndex(const Declaration& declaration, const std::string& name);
    std::nullopt_t Fail(const Position& position, const std::string& message);

    SourceTree* mTree;
    Diagnostics* mDiagnostics;
    // By enum; the names lie in its enumerators, which no longer change.
    std::unordered_map<const Declaration*, std::unordered_map<std::string_view, size_t>> mIndexes;
    int mDepth = 0;  // of Evaluate() calls
};

}  // namespace aidlc
