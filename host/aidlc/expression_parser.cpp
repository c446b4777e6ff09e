// Parses constant expressions, binary operators by precedence.
#include <algorithm>

#include "parser.h"

namespace aidlc {
namespace {

// Weakest first, as in C.
const std::vector<std::vector<std::string>>& PrecedenceLevels() {
    static const auto* levels = new std::vector<std::vector<std::string>>{
            {"|"}, {"^"}, {"&"}, {"<<", ">>"}, {"+", "-"}, {"*"}};
    return *levels;
}

// Both bound recursion on hostile input: that of the parser, and that over the finished tree.
constexpr int kMaxDepth = 64;
constexpr int kMaxHeight = 128;

std::unique_ptr<Expression> MakeExpression(Expression::Kind kind, const Token& token) {
    auto expression = std::make_unique<Expression>();
    expression->kind = kind;
    expression->position = token.position;
    expression->text = token.text;
    return expression;
}

void AddOperand(Expression* expression, std::unique_ptr<Expression> operand) {
    expression->height = std::max(expression->height, operand->height + 1);
    expression->operands.push_back(std::move(operand));
}

}  // namespace

bool Parser::ParseExpression(std::unique_ptr<Expression>* result) {
    if (mDepth >= kMaxDepth) {
        return Fail("expression is nested too deeply");
    }
    mDepth++;
    const bool good = ParseBinary(0, result);
    mDepth--;
    return good;
}

bool Parser::TakeOperator(const std::string& symbol) {
    if (symbol != ">>") {
        return TakeIf(symbol.c_str());
    }
    // The lexer leaves ">>" as two tokens because type arguments may end so.
    const Token& first = Next();
    if (!first.Is(">") || !mTokens[mIndex + 1].Is(">") ||
        mTokens[mIndex + 1].position.line != first.position.line ||
        mTokens[mIndex + 1].position.column != first.position.column + 1) {
        return false;
    }
    Take();
    Take();
    return true;
}

bool Parser::ParseBinary(size_t level, std::unique_ptr<Expression>* result) {
    if (level == PrecedenceLevels().size()) {
        return ParseUnary(result);
    }
    if (!ParseBinary(level + 1, result)) {
        return false;
    }
    bool more = true;
    while (more) {
        more = false;
        for (const std::string& symbol : PrecedenceLevels()[level]) {
            Token token = Next();
            if (!TakeOperator(symbol)) {
                continue;
            }
            token.text = symbol;
            auto binary = MakeExpression(Expression::Kind::Binary, token);
            std::unique_ptr<Expression> right;
            if (!ParseBinary(level + 1, &right)) {
                return false;
            }
            AddOperand(binary.get(), std::move(*result));
            AddOperand(binary.get(), std::move(right));
            *result = std::move(binary);
            if ((*result)->height > kMaxHeight) {
                return Fail("expression is too long");
            }
            more = true;
            break;
        }
    }
    return true;
}

bool Parser::ParseUnary(std::unique_ptr<Expression>* result) {
    if (!Next().Is("-") && !Next().Is("+") && !Next().Is("~")) {
        return ParsePrimary(result);
    }
    if (mDepth >= kMaxDepth) {
        return Fail("expression is nested too deeply");
    }
    *result = MakeExpression(Expression::Kind::Unary, Take());
    std::unique_ptr<Expression> operand;
    mDepth++;
    const bool good = ParseUnary(&operand);
    mDepth--;
    if (good) {
        AddOperand(result->get(), std::move(operand));
    }
    return good;
}

bool Parser::ParsePrimary(std::unique_ptr<Expression>* result) {
    const Token token = Next();
    switch (token.kind) {
        case TokenKind::Integer:
            *result = MakeExpression(Expression::Kind::Integer, Take());
            return true;
        case TokenKind::Float:
            *result = MakeExpression(Expression::Kind::Float, Take());
            return true;
        case TokenKind::String:
            *result = MakeExpression(Expression::Kind::String, Take());
            return true;
        case TokenKind::Character:
            *result = MakeExpression(Expression::Kind::Character, Take());
            return true;
        case TokenKind::Identifier:
            break;
        default:
            if (TakeIf("(")) {
                return ParseExpression(result) && Expect(")", "to close the parenthesis");
            }
            return TakeIf("{") ? ParseList(result)
                               : Fail("expected a constant value, found " + Describe(token));
    }
    if (token.Is("true") || token.Is("false")) {
        *result = MakeExpression(Expression::Kind::Boolean, Take());
        return true;
    }
    *result = MakeExpression(Expression::Kind::Reference, token);
    Position position;
    return ParseQualifiedName("a constant", &(*result)->text, &position);
}

bool Parser::ParseList(std::unique_ptr<Expression>* result) {
    *result = std::make_unique<Expression>();
    (*result)->kind = Expression::Kind::List;
    (*result)->position = Next().position;
    while (!TakeIf("}")) {
        std::unique_ptr<Expression> element;
        if (!ParseExpression(&element)) {
            return false;
        }
        AddOperand(result->get(), std::move(element));
        if (!TakeIf(",") && !Next().Is("}")) {
            return Fail("expected ',' or '}' in a list, found " + Describe(Next()));
        }
    }
    return true;
}

}  // namespace aidlc
