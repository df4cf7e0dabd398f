// SPDX-License-Identifier: MIT
// The conversions of a literal to the types of C++.
//
// Each of the six basic ones is a switch over the kind whose rows either produce the value or name
// the rule that refuses it; the rules are the helpers at the top, which also decide between a
// result of false and an exception. The narrow integers stand on AsInt64 and add a range check.
#include "tlMacroExpander/LSLiteral.h"
#include "tlUtils/StringExt.h"
#include <limits>
#include <type_traits>

#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/LSLiteral"

namespace telv
{

namespace
{

[[noreturn]] void ThrowDescription(const char* description)
{
    throw LiteralException(xstring(description));
}

/// An undefined literal has nothing to convert; `message` says what was expected.
bool RefuseUndefined(const char* message, bool throwExceptions)
{
    if (throwExceptions)
        ThrowDescription(message);
    return false;
}

/// No rule leads from `kind` to `target`.
bool RefuseKind(ELiteral kind, const char* target, bool throwExceptions)
{
    if (throwExceptions)
        ThrowNoConversion(kind, target);
    return false;
}

/// The way from `kind` to `target` loses data.
bool RefuseLoss(ELiteral kind, const char* target, bool throwExceptions)
{
    if (throwExceptions)
        ThrowNoImplicitConversion(kind, target);
    return false;
}

/// The value does not fit `target`.
bool RefuseValue(long value, const char* target, bool throwExceptions)
{
    if (throwExceptions)
        ThrowNoImplicitConversionFromValue<long>(value, target);
    return false;
}

bool RefuseValue(const xstring& value, const char* target, bool throwExceptions)
{
    if (throwExceptions)
        ThrowNoImplicitConversionFromValue<xstring>(value, target);
    return false;
}

/// A kind that does not exist: memory was overwritten or never initialised.
[[noreturn]] void ThrowBadKind()
{
    ThrowTelvAssertionError("LITERAL_UNDEF <= m_type && m_type <= LITERAL_STRING", TELV_SOURCE_PATH,
                            __LINE__);
}

/// Cut toward zero; what does not fit becomes the nearest limit, NaN becomes 0.
int64 TruncateToInt64(double value)
{
    constexpr double limit = 9223372036854775808.0; // 2 to the power of 63
    if (value >= limit)
        return std::numeric_limits<int64>::max();
    if (value < -limit)
        return std::numeric_limits<int64>::min();
    if (value != value)
        return 0;
    return static_cast<int64>(value);
}

/// Puts the low bits of `value` into `v`, whether they hold the whole value or not; only then is
/// that checked.
template <class T>
bool Narrow(long value, T& v, const char* target, bool allowDataLoss, bool throwExceptions)
{
    v = static_cast<T>(value);
    if (static_cast<long>(v) == value || allowDataLoss)
        return true;
    return RefuseValue(value, target, throwExceptions);
}

/// The narrow integers: kinds are judged by AsInt64, ranges here.
template <class T>
bool AsNarrow(const LSLiteral& x, T& v, const char* target, bool allowDataLoss,
              bool throwExceptions)
{
    int64 value = 0;
    return x.AsInt64(value, allowDataLoss, throwExceptions) &&
           Narrow(value, v, target, allowDataLoss, throwExceptions);
}

/// Both float targets: integers are rounded, never refused, which mixed arithmetic relies on.
template <class T>
bool AsFloat(const LSLiteral& x, T& v, const char* target, const char* expected, bool allowDataLoss,
             bool throwExceptions)
{
    switch (x.m_type)
    {
    case LITERAL_UNDEF:
        return RefuseUndefined(expected, throwExceptions);
    case LITERAL_BOOL:
        if (!allowDataLoss)
            return RefuseLoss(x.m_type, target, throwExceptions);
        v = x.m_bool ? T(1) : T(0);
        return true;
    case LITERAL_INT64:
        v = static_cast<T>(x.m_int64);
        return true;
    case LITERAL_FLOAT64:
        v = static_cast<T>(x.m_float64);
        return true;
    case LITERAL_VOID:
    case LITERAL_CHAR:
    case LITERAL_STRING:
        return RefuseKind(x.m_type, target, throwExceptions);
    }
    ThrowBadKind();
}

/// The text of a bool, an integer or a float.
xstring TextOfScalar(const LSLiteral& x)
{
    if (x.m_type == LITERAL_BOOL)
        return xstring(x.m_bool ? "true" : "false");
    return x.m_type == LITERAL_INT64 ? ToString(x.m_int64) : ToString(x.m_float64);
}

/// Tries a conversion without data loss.
template <class T>
bool Converts(const LSLiteral& x, bool (LSLiteral::*convert)(T& v, bool, bool) const)
{
    T v{};
    return (x.*convert)(v, /*allowDataLoss=*/false, /*throwExceptions=*/false);
}

} // namespace

bool LSLiteral::AsBool(bool& v, bool allowDataLoss, bool throwExceptions) const
{
    switch (m_type)
    {
    case LITERAL_UNDEF:
        return RefuseUndefined("Expected bool", throwExceptions);
    case LITERAL_BOOL:
        v = m_bool;
        return true;
    case LITERAL_INT64:
    case LITERAL_FLOAT64:
        if (!allowDataLoss)
            return RefuseLoss(m_type, "bool", throwExceptions);
        v = m_type == LITERAL_INT64 ? m_int64 != 0 : m_float64 != 0.0;
        return true;
    case LITERAL_VOID:
    case LITERAL_CHAR:
    case LITERAL_STRING:
        return RefuseKind(m_type, "bool", throwExceptions);
    }
    ThrowBadKind();
}

bool LSLiteral::AsChar(char& v, bool allowDataLoss, bool throwExceptions) const
{
    switch (m_type)
    {
    case LITERAL_UNDEF:
        return RefuseUndefined("Expected char", throwExceptions);
    case LITERAL_INT64:
        return Narrow(m_int64, v, "char", allowDataLoss, throwExceptions);
    case LITERAL_CHAR:
        v = m_char;
        return true;
    case LITERAL_STRING:
        if (!allowDataLoss || m_string.size() != 1)
            return RefuseValue(m_string, "char", throwExceptions);
        v = m_string[0];
        return true;
    case LITERAL_VOID:
    case LITERAL_BOOL:
    case LITERAL_FLOAT64:
        return RefuseKind(m_type, "char", throwExceptions);
    }
    ThrowBadKind();
}

bool LSLiteral::AsInt64(long& v, bool allowDataLoss, bool throwExceptions) const
{
    switch (m_type)
    {
    case LITERAL_UNDEF:
        return RefuseUndefined("Expected int64", throwExceptions);
    case LITERAL_INT64:
        v = m_int64;
        return true;
    case LITERAL_BOOL:
    case LITERAL_CHAR:
    case LITERAL_FLOAT64:
        if (!allowDataLoss)
            return RefuseLoss(m_type, "int64", throwExceptions);
        if (m_type == LITERAL_FLOAT64)
            v = TruncateToInt64(m_float64);
        else
            v = m_type == LITERAL_BOOL ? static_cast<long>(m_bool) : static_cast<long>(m_char);
        return true;
    case LITERAL_VOID:
    case LITERAL_STRING:
        return RefuseKind(m_type, "int64", throwExceptions);
    }
    ThrowBadKind();
}

bool LSLiteral::AsInt8(signed char& v, bool allowDataLoss, bool throwExceptions) const
{
    return AsNarrow(*this, v, "int8", allowDataLoss, throwExceptions);
}

bool LSLiteral::AsInt16(short& v, bool allowDataLoss, bool throwExceptions) const
{
    return AsNarrow(*this, v, "int16", allowDataLoss, throwExceptions);
}

bool LSLiteral::AsInt32(int& v, bool allowDataLoss, bool throwExceptions) const
{
    return AsNarrow(*this, v, "int32", allowDataLoss, throwExceptions);
}

bool LSLiteral::AsUInt8(unsigned char& v, bool allowDataLoss, bool throwExceptions) const
{
    return AsNarrow(*this, v, "uint8", allowDataLoss, throwExceptions);
}

bool LSLiteral::AsUInt16(unsigned short& v, bool allowDataLoss, bool throwExceptions) const
{
    return AsNarrow(*this, v, "uint16", allowDataLoss, throwExceptions);
}

bool LSLiteral::AsUInt32(unsigned int& v, bool allowDataLoss, bool throwExceptions) const
{
    return AsNarrow(*this, v, "uint32", allowDataLoss, throwExceptions);
}

bool LSLiteral::AsUInt64(unsigned long& v, bool allowDataLoss, bool throwExceptions) const
{
    int64 value = 0;
    if (!AsInt64(value, allowDataLoss, throwExceptions))
        return false;
    v = static_cast<unsigned long>(value);
    return true;
}

bool LSLiteral::AsFloat32(float& v, bool allowDataLoss, bool throwExceptions) const
{
    return AsFloat(*this, v, "float32", "Expected float32", allowDataLoss, throwExceptions);
}

bool LSLiteral::AsFloat64(double& v, bool allowDataLoss, bool throwExceptions) const
{
    return AsFloat(*this, v, "float64", "Expected float64", allowDataLoss, throwExceptions);
}

bool LSLiteral::AsString(xstring& v, bool allowDataLoss, bool throwExceptions) const
{
    switch (m_type)
    {
    case LITERAL_UNDEF:
        return RefuseUndefined("Expected string", throwExceptions);
    case LITERAL_BOOL:
    case LITERAL_INT64:
    case LITERAL_FLOAT64:
        if (!allowDataLoss)
            return RefuseLoss(m_type, "string", throwExceptions);
        v = TextOfScalar(*this);
        return true;
    case LITERAL_CHAR:
        v = xstring(1, m_char);
        return true;
    case LITERAL_STRING:
        v = m_string;
        return true;
    case LITERAL_VOID:
        return RefuseKind(m_type, "string", throwExceptions);
    }
    ThrowBadKind();
}

bool LSLiteral::CoercibleToBool() const
{
    return Converts(*this, &LSLiteral::AsBool);
}

bool LSLiteral::CoercibleToChar() const
{
    return Converts(*this, &LSLiteral::AsChar);
}

bool LSLiteral::CoercibleToInt8() const
{
    return Converts(*this, &LSLiteral::AsInt8);
}

bool LSLiteral::CoercibleToInt16() const
{
    return Converts(*this, &LSLiteral::AsInt16);
}

bool LSLiteral::CoercibleToInt32() const
{
    return Converts(*this, &LSLiteral::AsInt32);
}

bool LSLiteral::CoercibleToInt64() const
{
    return Converts(*this, &LSLiteral::AsInt64);
}

bool LSLiteral::CoercibleToUInt8() const
{
    return Converts(*this, &LSLiteral::AsUInt8);
}

bool LSLiteral::CoercibleToUInt16() const
{
    return Converts(*this, &LSLiteral::AsUInt16);
}

bool LSLiteral::CoercibleToUInt32() const
{
    return Converts(*this, &LSLiteral::AsUInt32);
}

bool LSLiteral::CoercibleToUInt64() const
{
    return Converts(*this, &LSLiteral::AsUInt64);
}

bool LSLiteral::CoercibleToFloat32() const
{
    return Converts(*this, &LSLiteral::AsFloat32);
}

bool LSLiteral::CoercibleToFloat64() const
{
    return Converts(*this, &LSLiteral::AsFloat64);
}

bool LSLiteral::CoercibleToString() const
{
    return Converts(*this, &LSLiteral::AsString);
}

} // namespace telv
