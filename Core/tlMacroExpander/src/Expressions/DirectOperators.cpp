// SPDX-License-Identifier: MIT
// What operators and functions do to plain values; what would be an error is false.
//
// The conversions that an operator tries are those of LSLiteralOperators.cpp, in the same order:
// texts, then integers, then floats; for equality bools and chars come first.
#include "tlMacroExpander/src/Expressions/DirectExpression.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Values/MathFunctions.h"

namespace telv
{

namespace
{

/// Of both operands, or undef: the step that applies.
ELiteral NumberKind(const DirectValue& x, const DirectValue& y)
{
    const bool xIsInt = x.m_type == LITERAL_INT64;
    const bool yIsInt = y.m_type == LITERAL_INT64;
    if (xIsInt && yIsInt)
        return LITERAL_INT64;
    if ((xIsInt || x.m_type == LITERAL_FLOAT64) && (yIsInt || y.m_type == LITERAL_FLOAT64))
        return LITERAL_FLOAT64;
    return LITERAL_UNDEF;
}

double Float(const DirectValue& value)
{
    return value.m_type == LITERAL_INT64 ? static_cast<double>(value.m_int64) : value.m_float64;
}

/// Operators on two integers; `op` is none of the comparisons.
TELV_WRAPS bool CombineInts(EToken op, DirectValue& x, int64 y)
{
    const uint64 a = static_cast<uint64>(x.m_int64);
    const uint64 b = static_cast<uint64>(y);
    switch (op)
    {
    case TOKEN_PLUS:
        x.m_int64 = static_cast<int64>(a + b);
        return true;
    case TOKEN_MINUS:
        x.m_int64 = static_cast<int64>(a - b);
        return true;
    case TOKEN_ASTERISK:
        x.m_int64 = static_cast<int64>(a * b);
        return true;
    case TOKEN_FORWARD_SLASH:
        if (y == 0)
            return false;
        x.m_int64 = y == -1 ? static_cast<int64>(0 - a) : x.m_int64 / y;
        return true;
    case TOKEN_PERCENT:
        if (y == 0)
            return false;
        x.m_int64 = y == -1 ? 0 : x.m_int64 % y;
        return true;
    case TOKEN_DBL_LESS:
        x.m_int64 = static_cast<int64>(a << (b & 63));
        return true;
    case TOKEN_DBL_GREATER:
        x.m_int64 = x.m_int64 >> (b & 63);
        return true;
    case TOKEN_AMPERSAND:
        x.m_int64 &= y;
        return true;
    case TOKEN_VLINE:
        x.m_int64 |= y;
        return true;
    case TOKEN_CARET:
        x.m_int64 ^= y;
        return true;
    default:
        return false;
    }
}

bool CombineFloats(EToken op, DirectValue& value, double x, double y)
{
    switch (op)
    {
    case TOKEN_PLUS:
        value.SetFloat64(x + y);
        return true;
    case TOKEN_MINUS:
        value.SetFloat64(x - y);
        return true;
    case TOKEN_ASTERISK:
        value.SetFloat64(x * y);
        return true;
    case TOKEN_FORWARD_SLASH:
        value.SetFloat64(y == 0.0 ? 0.0 : x / y);
        return y != 0.0;
    default:
        return false;
    }
}

bool Power(DirectValue& x, const DirectValue& y)
{
    const ELiteral kind = NumberKind(x, y);
    const double base = Float(x);
    const double exponent = Float(y);
    if (kind == LITERAL_UNDEF || (base == 0.0 && exponent < 0.0))
        return false;
    const MathFunctions* const math = FindMathFunctions();
    if (math == nullptr)
        return false;
    const LSLiteral power(math->m_pow(base, exponent));
    if (kind == LITERAL_INT64)
        x.SetInt64(power.AsInt64(/*allowDataLoss=*/true));
    else
        x.SetFloat64(power.m_float64);
    return true;
}

/// The outcome of a comparison of two ordered values.
template <class T>
bool Compare(EToken op, DirectValue& value, const T& x, const T& y)
{
    switch (op)
    {
    case TOKEN_LESS:
        value.SetBool(x < y);
        return true;
    case TOKEN_GREATER:
        value.SetBool(x > y);
        return true;
    case TOKEN_LESS_EQUAL:
        value.SetBool(x <= y);
        return true;
    case TOKEN_GREATER_EQUAL:
        value.SetBool(x >= y);
        return true;
    case TOKEN_DBL_EQUAL:
        value.SetBool(x == y);
        return true;
    case TOKEN_EXCLAM_EQUAL:
        value.SetBool(x != y);
        return true;
    default:
        return false;
    }
}

bool IsEquality(EToken op)
{
    return op == TOKEN_DBL_EQUAL || op == TOKEN_EXCLAM_EQUAL;
}

/// A char, or an integer in the range of one.
bool CharOf(const DirectValue& value, int& c)
{
    if (value.m_type == LITERAL_CHAR)
        c = value.m_char; // NOLINT(bugprone-signed-char-misuse): it has a sign
    else if (value.m_type == LITERAL_INT64 &&
             value.m_int64 == static_cast<signed char>(value.m_int64))
        c = static_cast<int>(value.m_int64);
    else
        return false;
    return true;
}

bool IsText(const DirectValue& value)
{
    return value.m_type == LITERAL_STRING || value.m_type == LITERAL_CHAR;
}

/// `value` as a literal; false for a string.
bool LiteralOf(const DirectValue& value, LSLiteral& literal)
{
    switch (value.m_type)
    {
    case LITERAL_BOOL:
        literal = LSLiteral(value.m_bool);
        return true;
    case LITERAL_INT64:
        literal = LSLiteral(value.m_int64);
        return true;
    case LITERAL_FLOAT64:
        literal = LSLiteral(value.m_float64);
        return true;
    case LITERAL_CHAR:
        literal = LSLiteral::MakeChar(value.m_char);
        return true;
    default:
        return false;
    }
}

/// The conversions that may lose data.
bool Convert(EBuiltIn target, DirectValue& value)
{
    LSLiteral literal;
    if (!LiteralOf(value, literal))
        return false;
    bool isTrue = false;
    char c = 0;
    int64 integer = 0;
    double number = 0;
    switch (target)
    {
    case BUILT_IN_BOOL:
        if (!literal.AsBool(isTrue, /*allowDataLoss=*/true, /*throwExceptions=*/false))
            return false;
        value.SetBool(isTrue);
        return true;
    case BUILT_IN_CHAR:
        if (!literal.AsChar(c, /*allowDataLoss=*/true, /*throwExceptions=*/false))
            return false;
        value.SetChar(c);
        return true;
    case BUILT_IN_INT:
        if (!literal.AsInt64(integer, /*allowDataLoss=*/true, /*throwExceptions=*/false))
            return false;
        value.SetInt64(integer);
        return true;
    default:
        if (!literal.AsFloat64(number, /*allowDataLoss=*/true, /*throwExceptions=*/false))
            return false;
        value.SetFloat64(number);
        return true;
    }
}

bool Calculate(EBuiltIn function, DirectValue& value)
{
    if (value.m_type != LITERAL_INT64 && value.m_type != LITERAL_FLOAT64)
        return false;
    const MathFunctions* const math = FindMathFunctions();
    if (math == nullptr)
        return false;
    const double x = Float(value);
    switch (function)
    {
    case BUILT_IN_SIN:
        value.SetFloat64(math->m_sin(x));
        return true;
    case BUILT_IN_COS:
        value.SetFloat64(math->m_cos(x));
        return true;
    case BUILT_IN_TAN:
        value.SetFloat64(math->m_tan(x));
        return true;
    case BUILT_IN_EXP:
        value.SetFloat64(math->m_exp(x));
        return true;
    default:
        if (x <= 0.0)
            return false;
        value.SetFloat64(math->m_log(x));
        return true;
    }
}

} // namespace

TELV_WRAPS bool ApplyPrefix(EToken op, DirectValue& value)
{
    const bool isInt = value.m_type == LITERAL_INT64;
    switch (op)
    {
    case TOKEN_PLUS:
        return isInt || value.m_type == LITERAL_FLOAT64;
    case TOKEN_MINUS:
        if (isInt)
            value.m_int64 = static_cast<int64>(0 - static_cast<uint64>(value.m_int64));
        else if (value.m_type == LITERAL_FLOAT64)
            value.m_float64 = -value.m_float64;
        else
            return false;
        return true;
    case TOKEN_EXCLAM:
        if (value.m_type != LITERAL_BOOL)
            return false;
        value.m_bool = !value.m_bool;
        return true;
    default:
        if (isInt)
            value.m_int64 = ~value.m_int64;
        return isInt;
    }
}

bool ApplyIndex(DirectValue& value, const DirectValue& index)
{
    if (value.m_type != LITERAL_STRING || index.m_type != LITERAL_INT64 || index.m_int64 < 0 ||
        index.m_int64 >= value.Text().size())
        return false;
    value.SetChar(value.m_text.m_begin[index.m_int64]);
    return true;
}

bool DirectExpression::Combine(EToken op, DirectValue& x, const DirectValue& y)
{
    switch (op)
    {
    case TOKEN_DBL_CARET:
        return Power(x, y);
    case TOKEN_DBL_AMPERSAND:
    case TOKEN_DBL_VLINE:
        if (x.m_type != LITERAL_BOOL)
            return false;
        if (x.m_bool == (op == TOKEN_DBL_VLINE)) // the right operand is not converted
            return true;
        if (y.m_type != LITERAL_BOOL)
            return false;
        x.m_bool = y.m_bool;
        return true;
    default:
        break;
    }
    const ELiteral kind = NumberKind(x, y);
    if (kind == LITERAL_INT64)
        return Compare(op, x, x.m_int64, y.m_int64) || CombineInts(op, x, y.m_int64);
    if (kind == LITERAL_FLOAT64)
    {
        const double a = Float(x);
        const double b = Float(y);
        return Compare(op, x, a, b) || CombineFloats(op, x, a, b);
    }
    return CombineOthers(op, x, y);
}

/// Bools, chars and texts.
bool DirectExpression::CombineOthers(EToken op, DirectValue& x, const DirectValue& y)
{
    int a = 0;
    int b = 0;
    if (IsEquality(op) && x.m_type == LITERAL_BOOL && y.m_type == LITERAL_BOOL)
        return Compare<int>(op, x, x.m_bool, y.m_bool);
    if (IsEquality(op) && CharOf(x, a) && CharOf(y, b))
        return Compare(op, x, a, b);
    if (!IsText(x) || !IsText(y))
        return false;
    SubString left;
    SubString right;
    if (!TextOf(x, left) || !TextOf(y, right))
        return false;
    if (op == TOKEN_PLUS)
        return Join(x, left, right);
    return Compare(op, x, strcmp(left, right), 0);
}

/// Puts the two texts one behind the other.
bool DirectExpression::Join(DirectValue& value, SubString left, SubString right)
{
    if (left.size() + right.size() > s_scratch - m_used)
        return false;
    SubString first;
    SubString second;
    Keep(left, first);
    Keep(right, second);
    value.SetText(SubString(first.begin(), second.end()));
    return true;
}

bool DirectExpression::Call(EBuiltIn function, DirectValue& value)
{
    switch (function)
    {
    case BUILT_IN_LEN:
        if (value.m_type != LITERAL_STRING)
            return false;
        value.SetInt64(value.Text().size());
        return true;
    case BUILT_IN_IS_BOOL:
        value.SetBool(value.m_type == LITERAL_BOOL);
        return true;
    case BUILT_IN_IS_CHAR:
        value.SetBool(value.m_type == LITERAL_CHAR);
        return true;
    case BUILT_IN_IS_INT:
        value.SetBool(value.m_type == LITERAL_INT64);
        return true;
    case BUILT_IN_IS_DOUBLE:
        value.SetBool(value.m_type == LITERAL_FLOAT64);
        return true;
    case BUILT_IN_IS_STRING:
        value.SetBool(value.m_type == LITERAL_STRING);
        return true;
    case BUILT_IN_BOOL:
    case BUILT_IN_CHAR:
    case BUILT_IN_INT:
    case BUILT_IN_DOUBLE:
        return Convert(function, value);
    case BUILT_IN_STRING:
    {
        SubString text;
        if (!WriteText(value, text))
            return false;
        value.SetText(text);
        return true;
    }
    default:
        return Calculate(function, value);
    }
}

} // namespace telv
