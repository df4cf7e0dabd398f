// SPDX-License-Identifier: MIT
// Numbers to text and digits to numbers. Values are built in unsigned types, where wrapping around
// is defined, and converted at the end.
#define TELV_SOURCE_PATH "Core/tlUtils/StringExt"

#include "tlUtils/IntTypes.h"
#include "tlUtils/NumberText.h"
#include "tlUtils/StringExt.h"
#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>

namespace telv
{

namespace
{

xstring MakeString(const NumberText& number)
{
    return xstring(number.m_text, number.m_text + number.m_length);
}

template <class Unsigned>
TELV_WRAPS Unsigned DecimalToUnsigned(SubString digits)
{
    const ssize_t n = digits.size();
    TELV_ASSERT(n > 0);
    Unsigned value = 0;
    for (const char c : digits)
    {
        const int d = MapDecimalDigit(c);
        TELV_ASSERT(d != -1);
        value = value * 10 + static_cast<Unsigned>(d);
    }
    return value;
}

template <class Unsigned>
TELV_WRAPS Unsigned HexToUnsigned(SubString str)
{
    const ssize_t n = str.size();
    TELV_ASSERT(n > 2);
    TELV_ASSERT(str[0] == '0');
    TELV_ASSERT(str[1] == 'x' || str[1] == 'X');
    Unsigned value = 0;
    for (const char c : SubString(str.begin() + 2, str.end()))
    {
        const int d = MapHexDigit(c);
        TELV_ASSERT(d != -1);
        value = value << 4 | static_cast<Unsigned>(d);
    }
    return value;
}

/// Where the first digit that is not zero stands: 0 is the one before the point. The text has one.
ssize_t ExponentOfDigits(SubString digits)
{
    const char* const point = std::find(digits.begin(), digits.end(), '.');
    const char* const first =
        std::find_if(digits.begin(), digits.end(), [](char c) { return c >= '1' && c <= '9'; });
    return first < point ? point - first - 1 : point - first;
}

/// The number behind the `e`; one that no text is long enough to make up for, when it does not fit.
ssize_t WrittenExponent(SubString text)
{
    constexpr ssize_t most = std::numeric_limits<ssize_t>::max() / 2;
    const bool isNegative = !text.empty() && *text == '-';
    if (isNegative || (!text.empty() && *text == '+'))
        ++text.m_p1;
    ssize_t value = 0;
    const auto read = std::from_chars(text.begin(), text.end(), value);
    if (read.ec == std::errc::result_out_of_range)
        value = most;
    return isNegative ? -std::min(value, most) : std::min(value, most);
}

/// Whether a number that no double can hold is too large, not too small.
bool IsTooLarge(SubString text)
{
    const char* const e =
        std::find_if(text.begin(), text.end(), [](char c) { return c == 'e' || c == 'E'; });
    const SubString exponent(e == text.end() ? e : e + 1, text.end());
    return ExponentOfDigits(SubString(text.begin(), e)) + WrittenExponent(exponent) > 0;
}

} // namespace

xstring ToString(int value)
{
    return ToString(static_cast<long>(value));
}

xstring ToString(long value)
{
    return MakeString(NumberText(value));
}

xstring ToString(double value)
{
    return MakeString(NumberText(value));
}

int32 DecimalToInt32(SubString digits)
{
    return static_cast<int32>(DecimalToUnsigned<uint32>(digits));
}

int64 DecimalToInt64(SubString digits)
{
    return static_cast<int64>(DecimalToUnsigned<uint64>(digits));
}

int32 HexToInt32(SubString str)
{
    return static_cast<int32>(HexToUnsigned<uint32>(str));
}

int64 HexToInt64(SubString str)
{
    return static_cast<int64>(HexToUnsigned<uint64>(str));
}

double DecimalToDouble(SubString text)
{
    double value = 0;
    const auto read = std::from_chars(text.begin(), text.end(), value);
    if (read.ec != std::errc::result_out_of_range)
        return value;
    return IsTooLarge(SubString(text.begin(), read.ptr)) ? std::numeric_limits<double>::infinity()
                                                         : 0.0;
}

} // namespace telv
