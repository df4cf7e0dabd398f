// SPDX-License-Identifier: MIT
// Single characters: escapes, digits, and characters as error messages show them.
#include "tlUtils/StringExt.h"

namespace telv
{

namespace
{

/// Length of the well-formed UTF-8 sequence of several bytes that `s` begins with, else 0. Neither
/// overlong forms nor surrogates nor values above U+10FFFF are well-formed; all of these show in
/// the range of the second byte.
ssize_t MultiByteSequenceLength(SubString s)
{
    const auto byteAt = [s](ssize_t i) { return static_cast<unsigned char>(s[i]); };
    const unsigned first = byteAt(0);
    if (first < 0xc2 || first > 0xf4)
        return 0;
    const ssize_t length = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    if (s.size() < length)
        return 0;
    const unsigned least = first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
    const unsigned greatest = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
    if (byteAt(1) < least || byteAt(1) > greatest)
        return 0;
    for (ssize_t i = 2; i < length; ++i)
    {
        if (byteAt(i) < 0x80 || byteAt(i) > 0xbf)
            return 0;
    }
    return length;
}

/// The letter of the escape that error messages use for `c`, or 0 when there is none.
char EscapeLetter(char c)
{
    switch (c)
    {
    case '\a':
        return 'a';
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    case '\v':
        return 'v';
    case '\'':
    case '\\':
        return c;
    default:
        return 0;
    }
}

void WriteReadableCharacter(xostream& os, SubString s)
{
    const char c = *s;
    if (const char letter = EscapeLetter(c))
    {
        os << '\\' << letter;
        return;
    }
    if (c >= 0x20 && c < 0x7f)
    {
        os << c;
        return;
    }
    if (const ssize_t length = MultiByteSequenceLength(s))
    {
        os.put(s.begin(), length);
        return;
    }
    static constexpr char digits[] = "0123456789abcdef";
    const unsigned byte = static_cast<unsigned char>(c);
    os << "\\x" << digits[byte >> 4] << digits[byte & 15];
}

} // namespace

bool MapEscapeCharacter(char c, char& out)
{
    static constexpr char letters[] = "abfnrtv0\\'\"?";
    static constexpr char meanings[] = "\a\b\f\n\r\t\v\0\\'\"?";
    static_assert(sizeof letters == sizeof meanings);
    for (size_t i = 0; i < sizeof letters - 1; ++i)
    {
        if (letters[i] == c)
        {
            out = meanings[i];
            return true;
        }
    }
    out = c;
    return false;
}

bool IsHexDigit(char c)
{
    return MapHexDigit(c) != -1;
}

int MapHexDigit(char c)
{
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return MapDecimalDigit(c);
}

int MapDecimalDigit(char c)
{
    return c >= '0' && c <= '9' ? c - '0' : -1;
}

xostream& operator<<(xostream& os, const HumanReadableCharInSubString& c)
{
    if (c.m_s.empty())
        return os << "EOS";
    os << '\'';
    WriteReadableCharacter(os, c.m_s);
    return os << '\'';
}

} // namespace telv
