// What operators and functions do to plain values; what would be an error is false.
//
// The conversions that an operator tries are those of LSLiteralOperators.cpp, in the same order:
// texts, then integers, then floats; for equality bools and chars come first.
#include "tlMacroExpander/src/Expressions/DirectExpression.h"
#include "tlMacroExpander/src/LSToken.h"
#include <cmath>

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

void SetBool(DirectValue& value, bool v)
{
    value.m_type = LITERAL_BOOL;
    value.m_bool = v;
}

void SetInt64(DirectValue& value, int64 v)
{
    value.m_type = LITERAL_INT64;
    value.m_int64 = v;
}

void SetFloat64(DirectValue& value, double v)
{
    value.m_type = LITERAL_FLOAT64;
    value.m_float64 = v;
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
        x.m_int64 >>= b & 63;
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
        SetFloat64(value, x + y);
        return true;
    case TOKEN_MINUS:
        SetFloat64(value, x - y);
        return true;
    case TOKEN_ASTERISK:
        SetFloat64(value, x * y);
        return true;
    case TOKEN_FORWARD_SLASH:
        SetFloat64(value, y == 0.0 ? 0.0 : x / y);
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
    const LSLiteral power(std::pow(base, exponent));
    if (kind == LITERAL_INT64)
        SetInt64(x, power.AsInt64(/*allowDataLoss=*/true));
    else
        SetFloat64(x, power.m_float64);
    return true;
}

/// The outcome of a comparison of two ordered values.
template <class T>
bool Compare(EToken op, DirectValue& value, const T& x, const T& y)
{
    switch (op)
    {
    case TOKEN_LESS:
        SetBool(value, x < y);
        return true;
    case TOKEN_GREATER:
        SetBool(value, x > y);
        return true;
    case TOKEN_LESS_EQUAL:
        SetBool(value, x <= y);
        return true;
    case TOKEN_GREATER_EQUAL:
        SetBool(value, x >= y);
        return true;
    case TOKEN_DBL_EQUAL:
        SetBool(value, x == y);
        return true;
    case TOKEN_EXCLAM_EQUAL:
        SetBool(value, x != y);
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
        c = value.m_char;
    else if (value.m_type == LITERAL_INT64 && value.m_int64 == static_cast<signed char>(value.m_int64))
        c = static_cast<int>(value.m_int64);
    else
        return false;
    return true;
}

bool IsText(const DirectValue& value)
{
    return value.m_type == LITERAL_STRING || value.m_type == LITERAL_CHAR;
}

enum EBuiltIn
{
    BUILT_IN_FALSE,
    BUILT_IN_TRUE,
    BUILT_IN_LEN,
    BUILT_IN_IS_BOOL,
    BUILT_IN_IS_CHAR,
    BUILT_IN_IS_INT,
    BUILT_IN_IS_DOUBLE,
    BUILT_IN_IS_STRING,
    BUILT_IN_BOOL,
    BUILT_IN_CHAR,
    BUILT_IN_INT,
    BUILT_IN_DOUBLE,
    BUILT_IN_STRING,
    BUILT_IN_SIN,
    BUILT_IN_COS,
    BUILT_IN_TAN,
    BUILT_IN_EXP,
    BUILT_IN_LOG,
    BUILT_IN_NONE
};

constexpr const char* s_builtIns[] = {"false",   "true",   "len",       "is_bool",   "is_char",
                                      "is_int",  "is_double", "is_string", "bool",   "char",
                                      "int",     "double", "string",    "sin",       "cos",
                                      "tan",     "exp",    "log"};

EBuiltIn FindBuiltIn(SubString name)
{
    for (int i = 0; i < BUILT_IN_NONE; ++i)
        if (name == s_builtIns[i])
            return static_cast<EBuiltIn>(i);
    return BUILT_IN_NONE;
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
        SetBool(value, isTrue);
        return true;
    case BUILT_IN_CHAR:
        if (!literal.AsChar(c, /*allowDataLoss=*/true, /*throwExceptions=*/false))
            return false;
        value = DirectValue();
        value.m_type = LITERAL_CHAR;
        value.m_char = c;
        return true;
    case BUILT_IN_INT:
        if (!literal.AsInt64(integer, /*allowDataLoss=*/true, /*throwExceptions=*/false))
            return false;
        SetInt64(value, integer);
        return true;
    default:
        if (!literal.AsFloat64(number, /*allowDataLoss=*/true, /*throwExceptions=*/false))
            return false;
        SetFloat64(value, number);
        return true;
    }
}

bool Calculate(EBuiltIn function, DirectValue& value)
{
    if (value.m_type != LITERAL_INT64 && value.m_type != LITERAL_FLOAT64)
        return false;
    const double x = Float(value);
    switch (function)
    {
    case BUILT_IN_SIN:
        SetFloat64(value, std::sin(x));
        return true;
    case BUILT_IN_COS:
        SetFloat64(value, std::cos(x));
        return true;
    case BUILT_IN_TAN:
        SetFloat64(value, std::tan(x));
        return true;
    case BUILT_IN_EXP:
        SetFloat64(value, std::exp(x));
        return true;
    default:
        if (x <= 0.0)
            return false;
        SetFloat64(value, std::log(x));
        return true;
    }
}

} // namespace

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
        x.m_bool = y.m_bool;
        return y.m_type == LITERAL_BOOL;
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
    SubString kept;
    Keep(left, value.m_text);
    Keep(right, kept);
    value.m_text.m_p2 = kept.m_p2;
    value.m_type = LITERAL_STRING;
    return true;
}

/// A constant or a function, with its name as the current token.
bool DirectExpression::ParseBuiltIn(SubString name, DirectValue& value)
{
    const EBuiltIn builtIn = FindBuiltIn(name);
    if (builtIn == BUILT_IN_NONE)
        return false;
    Advance();
    if (builtIn <= BUILT_IN_TRUE)
    {
        SetBool(value, builtIn == BUILT_IN_TRUE);
        return true;
    }
    if (!Take(TOKEN_LEFT_PAREN) || !ParseExpression(value) || !Take(TOKEN_RIGHT_PAREN))
        return false;
    switch (builtIn)
    {
    case BUILT_IN_LEN:
        if (value.m_type != LITERAL_STRING)
            return false;
        SetInt64(value, value.m_text.size());
        return true;
    case BUILT_IN_IS_BOOL:
        SetBool(value, value.m_type == LITERAL_BOOL);
        return true;
    case BUILT_IN_IS_CHAR:
        SetBool(value, value.m_type == LITERAL_CHAR);
        return true;
    case BUILT_IN_IS_INT:
        SetBool(value, value.m_type == LITERAL_INT64);
        return true;
    case BUILT_IN_IS_DOUBLE:
        SetBool(value, value.m_type == LITERAL_FLOAT64);
        return true;
    case BUILT_IN_IS_STRING:
        SetBool(value, value.m_type == LITERAL_STRING);
        return true;
    case BUILT_IN_BOOL:
    case BUILT_IN_CHAR:
    case BUILT_IN_INT:
    case BUILT_IN_DOUBLE:
        return Convert(builtIn, value);
    case BUILT_IN_STRING:
        if (!WriteText(value, value.m_text))
            return false;
        value.m_type = LITERAL_STRING;
        return true;
    default:
        return Calculate(builtIn, value);
    }
}

} // namespace telv
