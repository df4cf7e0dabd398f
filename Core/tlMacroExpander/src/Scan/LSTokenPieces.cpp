// SPDX-License-Identifier: MIT
// The longer constructs of the scanner: numbers, comments, quoted strings, escapes.
//
// Each function runs a pointer over the text and puts it into the view when the construct is
// complete, or before it throws: errors stand at the character that is not the expected one.
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Scan/CommentEnd.h"
#include "tlMacroExpander/src/Scan/OpenedAt.h"
#include <cstring>

namespace telv
{

namespace
{

bool IsDigit(char c)
{
    return '0' <= c && c <= '9';
}

/// Throws a message around the character at the front of `s`, shown readably.
[[noreturn, gnu::noinline, gnu::cold]] void ThrowAtCharacter(SubString s, const char* before,
                                                             const char* after)
{
    StringStream message(4096);
    message << before << HumanReadableCharInSubString(s) << after;
    throw LexScannerException(message.GetString(), s);
}

[[noreturn, gnu::noinline, gnu::cold]] void ThrowNoFraction(SubString s, const char* start)
{
    StringStream message(4096);
    message << "Expected digit (not " << HumanReadableCharInSubString(s)
            << ") after decimal point (ie after reading '" << SubString(start, s.begin()) << "')";
    throw LexScannerException(message.GetString(), s);
}

[[noreturn, gnu::noinline, gnu::cold]] void ThrowNoExponent(SubString s, const char* start)
{
    StringStream message(4096);
    message << "Expected digit(s) (not " << HumanReadableCharInSubString(s)
            << ") for exponent after reading " << SubString(start, s.begin());
    throw LexScannerException(message.GetString(), s);
}

/// Throws "Met WHAT within DESCRIPTION", with the text read so far unless that is null.
[[noreturn, gnu::noinline, gnu::cold]] void
ThrowInString(SubString s, const char* what, const char* description, const char* start)
{
    StringStream message(4096);
    message << "Met " << what << " within " << description;
    if (start != nullptr)
        message << " after reading " << SubString(start, s.begin());
    throw LexScannerException(message.GetString(), s);
}

/// Advances over decimal digits; false when there is none.
bool SkipDigits(SubString& s)
{
    const char* const start = s.m_p1;
    while (s.m_p1 < s.m_p2 && IsDigit(*s.m_p1))
        ++s.m_p1;
    return s.m_p1 != start;
}

/// Advances over one character when it is `a` or `b`.
bool SkipEither(SubString& s, char a, char b)
{
    if (!s || (*s.m_p1 != a && *s.m_p1 != b))
        return false;
    ++s.m_p1;
    return true;
}

/// Reads the digits behind 0x.
EToken ScanHexDigits(SubString& s)
{
    if (!s || !IsHexDigit(*s))
        ThrowAtCharacter(s, "Expected hex digit (not ", ") after 0x");
    while (s && IsHexDigit(*s))
        ++s;
    return TOKEN_HEX_INTEGER;
}

/// Reads `*/` and what is before it.
void ScanBlockCommentBody(SubString& s)
{
    const SubString body(s);
    if (IsWithoutCommentEnd(body))
        s.m_p1 = s.m_p2;
    while (s)
    {
        const void* star = std::memchr(s.m_p1, '*', static_cast<size_t>(s.size()));
        if (star == nullptr)
            break;
        s.m_p1 = static_cast<const char*>(star) + 1;
        if (SkipEither(s, '/', '/'))
            return;
    }
    NoteWithoutCommentEnd(body);
    s.m_p1 = s.m_p2;
    NoteOpenedToken(body.begin() - 2, s.begin());
    throw LexScannerException("Met EOS in middle of /* ... */ comment", s);
}

} // namespace

EToken LsScanNumber(SubString& s)
{
    const char* const start = s.m_p1;
    if (!SkipDigits(s))
        return TOKEN_UNDEF;
    if (*start == '0' && s.m_p1 == start + 1 && SkipEither(s, 'x', 'X'))
        return ScanHexDigits(s);
    EToken kind = TOKEN_INTEGER;
    if (SkipEither(s, '.', '.'))
    {
        if (!SkipDigits(s))
            ThrowNoFraction(s, start);
        kind = TOKEN_FLOAT;
    }
    if (SkipEither(s, 'e', 'E'))
    {
        SkipEither(s, '+', '-');
        if (!SkipDigits(s))
            ThrowNoExponent(s, start);
        kind = TOKEN_FLOAT;
    }
    return kind;
}

bool LsScanComment(SubString& s)
{
    if (s.size() < 2 || s.m_p1[0] != '/')
        return false;
    if (s.m_p1[1] == '/')
    {
        const void* lineFeed = std::memchr(s.m_p1, '\n', static_cast<size_t>(s.size()));
        s.m_p1 = lineFeed == nullptr ? s.m_p2 : static_cast<const char*>(lineFeed);
        return true;
    }
    if (s.m_p1[1] != '*')
        return false;
    s.m_p1 += 2;
    ScanBlockCommentBody(s);
    return true;
}

bool LsScanLiteralString(SubString& s, char quote, const char* description)
{
    const char* const start = s.m_p1;
    const bool raw = s && (*start == 'r' || *start == 'R');
    const ssize_t prefix = raw ? 1 : 0;
    if (s.size() <= prefix || start[prefix] != quote)
        return false;
    s.m_p1 += prefix + 1;
    if (!s)
        ThrowInString(s, "EOS", description, nullptr);
    while (s)
    {
        const char c = *s.m_p1;
        if (c == '\n')
            ThrowInString(s, "line feed", description, start);
        if (c == '\\' && !raw)
        {
            LsScanEscapeCharacter(s);
            continue;
        }
        ++s.m_p1;
        if (c == quote)
            return true;
    }
    NoteOpenedToken(start, s.begin());
    ThrowInString(s, "EOS", description, start);
}

bool LsScanLiteralCharacter(SubString& s)
{
    if (!SkipEither(s, '\'', '\''))
        return false;
    if (!s || *s == '\r' || *s == '\n' || *s == '\t' || *s == '\'')
        ThrowAtCharacter(s, "Read ",
                         " while trying to read literal character enclosed in single quotes");
    if (!LsScanEscapeCharacter(s))
        ++s;
    if (!SkipEither(s, '\'', '\''))
        ThrowAtCharacter(s, "Expected second single quote (not ", ") for literal character");
    return true;
}

bool LsScanEscapeCharacter(SubString& s)
{
    if (!SkipEither(s, '\\', '\\'))
        return false;
    if (!s)
        throw LexScannerException("Expected escape character following backslash when reached EOS",
                                  s);
    if (SkipEither(s, 'x', 'x'))
    {
        for (int digit = 0; digit < 2; ++digit, ++s)
        {
            if (!s)
                throw LexScannerException("Expected hex character when reached EOS", s);
            if (!IsHexDigit(*s))
                ThrowAtCharacter(s, "Expected hex character when read ", "");
        }
        return true;
    }
    char mapped;
    if (!MapEscapeCharacter(*s, mapped))
        ThrowAtCharacter(s, "Invalid escape character ", " following backslash");
    ++s;
    return true;
}

} // namespace telv
