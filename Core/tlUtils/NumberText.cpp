// SPDX-License-Identifier: MIT
// The standard library finds the shortest digits that read back to the same double; it gives them
// in scientific form, "-d.ddde+XX", from which plain notation is laid out here. A plain exponent
// is at most 15, so the longest text is a sign, "0.000" and 17 digits, or "-d.(16 digits)e-308".
#include "tlUtils/NumberText.h"
#include <charconv>
#include <cmath>
#include <cstring>

namespace telv
{

namespace
{

constexpr int s_leastPlainExponent = -4;
constexpr int s_greatestPlainExponent = 15;

char* PutText(char* out, const char* text, ssize_t length)
{
    std::memcpy(out, text, static_cast<size_t>(length));
    return out + length;
}

char* PutZeros(char* out, ssize_t count)
{
    std::memset(out, '0', static_cast<size_t>(count));
    return out + count;
}

/// Lays out `digits` with the decimal point behind digit `exponent` (0 is the first one).
char* PutPlain(char* out, const char* digits, ssize_t count, ssize_t exponent)
{
    if (exponent < 0)
    {
        out = PutText(out, "0.", 2);
        out = PutZeros(out, -exponent - 1);
        return PutText(out, digits, count);
    }
    const ssize_t whole = exponent + 1;
    if (count <= whole)
    {
        out = PutText(out, digits, count);
        return PutZeros(out, whole - count);
    }
    out = PutText(out, digits, whole);
    *out++ = '.';
    return PutText(out, digits + whole, count - whole);
}

} // namespace

NumberText::NumberText(long value)
{
    m_length = std::to_chars(m_text, m_text + sizeof m_text, value).ptr - m_text;
}

NumberText::NumberText(double value)
{
    char* out = m_text;
    if (std::isnan(value)) // the sign of a NaN means nothing
    {
        m_length = PutText(out, "nan", 3) - m_text;
        return;
    }
    char* const end =
        std::to_chars(m_text, m_text + sizeof m_text, value, std::chars_format::scientific).ptr;
    m_length = end - m_text;
    const char* const e = static_cast<const char*>(std::memchr(m_text, 'e', size_t(end - m_text)));
    if (e == nullptr) // infinite
        return;
    int exponent = 0;
    std::from_chars(e + 2, end, exponent);
    if (e[1] == '-')
        exponent = -exponent;
    if (exponent < s_leastPlainExponent || exponent > s_greatestPlainExponent)
        return;

    char digits[32];
    ssize_t count = 0;
    for (const char* p = m_text; p != e; ++p)
    {
        if (*p == '-')
            ++out; // stays where it is
        else if (*p != '.')
            digits[count++] = *p;
    }
    m_length = PutPlain(out, digits, count, exponent) - m_text;
}

} // namespace telv
