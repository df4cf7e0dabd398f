// Numbers to text and digits to numbers. Values are built in unsigned types, where wrapping around
// is defined, and converted at the end.
#define TELV_SOURCE_PATH "Core/tlUtils/StringExt"

#include "tlUtils/IntTypes.h"
#include "tlUtils/NumberText.h"
#include "tlUtils/StringExt.h"

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

} // namespace telv
