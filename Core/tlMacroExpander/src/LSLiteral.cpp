// SPDX-License-Identifier: MIT
// Names of the kinds, the errors of values, and the members that are no conversions.
//
// All messages about values are composed here, in one place, so that the conversions and the
// operators only say what is wrong.
#include "tlMacroExpander/LSLiteral.h"
#include "tlUtils/StringExt.h"

#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/LSLiteral"

namespace telv
{

namespace
{

[[noreturn]] void ThrowComposed(const StringStream& message)
{
    throw LiteralException(message.GetString());
}

/// An operation that the kind of `x` does not have: "OPERATION not available on KIND".
[[noreturn]] void ThrowNotAvailable(const char* operation, const LSLiteral& x)
{
    StringStream message(4096);
    message << operation << " not available on " << TypeToString(x.m_type);
    ThrowComposed(message);
}

[[noreturn]] void ThrowIndexOutOfRange(int index, ssize_t length)
{
    StringStream message(4096);
    message << "Index " << index << " out of range [0," << length << ") on string";
    ThrowComposed(message);
}

} // namespace

const char* TypeToString(ELiteral type)
{
    static const char* const names[] = {"undef",   "void", "bool",  "int64",
                                        "float64", "char", "string"};
    TELV_ASSERT(LITERAL_UNDEF <= type && type <= LITERAL_STRING);
    return names[type];
}

void LiteralException::Write(xostream& os) const
{
    os << m_description;
}

void ThrowNoConversion(const char* srcType, const char* dstType)
{
    StringStream message(4096);
    message << "No conversion from " << srcType << " to " << dstType;
    ThrowComposed(message);
}

void ThrowNoConversion(ELiteral srcType, const char* dstType)
{
    ThrowNoConversion(TypeToString(srcType), dstType);
}

void ThrowNoImplicitConversion(const char* srcType, const char* dstType)
{
    StringStream message(4096);
    message << "No implicit conversion from " << srcType << " to " << dstType;
    ThrowComposed(message);
}

void ThrowNoImplicitConversion(ELiteral srcType, const char* dstType)
{
    ThrowNoImplicitConversion(TypeToString(srcType), dstType);
}

template <class T>
void ThrowNoImplicitConversionFromValue(T v, const char* dstType)
{
    StringStream message(4096);
    message << "No implicit conversion from value " << v << " to " << dstType;
    ThrowComposed(message);
}

template void ThrowNoImplicitConversionFromValue<long>(long v, const char* dstType);
template void ThrowNoImplicitConversionFromValue<xstring>(xstring v, const char* dstType);

void ThrowIncompatibleTypesException(const LSLiteral& x, const LSLiteral& y, const char* opName)
{
    StringStream message(4096);
    message << "Incompatible types (" << TypeToString(x.m_type) << " and " << TypeToString(y.m_type)
            << ") for " << opName << " operation";
    ThrowComposed(message);
}

void ThrowIncompatibleTypeException(const LSLiteral& x, const char* opName)
{
    StringStream message(4096);
    message << "Incompatible type (" << TypeToString(x.m_type) << ") for unary " << opName
            << " operation";
    ThrowComposed(message);
}

void LSLiteral::Assign(const LSLiteral&)
{
    StringStream message(4096);
    message << "Can't assign to " << TypeToString(m_type);
    if (m_type != LITERAL_UNDEF && m_type != LITERAL_VOID)
        message << " r-value";
    ThrowComposed(message);
}

ssize_t LSLiteral::GetLength() const
{
    if (m_type != LITERAL_STRING)
        ThrowNotAvailable("len()", *this);
    return m_string.size();
}

LSLiteral LSLiteral::operator[](const LSLiteral& index) const
{
    if (m_type != LITERAL_STRING)
        ThrowNotAvailable("[]", *this);
    const int i = index.AsInt32(/*allowDataLoss=*/false);
    if (i < 0 || i >= m_string.size())
        ThrowIndexOutOfRange(i, m_string.size());
    return MakeChar(m_string[i]);
}

} // namespace telv
