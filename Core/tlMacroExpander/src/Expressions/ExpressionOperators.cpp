// SPDX-License-Identifier: MIT
// The tables of two-operand operators and of assignments.
//
// Both are searched in order: they are short, and an expression looks into them a few times.
#include "tlMacroExpander/src/Expressions/ExpressionOperators.h"
#include "tlMacroExpander/src/ExpressionParser.h"

namespace telv
{

namespace
{

LSLiteral Equal(const LSLiteral& x, const LSLiteral& y)
{
    return LSLiteral(IsEqual(x, y));
}

LSLiteral NotEqual(const LSLiteral& x, const LSLiteral& y)
{
    return LSLiteral(!IsEqual(x, y));
}

LSLiteral Less(const LSLiteral& x, const LSLiteral& y)
{
    return LSLiteral(IsLess(x, y));
}

LSLiteral Greater(const LSLiteral& x, const LSLiteral& y)
{
    return LSLiteral(IsLess(y, x));
}

LSLiteral LessOrEqual(const LSLiteral& x, const LSLiteral& y)
{
    return LSLiteral(IsLessThanOrEqual(x, y));
}

LSLiteral GreaterOrEqual(const LSLiteral& x, const LSLiteral& y)
{
    return LSLiteral(IsLessThanOrEqual(y, x));
}

// clang-format off
constexpr BinaryOperator s_operators[] = {
    {TOKEN_DBL_VLINE,     LEVEL_LOGICAL_OR,     operator||},
    {TOKEN_DBL_AMPERSAND, LEVEL_LOGICAL_AND,    operator&&},
    {TOKEN_VLINE,         LEVEL_BITWISE_OR,     operator|},
    {TOKEN_CARET,         LEVEL_BITWISE_EX_OR,  operator^},
    {TOKEN_AMPERSAND,     LEVEL_BITWISE_AND,    operator&},
    {TOKEN_DBL_EQUAL,     LEVEL_EQUALITY,       Equal},
    {TOKEN_EXCLAM_EQUAL,  LEVEL_EQUALITY,       NotEqual},
    {TOKEN_LESS,          LEVEL_RELATIONAL,     Less},
    {TOKEN_GREATER,       LEVEL_RELATIONAL,     Greater},
    {TOKEN_LESS_EQUAL,    LEVEL_RELATIONAL,     LessOrEqual},
    {TOKEN_GREATER_EQUAL, LEVEL_RELATIONAL,     GreaterOrEqual},
    {TOKEN_DBL_LESS,      LEVEL_SHIFT,          operator<<},
    {TOKEN_DBL_GREATER,   LEVEL_SHIFT,          operator>>},
    {TOKEN_PLUS,          LEVEL_ADDITIVE,       operator+},
    {TOKEN_MINUS,         LEVEL_ADDITIVE,       operator-},
    {TOKEN_ASTERISK,      LEVEL_MULTIPLICATIVE, operator*},
    {TOKEN_FORWARD_SLASH, LEVEL_MULTIPLICATIVE, operator/},
    {TOKEN_PERCENT,       LEVEL_MULTIPLICATIVE, operator%},
    {TOKEN_DBL_CARET,     LEVEL_POWER,          Power},
};
// clang-format on

/// An assignment and the operator that it combines with, TOKEN_UNDEF for none.
struct Assignment
{
    EToken m_token;
    EToken m_operator;
};

// clang-format off
constexpr Assignment s_assignments[] = {
    {TOKEN_EQUAL,               TOKEN_UNDEF},
    {TOKEN_PLUS_EQUAL,          TOKEN_PLUS},
    {TOKEN_MINUS_EQUAL,         TOKEN_MINUS},
    {TOKEN_ASTERISK_EQUAL,      TOKEN_ASTERISK},
    {TOKEN_SLASH_EQUAL,         TOKEN_FORWARD_SLASH},
    {TOKEN_PERCENT_EQUAL,       TOKEN_PERCENT},
    {TOKEN_AMPERSAND_EQUAL,     TOKEN_AMPERSAND},
    {TOKEN_VLINE_EQUAL,         TOKEN_VLINE},
    {TOKEN_CARET_EQUAL,         TOKEN_CARET},
    {TOKEN_DBL_LESS_EQUAL,      TOKEN_DBL_LESS},
    {TOKEN_DBL_GREATER_EQUAL,   TOKEN_DBL_GREATER},
    {TOKEN_DBL_AMPERSAND_EQUAL, TOKEN_DBL_AMPERSAND},
    {TOKEN_DBL_VLINE_EQUAL,     TOKEN_DBL_VLINE},
    {TOKEN_DBL_CARET_EQUAL,     TOKEN_DBL_CARET},
};
// clang-format on

const Assignment* FindAssignment(EToken token)
{
    for (const Assignment& assignment : s_assignments)
        if (assignment.m_token == token)
            return &assignment;
    return nullptr;
}

} // namespace

const BinaryOperator* FindBinaryOperator(EToken token)
{
    for (const BinaryOperator& op : s_operators)
        if (op.m_token == token)
            return &op;
    return nullptr;
}

const BinaryOperator* FindCompoundOperator(EToken token)
{
    const Assignment* const assignment = FindAssignment(token);
    return assignment == nullptr ? nullptr : FindBinaryOperator(assignment->m_operator);
}

bool IsAssignmentToken(EToken token)
{
    return FindAssignment(token) != nullptr;
}

} // namespace telv
