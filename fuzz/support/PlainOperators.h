// SPDX-License-Identifier: MIT
// What the operators of literals must give, worked out in a plain way.
#pragma once

#include "tlMacroExpander/LSLiteral.h"
#include <optional>

namespace telv::fuzz
{

enum class EBinary
{
    Plus,
    Minus,
    Times,
    Divide,
    Remainder,
    Power,
    ShiftLeft,
    ShiftRight,
    And,
    Or,
    ExclusiveOr,
    LogicalAnd,
    LogicalOr
};
constexpr size_t s_numBinaries = 13;

enum class EUnary
{
    Plus,
    Minus,
    Complement,
    Not
};
constexpr size_t s_numUnaries = 4;

enum class EComparison
{
    Equal,
    Less,
    LessOrEqual
};
constexpr size_t s_numComparisons = 3;

/// The result; nothing where an error is wanted.
std::optional<LSLiteral> PlainResult(EBinary operation, const LSLiteral& x, const LSLiteral& y);
std::optional<LSLiteral> PlainResult(EUnary operation, const LSLiteral& x);
std::optional<LSLiteral> PlainResult(EComparison operation, const LSLiteral& x, const LSLiteral& y);

/// The same kind and value; any NaN is the same as any other.
bool IsSame(const LSLiteral& x, const LSLiteral& y);

} // namespace telv::fuzz
