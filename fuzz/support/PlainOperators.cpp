// SPDX-License-Identifier: MIT
// Whole numbers are calculated with twice the bits and cut off; texts are compared by the standard
// library.
#include "PlainOperators.h"
#include <cmath>
#include <limits>
#include <string>

namespace telv::fuzz
{

namespace
{

__extension__ using Wide = __int128;

bool IsWhole(const LSLiteral& x)
{
    return x.m_type == LITERAL_INT64;
}

bool IsNumber(const LSLiteral& x)
{
    return IsWhole(x) || x.m_type == LITERAL_FLOAT64;
}

bool IsText(const LSLiteral& x)
{
    return x.m_type == LITERAL_STRING || x.m_type == LITERAL_CHAR;
}

bool IsBool(const LSLiteral& x)
{
    return x.m_type == LITERAL_BOOL;
}

double Number(const LSLiteral& x)
{
    return IsWhole(x) ? static_cast<double>(x.m_int64) : x.m_float64;
}

std::string Text(const LSLiteral& x)
{
    if (x.m_type == LITERAL_CHAR)
        return std::string(1, x.m_char);
    return std::string(x.m_string.begin(), x.m_string.end());
}

LSLiteral TextLiteral(const std::string& text)
{
    return LSLiteral(xstring(SubString(text.data(), text.data() + text.size())));
}

LSLiteral CutOff(Wide value)
{
    return LSLiteral(static_cast<long>(static_cast<uint64>(value)));
}

Wide ShiftRight(Wide x, unsigned count)
{
    const Wide divisor = Wide(1) << count;
    const Wide quotient = x / divisor;
    return quotient - (x % divisor < 0 ? 1 : 0);
}

std::optional<LSLiteral> WholeResult(EBinary operation, int64 left, int64 right)
{
    const Wide x = left;
    const Wide y = right;
    const auto count = static_cast<unsigned>(static_cast<uint64>(right) % 64);
    const auto bits = static_cast<uint64>(left);
    const auto otherBits = static_cast<uint64>(right);
    switch (operation)
    {
    case EBinary::Plus:
        return CutOff(x + y);
    case EBinary::Minus:
        return CutOff(x - y);
    case EBinary::Times:
        return CutOff(x * y);
    case EBinary::Divide:
        return y == 0 ? std::nullopt : std::optional(CutOff(x / y));
    case EBinary::Remainder:
        return y == 0 ? std::nullopt : std::optional(CutOff(x % y));
    case EBinary::ShiftLeft:
        return CutOff(static_cast<Wide>(bits << count));
    case EBinary::ShiftRight:
        return CutOff(ShiftRight(x, count));
    case EBinary::And:
        return CutOff(static_cast<Wide>(bits & otherBits));
    case EBinary::Or:
        return CutOff(static_cast<Wide>(bits | otherBits));
    case EBinary::ExclusiveOr:
        return CutOff(static_cast<Wide>((bits | otherBits) - (bits & otherBits)));
    default:
        return std::nullopt;
    }
}

std::optional<LSLiteral> NumberResult(EBinary operation, double x, double y)
{
    switch (operation)
    {
    case EBinary::Plus:
        return LSLiteral(x + y);
    case EBinary::Minus:
        return LSLiteral(x - y);
    case EBinary::Times:
        return LSLiteral(x * y);
    case EBinary::Divide:
        return y == 0 ? std::nullopt : std::optional(LSLiteral(x / y));
    default:
        return std::nullopt;
    }
}

/// Cut off, and kept within bounds; no number is 0.
long Saturated(double x)
{
    constexpr double bound = 9223372036854775808.0;
    if (std::isnan(x))
        return 0;
    if (x >= bound)
        return std::numeric_limits<long>::max();
    return x < -bound ? std::numeric_limits<long>::min() : static_cast<long>(x);
}

std::optional<LSLiteral> PowerResult(const LSLiteral& x, const LSLiteral& y)
{
    if (!IsNumber(x) || !IsNumber(y) || (Number(x) == 0 && Number(y) < 0))
        return std::nullopt;
    const double power = std::pow(Number(x), Number(y));
    return IsWhole(x) && IsWhole(y) ? LSLiteral(Saturated(power)) : LSLiteral(power);
}

/// `decisive` is the value of the first operand that makes the second one needless.
std::optional<LSLiteral> LogicalResult(bool decisive, const LSLiteral& x, const LSLiteral& y)
{
    if (!IsBool(x))
        return std::nullopt;
    if (x.m_bool == decisive)
        return LSLiteral(decisive);
    return IsBool(y) ? std::optional(LSLiteral(y.m_bool)) : std::nullopt;
}

/// The code, where the literal is or can become a character.
std::optional<int> Code(const LSLiteral& x)
{
    if (x.m_type == LITERAL_CHAR)
        return static_cast<signed char>(x.m_char);
    const bool fits = IsWhole(x) && x.m_int64 >= -128 && x.m_int64 <= 127;
    return fits ? std::optional(static_cast<int>(x.m_int64)) : std::nullopt;
}

template <class T>
bool Compare(EComparison operation, const T& x, const T& y)
{
    switch (operation)
    {
    case EComparison::Equal:
        return x == y;
    case EComparison::Less:
        return x < y;
    default:
        return x <= y;
    }
}

} // namespace

std::optional<LSLiteral> PlainResult(EBinary operation, const LSLiteral& x, const LSLiteral& y)
{
    if (operation == EBinary::Power)
        return PowerResult(x, y);
    if (operation == EBinary::LogicalAnd || operation == EBinary::LogicalOr)
        return LogicalResult(operation == EBinary::LogicalOr, x, y);
    if (operation == EBinary::Plus && IsText(x) && IsText(y))
        return TextLiteral(Text(x) + Text(y));
    if (IsWhole(x) && IsWhole(y))
        return WholeResult(operation, x.m_int64, y.m_int64);
    if (IsNumber(x) && IsNumber(y))
        return NumberResult(operation, Number(x), Number(y));
    return std::nullopt;
}

std::optional<LSLiteral> PlainResult(EUnary operation, const LSLiteral& x)
{
    if (operation == EUnary::Not)
        return IsBool(x) ? std::optional(LSLiteral(!x.m_bool)) : std::nullopt;
    if (operation == EUnary::Complement)
        return IsWhole(x) ? std::optional(CutOff(-Wide(x.m_int64) - 1)) : std::nullopt;
    if (!IsNumber(x))
        return std::nullopt;
    if (operation == EUnary::Plus)
        return x;
    return IsWhole(x) ? CutOff(-Wide(x.m_int64)) : LSLiteral(-x.m_float64);
}

std::optional<LSLiteral> PlainResult(EComparison operation, const LSLiteral& x, const LSLiteral& y)
{
    const bool isEqual = operation == EComparison::Equal;
    if (isEqual && IsBool(x) && IsBool(y))
        return LSLiteral(x.m_bool == y.m_bool);
    if (isEqual && Code(x) && Code(y))
        return LSLiteral(*Code(x) == *Code(y));
    if (IsText(x) && IsText(y))
        return LSLiteral(Compare(operation, Text(x), Text(y)));
    if (IsWhole(x) && IsWhole(y))
        return LSLiteral(Compare(operation, x.m_int64, y.m_int64));
    if (IsNumber(x) && IsNumber(y))
        return LSLiteral(Compare(operation, Number(x), Number(y)));
    return std::nullopt;
}

bool IsSame(const LSLiteral& x, const LSLiteral& y)
{
    if (x.m_type == LITERAL_FLOAT64 && y.m_type == LITERAL_FLOAT64 && std::isnan(x.m_float64))
        return std::isnan(y.m_float64);
    return x == y;
}

} // namespace telv::fuzz
