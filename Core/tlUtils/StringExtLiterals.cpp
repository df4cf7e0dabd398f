// SPDX-License-Identifier: MIT
// Characters and texts as C-style literals. Both kinds of literals escape the backslash, control
// characters and their own quote; everything else, UTF-8 included, stays as it is.
#include "tlUtils/StringExt.h"

namespace telv
{

namespace
{

/// False for the characters that stand for themselves in a literal between `quote`s.
bool NeedsEscape(char c, char quote)
{
    return c == quote || c == '\\' || static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

/// `c` as it stands in a literal between `quote`s.
class EscapedChar
{
public:
    EscapedChar(char c, char quote)
    {
        static constexpr char digits[] = "0123456789abcdef";
        static constexpr char letters[] = "abtnvfr"; // from 0x07 on
        const unsigned byte = static_cast<unsigned char>(c);
        if (!NeedsEscape(c, quote))
        {
            m_text[0] = c;
            m_length = 1;
        }
        else if (c == quote || c == '\\')
            Set('\\', c);
        else if (byte >= 0x07 && byte <= 0x0d)
            Set('\\', letters[byte - 0x07]);
        else
        {
            Set('\\', 'x');
            m_text[2] = digits[byte >> 4];
            m_text[3] = digits[byte & 15];
            m_length = 4;
        }
    }

    SubString View() const TELV_LIFETIMEBOUND { return SubString(m_text, m_text + m_length); }

private:
    void Set(char first, char second)
    {
        m_text[0] = first;
        m_text[1] = second;
        m_length = 2;
    }

    char m_text[4];
    ssize_t m_length;
};

} // namespace

void WriteCharForCStyleLiteralConstants(xostream& os, char c)
{
    os << EscapedChar(c, '"').View();
}

void MakeDoubleQuotedString(SubString s, xstring& out)
{
    xstring literal; // built aside: `s` may view `out`
    literal.reserve(s.size() + 2);
    literal += '"';
    const char* written = s.begin();
    for (const char* p = s.begin(); p != s.end(); ++p)
    {
        if (!NeedsEscape(*p, '"'))
            continue;
        literal += SubString(written, p);
        literal += EscapedChar(*p, '"').View();
        written = p + 1;
    }
    literal += SubString(written, s.end());
    literal += '"';
    out.swap(literal);
}

void MakeSingleQuotedLiteralChar(char c, xstring& out)
{
    out = "'";
    out += EscapedChar(c, '\'').View();
    out += '\'';
}

} // namespace telv
