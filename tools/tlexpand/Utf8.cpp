// SPDX-License-Identifier: MIT
// The table of well-formed sequences: the first byte decides the length and the range of the second
// byte; all further ones are 0x80 to 0xbf.
#include "Utf8.h"

namespace telv::tool
{

namespace
{

struct Shape
{
    ssize_t m_length = 0; ///< 0: no sequence begins with this byte.
    unsigned char m_low = 0x80;
    unsigned char m_high = 0xbf;
};

Shape ShapeOf(unsigned char first)
{
    if (first < 0x80)
        return {1};
    if (first < 0xc2 || first > 0xf4)
        return {};
    if (first < 0xe0)
        return {2};
    if (first < 0xf0)
    {
        if (first == 0xe0)
            return {3, 0xa0, 0xbf};
        return first == 0xed ? Shape{3, 0x80, 0x9f} : Shape{3};
    }
    if (first == 0xf0)
        return {4, 0x90, 0xbf};
    return first == 0xf4 ? Shape{4, 0x80, 0x8f} : Shape{4};
}

} // namespace

Utf8Character TakeUtf8Character(SubString& s)
{
    const char* const begin = s.begin();
    Shape shape = ShapeOf(static_cast<unsigned char>(*begin));
    ssize_t length = 1;
    while (length < shape.m_length && length < s.size())
    {
        const auto byte = static_cast<unsigned char>(begin[length]);
        if (byte < shape.m_low || byte > shape.m_high)
            break;
        shape.m_low = 0x80;
        shape.m_high = 0xbf;
        ++length;
    }
    s.m_p1 = begin + length;
    return {SubString(begin, begin + length), length == shape.m_length};
}

char32_t CodePointOf(SubString character)
{
    const auto first = static_cast<unsigned char>(*character.begin());
    constexpr unsigned payload[] = {0, 0x7f, 0x1f, 0x0f, 0x07}; // of the first byte, by length
    char32_t value = first & payload[character.size()];
    for (const char* p = character.begin() + 1; p != character.end(); ++p)
        value = value << 6 | (static_cast<unsigned char>(*p) & 0x3fU);
    return value;
}

SubString WithoutByteOrderMark(SubString text)
{
    const SubString mark("\xef\xbb\xbf");
    const bool begins =
        text.size() >= mark.size() && SubString(text.begin(), text.begin() + mark.size()) == mark;
    return begins ? SubString(text.begin() + mark.size(), text.end()) : text;
}

} // namespace telv::tool
