// SPDX-License-Identifier: MIT
// What the expression parser knows of operators with two operands: their level, and what they do.
// Only the parser uses it; see ExpressionParser.h.
#pragma once

#include "tlMacroExpander/LSLiteral.h"
#include "tlMacroExpander/src/LSToken.h"

namespace telv
{

/// The levels of two-operand operators, loosest first.
enum ELevel : int
{
    LEVEL_LOGICAL_OR,
    LEVEL_LOGICAL_AND,
    LEVEL_BITWISE_OR,
    LEVEL_BITWISE_EX_OR,
    LEVEL_BITWISE_AND,
    LEVEL_EQUALITY,
    LEVEL_RELATIONAL,
    LEVEL_SHIFT,
    LEVEL_ADDITIVE,
    LEVEL_MULTIPLICATIVE,
    LEVEL_POWER,
};

/// One operator, in static storage.
struct BinaryOperator
{
    EToken m_token;
    ELevel m_level;
    LSLiteral (*m_combine)(const LSLiteral& x, const LSLiteral& y); ///< Throws LiteralException.
};

/// The operator that `token` spells, or null.
const BinaryOperator* FindBinaryOperator(EToken token);

/// The operator inside a compound assignment; null for `=` and for what is no assignment.
const BinaryOperator* FindCompoundOperator(EToken token);

} // namespace telv
