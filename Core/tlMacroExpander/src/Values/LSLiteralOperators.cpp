// SPDX-License-Identifier: MIT
// The operators over literals.
//
// None lists the combinations of kinds. Each tries conversions that lose nothing, in a fixed order,
// and the first one that both operands pass decides; the helpers at the top are those steps. What
// kind of result comes out follows from the step. Integers are computed unsigned, so they wrap.
#include "tlMacroExpander/LSLiteral.h"
#include "tlMacroExpander/src/Values/MathFunctions.h"
#include "tlUtils/StringExt.h"

namespace telv
{

namespace
{

/// Two operands after the same conversion.
template <class T>
struct Pair
{
    T x{};
    T y{};
};

/// The text of a string or a char, as a view of `literal`; no copy is made for a comparison.
bool TextOf(const LSLiteral& literal, SubString& text)
{
    if (literal.m_type == LITERAL_STRING)
        text = literal.m_string;
    else if (literal.m_type == LITERAL_CHAR)
        text = SubString(&literal.m_char, &literal.m_char + 1);
    else
        return false;
    return true;
}

bool BothTexts(const LSLiteral& x, const LSLiteral& y, Pair<SubString>& p)
{
    return TextOf(x, p.x) && TextOf(y, p.y);
}

bool BothInt64(const LSLiteral& x, const LSLiteral& y, Pair<int64>& p)
{
    return x.AsInt64(p.x, /*allowDataLoss=*/false, /*throwExceptions=*/false) &&
           y.AsInt64(p.y, /*allowDataLoss=*/false, /*throwExceptions=*/false);
}

bool BothFloat64(const LSLiteral& x, const LSLiteral& y, Pair<double>& p)
{
    return x.AsFloat64(p.x, /*allowDataLoss=*/false, /*throwExceptions=*/false) &&
           y.AsFloat64(p.y, /*allowDataLoss=*/false, /*throwExceptions=*/false);
}

bool BothBools(const LSLiteral& x, const LSLiteral& y, Pair<bool>& p)
{
    return x.AsBool(p.x, /*allowDataLoss=*/false, /*throwExceptions=*/false) &&
           y.AsBool(p.y, /*allowDataLoss=*/false, /*throwExceptions=*/false);
}

bool BothChars(const LSLiteral& x, const LSLiteral& y, Pair<char>& p)
{
    return x.AsChar(p.x, /*allowDataLoss=*/false, /*throwExceptions=*/false) &&
           y.AsChar(p.y, /*allowDataLoss=*/false, /*throwExceptions=*/false);
}

/// The operands of an operation that exists for int64 only.
Pair<int64> RequireInt64(const LSLiteral& x, const LSLiteral& y, const char* opName)
{
    Pair<int64> p;
    if (!BothInt64(x, y, p))
        ThrowIncompatibleTypesException(x, y, opName);
    return p;
}

/// The operands of an operation on floats.
Pair<double> RequireFloat64(const LSLiteral& x, const LSLiteral& y, const char* opName)
{
    Pair<double> p;
    if (!BothFloat64(x, y, p))
        ThrowIncompatibleTypesException(x, y, opName);
    return p;
}

uint64 Unsigned(int64 v)
{
    return static_cast<uint64>(v);
}

/// The int64 literal of a result computed modulo two to the power of 64.
LSLiteral Wrapped(uint64 v)
{
    return LSLiteral(static_cast<int64>(v));
}

[[noreturn]] void ThrowDescription(const char* description)
{
    throw LiteralException(xstring(description));
}

[[noreturn]] void ThrowIllDefinedPower(const Pair<double>& p)
{
    StringStream message(4096);
    message << "Calculation " << p.x << " ^^ " << p.y << " ill defined";
    throw LiteralException(message.GetString());
}

LSLiteral Concatenated(const Pair<SubString>& p)
{
    LSLiteral result;
    result.m_type = LITERAL_STRING;
    result.m_string.reserve(p.x.size() + p.y.size());
    result.m_string += p.x;
    result.m_string += p.y;
    return result;
}

} // namespace

TELV_WRAPS LSLiteral operator+(const LSLiteral& x, const LSLiteral& y)
{
    Pair<SubString> texts;
    if (BothTexts(x, y, texts))
        return Concatenated(texts);
    Pair<int64> ints;
    if (BothInt64(x, y, ints))
        return Wrapped(Unsigned(ints.x) + Unsigned(ints.y));
    const Pair<double> floats = RequireFloat64(x, y, "+");
    return LSLiteral(floats.x + floats.y);
}

TELV_WRAPS LSLiteral operator-(const LSLiteral& x, const LSLiteral& y)
{
    Pair<int64> ints;
    if (BothInt64(x, y, ints))
        return Wrapped(Unsigned(ints.x) - Unsigned(ints.y));
    const Pair<double> floats = RequireFloat64(x, y, "-");
    return LSLiteral(floats.x - floats.y);
}

TELV_WRAPS LSLiteral operator*(const LSLiteral& x, const LSLiteral& y)
{
    Pair<int64> ints;
    if (BothInt64(x, y, ints))
        return Wrapped(Unsigned(ints.x) * Unsigned(ints.y));
    const Pair<double> floats = RequireFloat64(x, y, "*");
    return LSLiteral(floats.x * floats.y);
}

TELV_WRAPS LSLiteral operator/(const LSLiteral& x, const LSLiteral& y)
{
    Pair<int64> ints;
    if (BothInt64(x, y, ints))
    {
        if (ints.y == 0)
            ThrowDescription("Division by zero error");
        // The one quotient that does not fit wraps; the machine's division would trap.
        return ints.y == -1 ? Wrapped(0 - Unsigned(ints.x)) : LSLiteral(ints.x / ints.y);
    }
    const Pair<double> floats = RequireFloat64(x, y, "/");
    if (floats.y == 0.0)
        ThrowDescription("Division by zero");
    return LSLiteral(floats.x / floats.y);
}

LSLiteral operator%(const LSLiteral& x, const LSLiteral& y)
{
    const Pair<int64> ints = RequireInt64(x, y, "%");
    if (ints.y == 0)
        ThrowDescription("Modulo zero error");
    return LSLiteral(ints.y == -1 ? int64(0) : ints.x % ints.y);
}

LSLiteral Power(const LSLiteral& x, const LSLiteral& y)
{
    const Pair<double> floats = RequireFloat64(x, y, "^");
    if (floats.x == 0.0 && floats.y < 0.0)
        ThrowIllDefinedPower(floats);
    const LSLiteral power(GetMathFunctions().m_pow(floats.x, floats.y));
    Pair<int64> ints;
    return BothInt64(x, y, ints) ? LSLiteral(power.AsInt64(/*allowDataLoss=*/true)) : power;
}

TELV_WRAPS LSLiteral operator<<(const LSLiteral& x, const LSLiteral& y)
{
    const Pair<int64> ints = RequireInt64(x, y, "<<");
    return Wrapped(Unsigned(ints.x) << (Unsigned(ints.y) & 63));
}

LSLiteral operator>>(const LSLiteral& x, const LSLiteral& y)
{
    const Pair<int64> ints = RequireInt64(x, y, ">>");
    return LSLiteral(ints.x >> (Unsigned(ints.y) & 63));
}

LSLiteral operator&(const LSLiteral& x, const LSLiteral& y)
{
    const Pair<int64> ints = RequireInt64(x, y, "&");
    return LSLiteral(ints.x & ints.y);
}

LSLiteral operator|(const LSLiteral& x, const LSLiteral& y)
{
    const Pair<int64> ints = RequireInt64(x, y, "|");
    return LSLiteral(ints.x | ints.y);
}

LSLiteral operator^(const LSLiteral& x, const LSLiteral& y)
{
    const Pair<int64> ints = RequireInt64(x, y, "^");
    return LSLiteral(ints.x ^ ints.y);
}

LSLiteral operator&&(const LSLiteral& x, const LSLiteral& y)
{
    const bool result = x.AsBool(/*allowDataLoss=*/false) && y.AsBool(/*allowDataLoss=*/false);
    return LSLiteral(result);
}

LSLiteral operator||(const LSLiteral& x, const LSLiteral& y)
{
    const bool result = x.AsBool(/*allowDataLoss=*/false) || y.AsBool(/*allowDataLoss=*/false);
    return LSLiteral(result);
}

bool operator!(const LSLiteral& x)
{
    return !x.AsBool(/*allowDataLoss=*/false);
}

LSLiteral operator~(const LSLiteral& x)
{
    int64 value = 0;
    if (!x.AsInt64(value, /*allowDataLoss=*/false, /*throwExceptions=*/false))
        ThrowIncompatibleTypeException(x, "~");
    return LSLiteral(~value);
}

LSLiteral operator+(const LSLiteral& x)
{
    if (x.m_type != LITERAL_INT64 && x.m_type != LITERAL_FLOAT64)
        ThrowIncompatibleTypeException(x, "+");
    return x;
}

TELV_WRAPS LSLiteral operator-(const LSLiteral& x)
{
    int64 value = 0;
    if (x.AsInt64(value, /*allowDataLoss=*/false, /*throwExceptions=*/false))
        return Wrapped(0 - Unsigned(value));
    double number = 0;
    if (!x.AsFloat64(number, /*allowDataLoss=*/false, /*throwExceptions=*/false))
        ThrowIncompatibleTypeException(x, "-");
    return LSLiteral(-number);
}

bool operator==(const LSLiteral& x, const LSLiteral& y)
{
    if (x.m_type != y.m_type)
        return false;
    switch (x.m_type)
    {
    case LITERAL_BOOL:
        return x.m_bool == y.m_bool;
    case LITERAL_INT64:
        return x.m_int64 == y.m_int64;
    case LITERAL_FLOAT64:
        return x.m_float64 == y.m_float64;
    case LITERAL_CHAR:
        return x.m_char == y.m_char;
    case LITERAL_STRING:
        return x.m_string == y.m_string;
    case LITERAL_UNDEF:
    case LITERAL_VOID:
        break;
    }
    return true; // there is one undef and one void
}

bool IsEqual(const LSLiteral& x, const LSLiteral& y)
{
    Pair<bool> bools;
    if (BothBools(x, y, bools))
        return bools.x == bools.y;
    Pair<char> chars;
    if (BothChars(x, y, chars))
        return chars.x == chars.y;
    Pair<SubString> texts;
    if (BothTexts(x, y, texts))
        return texts.x == texts.y;
    Pair<int64> ints;
    if (BothInt64(x, y, ints))
        return ints.x == ints.y;
    const Pair<double> floats = RequireFloat64(x, y, "comparison");
    return floats.x == floats.y;
}

bool IsLess(const LSLiteral& x, const LSLiteral& y)
{
    Pair<SubString> texts;
    if (BothTexts(x, y, texts))
        return strcmp(texts.x, texts.y) < 0;
    Pair<int64> ints;
    if (BothInt64(x, y, ints))
        return ints.x < ints.y;
    const Pair<double> floats = RequireFloat64(x, y, "comparison");
    return floats.x < floats.y;
}

bool IsLessThanOrEqual(const LSLiteral& x, const LSLiteral& y)
{
    Pair<SubString> texts;
    if (BothTexts(x, y, texts))
        return strcmp(texts.x, texts.y) <= 0;
    Pair<int64> ints;
    if (BothInt64(x, y, ints))
        return ints.x <= ints.y;
    const Pair<double> floats = RequireFloat64(x, y, "comparison");
    return floats.x <= floats.y;
}

} // namespace telv
