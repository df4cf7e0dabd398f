// SPDX-License-Identifier: MIT
// Scanning of white space, identifiers, digits and indentation. Each class of characters is a
// table of 256 entries, so a scan is one load and one test per character.
#include "tlUtils/StringExt.h"
#include <array>

namespace telv
{

namespace
{

enum : unsigned char
{
    s_isWhiteSpace = 1,
    s_beginsIdentifier = 2,
    s_isDigit = 4,
};

constexpr std::array<unsigned char, 256> MakeClasses()
{
    std::array<unsigned char, 256> classes{};
    for (const char c : {' ', '\t', '\n', '\r', '\v', '\f'})
        classes[static_cast<unsigned char>(c)] = s_isWhiteSpace;
    for (size_t c = '0'; c <= '9'; ++c)
        classes[c] = s_isDigit;
    for (size_t c = 'a'; c <= 'z'; ++c)
        classes[c] = s_beginsIdentifier;
    for (size_t c = 'A'; c <= 'Z'; ++c)
        classes[c] = s_beginsIdentifier;
    classes['_'] = s_beginsIdentifier;
    for (size_t c = 0x80; c <= 0xff; ++c)
        classes[c] = s_beginsIdentifier;
    return classes;
}

constexpr std::array<unsigned char, 256> s_classes = MakeClasses();

bool IsOfClass(char c, unsigned classes)
{
    return (s_classes[static_cast<unsigned char>(c)] & classes) != 0;
}

void SkipClass(SubString& s, unsigned classes)
{
    const char* p = s.m_p1;
    while (p != s.m_p2 && IsOfClass(*p, classes))
        ++p;
    s.m_p1 = p;
}

bool BeginsWithRawPrefix(SubString s)
{
    return s.size() >= 2 && (s[0] == 'r' || s[0] == 'R') && (s[1] == '"' || s[1] == '\'');
}

} // namespace

void ScanWhiteSpace(SubString& s)
{
    SkipClass(s, s_isWhiteSpace);
}

bool ScanIdentifier(SubString& s)
{
    if (s.empty() || !IsOfClass(*s.m_p1, s_beginsIdentifier) || BeginsWithRawPrefix(s))
        return false;
    SkipClass(s, s_beginsIdentifier | s_isDigit);
    return true;
}

void ScanDigits(SubString& s)
{
    SkipClass(s, s_isDigit);
}

void ScanIndentation(SubString& s, long indent, long tabWidth)
{
    for (; s && (*s == ' ' || *s == '\t'); ++s)
    {
        const long columns = *s == ' ' ? 1 : tabWidth;
        if (columns > indent)
            return;
        indent -= columns;
    }
}

} // namespace telv
