// SPDX-License-Identifier: MIT
// The typed value of the macro language, its conversions and its operators.
//
// Every expression yields an LSLiteral, and whoever wants a C++ value out of one asks for a
// conversion: `AsInt64`, `AsString` and so on. A conversion keeps the value exactly, unless the
// caller allows data loss:
//
//     LSLiteral(42).AsFloat64(/*allowDataLoss=*/false);         // 42.0
//     LSLiteral(42).AsString(/*allowDataLoss=*/true);           // "42"
//     LSLiteral(42).AsString(/*allowDataLoss=*/false);          // throws LiteralException:
//                                                               //   No implicit conversion from
//                                                               //   int64 to string
//
// The operators never allow it, so numbers are not formatted by accident and bools do not count:
//
//     LSLiteral(7) / LSLiteral(2.0);                            // 3.5
//     LSLiteral(xstring("x")) + LSLiteral(1);                   // throws LiteralException:
//                                                               //   Incompatible types (string
//                                                               //   and int64) for + operation
//
// A LiteralException knows no position; the expression parser adds it.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/IException.h"
#include "tlUtils/IntTypes.h"
#include "tlUtils/TelvAssert.h"
#include "tlUtils/xstring.h"

namespace telv
{

/// The kind of a literal. The values are part of the interface.
enum ELiteral : int
{
    LITERAL_UNDEF = 0,
    LITERAL_VOID = 1,
    LITERAL_BOOL = 2,
    LITERAL_INT64 = 3,
    LITERAL_FLOAT64 = 4,
    LITERAL_CHAR = 5,
    LITERAL_STRING = 6,
};

/// The kind's name as messages write it ("int64"); static text. A value that is no enumerator is
/// an assertion failure.
TLEXPANDER_API const char* TypeToString(ELiteral type);

// Made, caught and destroyed by its own type: the table of virtual operations, a part of the binary
// interface, has no destructor.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// A value of the wrong kind or out of range. Thrown by value; the complete message is in
/// `m_description`.
class TLEXPANDER_API LiteralException : public IException
{
public:
    explicit LiteralException(const xstring& description) : m_description(description) {}

    /// Writes the message and nothing else.
    void Write(xostream& os) const override;

    xstring m_description;
};

#pragma GCC diagnostic pop

/// A value of one of the seven kinds. Owns its text; copies are deep.
///
/// The three-argument conversions share one contract:
/// - `v` receives the value; the result is true.
/// - What does not convert is false, or a LiteralException when `throwExceptions` is true.
/// - `allowDataLoss` also admits what changes the value: a number as text, a float cut to an
///   integer (saturating, NaN as 0), an integer cut to fewer bits, anything as a bool.
/// - After a failed range check of an integer or char target `v` holds the truncated value; after
///   every other failure it is untouched. Do not rely on it after false.
/// The one-argument forms return the value or throw.
class TLEXPANDER_API LSLiteral
{
public:
    ELiteral m_type; ///< Says which of the others is meaningful.
    union
    {
        bool m_bool;
        int64 m_int64;
        double m_float64;
        char m_char;
    };
    xstring m_string; ///< Empty unless the kind is LITERAL_STRING.

    /// No value yet.
    LSLiteral() : m_type(LITERAL_UNDEF), m_int64(0) {}
    LSLiteral(bool v) : m_type(LITERAL_BOOL), m_int64(0) { m_bool = v; }
    LSLiteral(signed char v) : m_type(LITERAL_INT64), m_int64(v) {}
    LSLiteral(short v) : m_type(LITERAL_INT64), m_int64(v) {}
    LSLiteral(int v) : m_type(LITERAL_INT64), m_int64(v) {}
    LSLiteral(long v) : m_type(LITERAL_INT64), m_int64(v) {}
    LSLiteral(double v) : m_type(LITERAL_FLOAT64), m_float64(v) {}
    /// Copies the text.
    LSLiteral(const xstring& v) : m_type(LITERAL_STRING), m_int64(0), m_string(v) {}
    /// A pointer would silently become a bool: build an xstring.
    template <class T>
    LSLiteral(const T*) = delete;

    /// A literal of kind char; the constructor would take `c` for an integer.
    static LSLiteral MakeChar(char c)
    {
        LSLiteral literal;
        literal.m_type = LITERAL_CHAR;
        literal.m_char = c;
        return literal;
    }

    LSLiteral(const LSLiteral&) = default;
    LSLiteral(LSLiteral&&) noexcept = default;
    LSLiteral& operator=(const LSLiteral&) = default;
    LSLiteral& operator=(LSLiteral&&) noexcept = default;
    ~LSLiteral() = default;

    /// Compares the kind.
    bool operator==(ELiteral type) const { return m_type == type; }
    bool operator!=(ELiteral type) const { return m_type != type; }

    /// From a bool exactly; from a number with loss: whether it differs from 0 (NaN does).
    bool AsBool(bool& v, bool allowDataLoss, bool throwExceptions) const;
    /// From a char exactly; from an int64 in -128 … 127; with loss from a text of one character.
    bool AsChar(char& v, bool allowDataLoss, bool throwExceptions) const;
    /// The narrow integers convert by `AsInt64`, whose messages they use, and then check the range.
    bool AsInt8(signed char& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsInt16(short& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsInt32(int& v, bool allowDataLoss, bool throwExceptions) const;
    /// From an int64 exactly; with loss from bool, char and float64.
    bool AsInt64(long& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsUInt8(unsigned char& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsUInt16(unsigned short& v, bool allowDataLoss, bool throwExceptions) const;
    bool AsUInt32(unsigned int& v, bool allowDataLoss, bool throwExceptions) const;
    /// `AsInt64`, taken as unsigned: negative values wrap, without a range check.
    bool AsUInt64(unsigned long& v, bool allowDataLoss, bool throwExceptions) const;
    /// From numbers, rounded to the nearest float; with loss from a bool.
    bool AsFloat32(float& v, bool allowDataLoss, bool throwExceptions) const;
    /// From numbers, rounded to the nearest double; with loss from a bool.
    bool AsFloat64(double& v, bool allowDataLoss, bool throwExceptions) const;
    /// From a text or a char exactly; with loss from a number or a bool.
    bool AsString(xstring& v, bool allowDataLoss, bool throwExceptions) const;

    /// The same conversions, returning the value or throwing.
    bool AsBool(bool allowDataLoss) const;
    char AsChar(bool allowDataLoss) const;
    signed char AsInt8(bool allowDataLoss) const;
    short AsInt16(bool allowDataLoss) const;
    int AsInt32(bool allowDataLoss) const;
    long AsInt64(bool allowDataLoss) const;
    unsigned char AsUInt8(bool allowDataLoss) const;
    unsigned short AsUInt16(bool allowDataLoss) const;
    unsigned int AsUInt32(bool allowDataLoss) const;
    unsigned long AsUInt64(bool allowDataLoss) const;
    float AsFloat32(bool allowDataLoss) const;
    double AsFloat64(bool allowDataLoss) const;
    xstring AsString(bool allowDataLoss) const;
    void AsString(xstring& v, bool allowDataLoss) const;

    /// Whether the conversion succeeds without data loss.
    bool CoercibleToBool() const;
    bool CoercibleToChar() const;
    bool CoercibleToInt8() const;
    bool CoercibleToInt16() const;
    bool CoercibleToInt32() const;
    bool CoercibleToInt64() const;
    bool CoercibleToUInt8() const;
    bool CoercibleToUInt16() const;
    bool CoercibleToUInt32() const;
    bool CoercibleToUInt64() const;
    bool CoercibleToFloat32() const;
    bool CoercibleToFloat64() const;
    bool CoercibleToString() const;

    /// Always throws: a value cannot be assigned to. Variables are assigned by their own layer.
    void Assign(const LSLiteral& rhs);

    /// Length of a text in bytes; throws for every other kind.
    ssize_t GetLength() const;

    /// The character at `index` of a text, as a char literal. Throws when this is no text, when the
    /// index is no int64 of 32 bits, and when it lies outside the text; negative indices do.
    ///
    ///     LSLiteral(xstring("abc"))[LSLiteral(1)];              // the char b
    LSLiteral operator[](const LSLiteral& index) const;
};

static_assert(sizeof(LSLiteral) == 40, "kind, payload and text only");

// Errors. Each composes its message and throws it as a LiteralException.

/// "No conversion from SRC to DST"
[[noreturn]] TLEXPANDER_API void ThrowNoConversion(const char* srcType, const char* dstType);
[[noreturn]] TLEXPANDER_API void ThrowNoConversion(ELiteral srcType, const char* dstType);
/// "No implicit conversion from SRC to DST"
[[noreturn]] TLEXPANDER_API void ThrowNoImplicitConversion(const char* srcType,
                                                           const char* dstType);
[[noreturn]] TLEXPANDER_API void ThrowNoImplicitConversion(ELiteral srcType, const char* dstType);
/// "No implicit conversion from value V to DST"; exists for long and xstring.
template <class T>
[[noreturn]] void ThrowNoImplicitConversionFromValue(T v, const char* dstType);
extern template TLEXPANDER_API void ThrowNoImplicitConversionFromValue<long>(long v,
                                                                             const char* dstType);
extern template TLEXPANDER_API void
ThrowNoImplicitConversionFromValue<xstring>(xstring v, const char* dstType);
/// "Incompatible types (X and Y) for OP operation"
[[noreturn]] TLEXPANDER_API void
ThrowIncompatibleTypesException(const LSLiteral& x, const LSLiteral& y, const char* opName);
/// "Incompatible type (X) for unary OP operation"
[[noreturn]] TLEXPANDER_API void ThrowIncompatibleTypeException(const LSLiteral& x,
                                                                const char* opName);

// Operators. Operands convert without data loss; the first form that fits both decides:
// text (strings and chars), then int64 (wrapping around), then float64. Anything else is a
// LiteralException.

/// Joins texts, or adds.
TLEXPANDER_API LSLiteral operator+(const LSLiteral& x, const LSLiteral& y);
TLEXPANDER_API LSLiteral operator-(const LSLiteral& x, const LSLiteral& y);
TLEXPANDER_API LSLiteral operator*(const LSLiteral& x, const LSLiteral& y);
/// int64 quotients are cut toward zero; dividing by 0 throws, also for floats.
TLEXPANDER_API LSLiteral operator/(const LSLiteral& x, const LSLiteral& y);
/// int64 only; the remainder has the sign of `x`.
TLEXPANDER_API LSLiteral operator%(const LSLiteral& x, const LSLiteral& y);
/// The language's `^^`, computed in doubles; two int64 give an int64, saturating.
TLEXPANDER_API LSLiteral Power(const LSLiteral& x, const LSLiteral& y);
/// int64 only; the low six bits of `y` count.
TLEXPANDER_API LSLiteral operator<<(const LSLiteral& x, const LSLiteral& y);
/// int64 only, keeping the sign; the low six bits of `y` count.
TLEXPANDER_API LSLiteral operator>>(const LSLiteral& x, const LSLiteral& y);
TLEXPANDER_API LSLiteral operator&(const LSLiteral& x, const LSLiteral& y);
TLEXPANDER_API LSLiteral operator|(const LSLiteral& x, const LSLiteral& y);
TLEXPANDER_API LSLiteral operator^(const LSLiteral& x, const LSLiteral& y);
/// Bools only; `y` is not looked at when `x` decides.
TLEXPANDER_API LSLiteral operator&&(const LSLiteral& x, const LSLiteral& y);
TLEXPANDER_API LSLiteral operator||(const LSLiteral& x, const LSLiteral& y);
/// Bools only.
TLEXPANDER_API bool operator!(const LSLiteral& x);
/// int64 only.
TLEXPANDER_API LSLiteral operator~(const LSLiteral& x);
TLEXPANDER_API LSLiteral operator+(const LSLiteral& x);
TLEXPANDER_API LSLiteral operator-(const LSLiteral& x);

/// Same kind and same value; NaN equals nothing. Never throws.
TLEXPANDER_API bool operator==(const LSLiteral& x, const LSLiteral& y);
/// The language's `==`: compares as bools, chars, texts, int64 or float64, whichever fits both
/// first, so a char equals its code and 5 equals 5.0. Throws when none fits.
TLEXPANDER_API bool IsEqual(const LSLiteral& x, const LSLiteral& y);
/// Orders texts by unsigned bytes, a prefix first; else numbers. Throws for bools.
TLEXPANDER_API bool IsLess(const LSLiteral& x, const LSLiteral& y);
TLEXPANDER_API bool IsLessThanOrEqual(const LSLiteral& x, const LSLiteral& y);

// The inline forms. The text of each assertion is what a report of it shows.
// clang-format off

inline bool LSLiteral::AsBool(bool allowDataLoss) const
{
    bool v = false;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsBool(v,allowDataLoss,true));
    return v;
}

inline char LSLiteral::AsChar(bool allowDataLoss) const
{
    char v = 0;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsChar(v,allowDataLoss,true));
    return v;
}

inline signed char LSLiteral::AsInt8(bool allowDataLoss) const
{
    signed char v = 0;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsInt8(v,allowDataLoss,true));
    return v;
}

inline short LSLiteral::AsInt16(bool allowDataLoss) const
{
    short v = 0;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsInt16(v,allowDataLoss,true));
    return v;
}

inline int LSLiteral::AsInt32(bool allowDataLoss) const
{
    int v = 0;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsInt32(v,allowDataLoss,true));
    return v;
}

inline long LSLiteral::AsInt64(bool allowDataLoss) const
{
    long v = 0;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsInt64(v,allowDataLoss,true));
    return v;
}

inline unsigned char LSLiteral::AsUInt8(bool allowDataLoss) const
{
    unsigned char v = 0;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsUInt8(v,allowDataLoss,true));
    return v;
}

inline unsigned short LSLiteral::AsUInt16(bool allowDataLoss) const
{
    unsigned short v = 0;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsUInt16(v,allowDataLoss,true));
    return v;
}

inline unsigned int LSLiteral::AsUInt32(bool allowDataLoss) const
{
    unsigned int v = 0;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsUInt32(v,allowDataLoss,true));
    return v;
}

inline unsigned long LSLiteral::AsUInt64(bool allowDataLoss) const
{
    unsigned long v = 0;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsUInt64(v,allowDataLoss,true));
    return v;
}

inline float LSLiteral::AsFloat32(bool allowDataLoss) const
{
    float v = 0;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsFloat32(v,allowDataLoss,true));
    return v;
}

inline double LSLiteral::AsFloat64(bool allowDataLoss) const
{
    double v = 0;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsFloat64(v,allowDataLoss,true));
    return v;
}

inline xstring LSLiteral::AsString(bool allowDataLoss) const
{
    xstring v;
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsString(v,allowDataLoss,true));
    return v;
}

inline void LSLiteral::AsString(xstring& v, bool allowDataLoss) const
{
    TELV_ASSERT_IN("Core/tlMacroExpander/LSLiteral", AsString(v,allowDataLoss,true));
}
// clang-format on

} // namespace telv
