// SPDX-License-Identifier: MIT
// The levels of an expression, from assignment down to literals.
//
// Operators with two operands have a level. ParseBinaryExpression climbs these: it takes an
// operand, then, as long as the current token is an operator of its level or a tighter one, the
// right operand on the next tighter level, and combines the two. That visits the tokens in the
// order that one function per level would, with the same current token at every combination.
//
// Functions that nest keep their frames small: rarely used literals live in functions of their own,
// messages are composed out of line.
#include "tlMacroExpander/src/ExpressionParser.h"
#include "tlMacroExpander/src/Expressions/ExpressionOperators.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include "tlUtils/StringExt.h"
#include <utility>

namespace telv
{

// Entries.

void ExpressionParser::ParseExpression(LSLiteral& literal)
{
    try
    {
        UnsafeParseExpression(literal);
    }
    catch (const LiteralException& e)
    {
        ThrowAtCurrentToken(e.m_description);
    }
}

void ExpressionParser::UnsafeParseExpression(LSLiteral& literal)
{
    CheckStack(m_token.m_str.m_p1);
    ParseAssignmentExpression(literal);
}

void ExpressionParser::ParseAssignmentExpression(LSLiteral& literal)
{
    ParseConditionalExpression(literal);
    if (IsAssignmentToken(m_token.m_type)) [[unlikely]]
        ParseAssignment(literal);
}

/// The rest after the left side. Errors of the right side and of the operator come first.
[[gnu::noinline, gnu::cold]] void ExpressionParser::ParseAssignment(LSLiteral& literal)
{
    const BinaryOperator* const combination = FindCompoundOperator(m_token.m_type);
    ReadNextToken();
    LSLiteral right;
    ParseConditionalExpression(right);
    if (combination != nullptr)
        right = combination->m_combine(literal, right);
    literal.Assign(right);
}

void ExpressionParser::ParseConditionalExpression(LSLiteral& literal)
{
    CheckStack(m_token.m_str.m_p1);
    ParseBinaryExpression(literal, LEVEL_LOGICAL_OR);
    if (m_token.m_type == TOKEN_QUESTION)
        ParseAlternatives(literal);
}

/// The rest after the condition, which `literal` holds. It is looked at last, so that errors inside
/// the alternatives come first.
[[gnu::noinline]] void ExpressionParser::ParseAlternatives(LSLiteral& literal)
{
    ReadNextToken();
    LSLiteral middle;
    ParseExpression(middle);
    ParseGivenToken(TOKEN_COLON, ":");
    LSLiteral last;
    ParseConditionalExpression(last);
    literal = literal.AsBool(/*allowDataLoss=*/false) ? std::move(middle) : std::move(last);
}

// Two-operand levels.

void ExpressionParser::ParseBinaryExpression(LSLiteral& literal, int level)
{
    ParseUnaryExpression(literal);
    for (;;)
    {
        const BinaryOperator* const op = FindBinaryOperator(m_token.m_type);
        if (op == nullptr || op->m_level < level)
            return;
        ParseRightOperand(literal, *op);
    }
}

/// With the operator as the current token: combines `literal` with what follows.
[[gnu::noinline]] void ExpressionParser::ParseRightOperand(LSLiteral& literal,
                                                           const BinaryOperator& op)
{
    ReadNextToken();
    LSLiteral right;
    ParseBinaryExpression(right, op.m_level + 1);
    // Long sums of strings are built in place: copying what is there for each would be quadratic.
    if (op.m_token == TOKEN_PLUS && literal == LITERAL_STRING && right == LITERAL_STRING)
        literal.m_string += right.m_string;
    else
        literal = op.m_combine(literal, right);
}

void ExpressionParser::ParseLogicalOrExpression(LSLiteral& literal)
{
    ParseBinaryExpression(literal, LEVEL_LOGICAL_OR);
}

void ExpressionParser::ParseLogicalAndExpression(LSLiteral& literal)
{
    ParseBinaryExpression(literal, LEVEL_LOGICAL_AND);
}

void ExpressionParser::ParseBitwiseOrExpression(LSLiteral& literal)
{
    ParseBinaryExpression(literal, LEVEL_BITWISE_OR);
}

void ExpressionParser::ParseBitwiseExOrExpression(LSLiteral& literal)
{
    ParseBinaryExpression(literal, LEVEL_BITWISE_EX_OR);
}

void ExpressionParser::ParseBitwiseAndExpression(LSLiteral& literal)
{
    ParseBinaryExpression(literal, LEVEL_BITWISE_AND);
}

void ExpressionParser::ParseEqualityExpression(LSLiteral& literal)
{
    ParseBinaryExpression(literal, LEVEL_EQUALITY);
}

void ExpressionParser::ParseRelationalExpression(LSLiteral& literal)
{
    ParseBinaryExpression(literal, LEVEL_RELATIONAL);
}

void ExpressionParser::ParseShiftExpression(LSLiteral& literal)
{
    ParseBinaryExpression(literal, LEVEL_SHIFT);
}

void ExpressionParser::ParseAdditiveExpression(LSLiteral& literal)
{
    ParseBinaryExpression(literal, LEVEL_ADDITIVE);
}

void ExpressionParser::ParseMultiplicativeExpression(LSLiteral& literal)
{
    ParseBinaryExpression(literal, LEVEL_MULTIPLICATIVE);
}

void ExpressionParser::ParsePowerExpression(LSLiteral& literal)
{
    ParseBinaryExpression(literal, LEVEL_POWER);
}

// One operand and less.

namespace
{

/// Replaces `literal` by what the prefix makes of it. Out of line: it needs room for a result.
[[gnu::noinline]] void ApplyPrefix(EToken prefix, LSLiteral& literal)
{
    switch (prefix)
    {
    case TOKEN_PLUS:
        literal = +literal;
        break;
    case TOKEN_MINUS:
        literal = -literal;
        break;
    case TOKEN_EXCLAM:
        literal = LSLiteral(!literal);
        break;
    default:
        literal = ~literal;
        break;
    }
}

bool IsPrefix(EToken token)
{
    return token == TOKEN_PLUS || token == TOKEN_MINUS || token == TOKEN_EXCLAM ||
           token == TOKEN_TILDE;
}

} // namespace

void ExpressionParser::ParseUnaryExpression(LSLiteral& literal)
{
    CheckStack(m_token.m_str.m_p1);
    const EToken prefix = m_token.m_type;
    if (!IsPrefix(prefix))
    {
        ParsePostFixExpression(literal);
        return;
    }
    ReadNextToken();
    ParseUnaryExpression(literal);
    ApplyPrefix(prefix, literal);
}

void ExpressionParser::ParsePostFixExpression(LSLiteral& literal)
{
    ParsePrimaryExpression(literal);
    for (;;)
    {
        switch (m_token.m_type)
        {
        case TOKEN_LEFT_SQUARE:
            ParseIndex(literal);
            break;
        case TOKEN_DOT:
            ThrowAtCurrentToken("Dot operator currently not supported");
        case TOKEN_LEFT_PAREN:
            ThrowAtCurrentToken("Function application currently not supported");
        default:
            return;
        }
    }
}

/// With `[` as the current token: replaces `literal` by its character at the index.
[[gnu::noinline]] void ExpressionParser::ParseIndex(LSLiteral& literal)
{
    ReadNextToken();
    LSLiteral index;
    ParseExpression(index);
    ParseGivenToken(TOKEN_RIGHT_SQUARE, "]");
    literal = literal[index];
}

namespace
{

/// The value of a literal token, `literal` unchanged and false for every other token. The digits
/// of integers wrap around.
[[gnu::noinline]] bool GetLiteral(const LSToken& token, LSLiteral& literal)
{
    switch (token.m_type)
    {
    case TOKEN_INTEGER:
        literal = LSLiteral(token.GetLiteralInt64());
        return true;
    case TOKEN_HEX_INTEGER:
        literal = LSLiteral(token.GetLiteralHexInt64());
        return true;
    case TOKEN_FLOAT:
        literal = LSLiteral(token.GetLiteralDouble());
        return true;
    case TOKEN_SINGLE_QUOTED_STRING:
    case TOKEN_DOUBLE_QUOTED_STRING:
        literal.m_type = LITERAL_STRING;
        token.GetLiteralString(literal.m_string);
        return true;
    default:
        return false;
    }
}

} // namespace

void ExpressionParser::ParsePrimaryExpression(LSLiteral& literal)
{
    switch (m_token.m_type)
    {
    case TOKEN_IDENTIFIER:
        ParsePrimaryIdentifierExpression(literal);
        break;
    case TOKEN_LEFT_PAREN:
        ReadNextToken();
        ParseExpression(literal);
        ParseGivenToken(TOKEN_RIGHT_PAREN, ")");
        break;
    default:
        if (!GetLiteral(m_token, literal))
            ThrowUnexpected();
        ReadNextToken();
        break;
    }
}

// Errors.

void ExpressionParser::ThrowAtCurrentToken(SubString description) const
{
    throw LexScannerException(xstring(description), m_token);
}

void ExpressionParser::ThrowReadToken(const char* expected) const
{
    StringStream message(4096);
    message << expected << m_token;
    throw LexScannerException(message.GetString(), m_token);
}

void ExpressionParser::ThrowUnexpected() const
{
    StringStream message(4096);
    message << "Unexpected " << m_token << " after " << m_prevToken << " in expression";
    throw LexScannerException(message.GetString(), m_token);
}

} // namespace telv
