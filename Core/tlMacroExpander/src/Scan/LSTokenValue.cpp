// SPDX-License-Identifier: MIT
// The values of tokens, and the decoding of quoted strings that were made at run time.
//
// The getters read text that the scanner has accepted, so anything unexpected is a broken
// assumption of the caller. UnstringifyQuotedString reads text that nobody has looked at yet and
// reports errors in it.
#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/LSToken"

#include "tlMacroExpander/src/LSToken.h"

namespace telv
{

void LSToken::GetLiteralString(xstring& out) const
{
    TELV_ASSERT(m_type == TOKEN_DOUBLE_QUOTED_STRING || m_type == TOKEN_SINGLE_QUOTED_STRING);
    const char delimiter = m_type == TOKEN_DOUBLE_QUOTED_STRING ? '"' : '\'';
    SubString s(m_str);
    const bool raw = *s == 'r' || *s == 'R';
    if (raw)
        ++s;
    TELV_ASSERT(*s == delimiter);
    ++s;
    out.clear();
    out.reserve(m_str.size());
    const char* plain = s.begin(); // what is copied as it stands
    for (;; ++s)
    {
        TELV_ASSERT(s && *s != '\n');
        if (*s == delimiter)
            break;
        if (*s != '\\' || raw)
            continue;
        out += SubString(plain, s.begin());
        ++s;
        TELV_ASSERT(s && *s != '\n');
        char c;
        TELV_ASSERT(MapEscapeCharacter(*s, c));
        out += c;
        plain = s.begin() + 1;
    }
    out += SubString(plain, s.begin());
}

char LSToken::GetLiteralCharacter() const
{
    TELV_ASSERT(m_type == TOKEN_SINGLE_QUOTED_STRING);
    TELV_ASSERT(m_str.size() == 1);
    const char* s = m_str.begin();
    TELV_ASSERT(*s == '\'');
    ++s;
    TELV_ASSERT(*s != '\n' && *s != '\t');
    char c = *s;
    if (c == '\\')
    {
        ++s;
        TELV_ASSERT(MapEscapeCharacter(*s, c));
    }
    ++s;
    TELV_ASSERT(*s == '\'');
    return c;
}

int32 LSToken::GetLiteralInt32() const
{
    TELV_ASSERT(m_type == TOKEN_INTEGER);
    return DecimalToInt32(m_str);
}

int64 LSToken::GetLiteralInt64() const
{
    TELV_ASSERT(m_type == TOKEN_INTEGER);
    return DecimalToInt64(m_str);
}

int32 LSToken::GetLiteralHexInt32() const
{
    return HexToInt32(m_str);
}

int64 LSToken::GetLiteralHexInt64() const
{
    return HexToInt64(m_str);
}

double LSToken::GetLiteralDouble() const
{
    TELV_ASSERT(m_type == TOKEN_INTEGER || m_type == TOKEN_FLOAT);
    return DecimalToDouble(m_str); // strtod asks the locale what a decimal point is
}

namespace
{

/// Reads the two digits behind `\x` and returns the byte that they give.
char ReadHexEscape(SubString& s)
{
    int value = 0;
    for (int digit = 0; digit < 2; ++digit, ++s)
    {
        if (!s)
            throw LexScannerException("Expected hex character when reached EOS", s);
        if (!IsHexDigit(*s))
        {
            StringStream message(4096);
            message << "Expected hex character when read " << HumanReadableCharInSubString(s);
            throw LexScannerException(message.GetString(), s);
        }
        value = value * 16 + MapHexDigit(*s);
    }
    return static_cast<char>(value);
}

/// Reads what stands behind a backslash and returns the character that it means.
char ReadEscape(SubString& s)
{
    if (!s)
        throw LexScannerException("Met EOS in middle of string", s);
    if (*s == 'x')
    {
        ++s;
        return ReadHexEscape(s);
    }
    char c;
    if (!MapEscapeCharacter(*s, c))
    {
        xstring message(1, c);
        message += "is not a valid escape character";
        throw LexScannerException(message, s);
    }
    ++s;
    return c;
}

/// Reads the opening quote and returns it.
char ReadOpeningQuote(SubString& s)
{
    if (!s)
        throw LexScannerException("Expected quoted string", s);
    const char delimiter = *s;
    if (delimiter != '"' && delimiter != '\'')
    {
        xstring message(s);
        message += " isn't a quoted string";
        throw LexScannerException(message, s);
    }
    ++s;
    if (!s)
        throw LexScannerException("Expected quoted string", s);
    return delimiter;
}

/// Advances to the next character that is not copied as it stands, and writes those that are.
void WritePlainCharacters(SubString& s, char delimiter, xostream& os)
{
    const char* const start = s.begin();
    while (s && *s != delimiter && *s != '\n' && *s != '\\')
        ++s;
    os << SubString(start, s.begin());
}

} // namespace

void UnstringifyQuotedString(SubString s, xostream& os)
{
    const char delimiter = ReadOpeningQuote(s);
    for (;;)
    {
        WritePlainCharacters(s, delimiter, os);
        if (!s)
            throw LexScannerException("Met EOS in middle of string", s);
        if (*s == delimiter)
            return;
        if (*s == '\n')
            throw LexScannerException("Met end of line in middle of string", s);
        ++s;
        os << ReadEscape(s);
    }
}

} // namespace telv
