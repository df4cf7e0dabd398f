// SPDX-License-Identifier: MIT
// Bracketed sections and arguments. Blocks of text are in ScanBlock.cpp.
//
// Everything that counts brackets goes through SkipToMatchingBracket.
#include "tlMacroExpander/src/Scan/ScanSection.h"
#include "tlMacroExpander/src/Scan/BracketCache.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/OpenedAt.h"
#include <cstring>

namespace telv
{

namespace
{

/// The opening bracket as an error message shows it; a NUL for any other kind.
char OpeningCharacter(EToken open)
{
    switch (open)
    {
    case TOKEN_LEFT_PAREN:
        return '(';
    case TOKEN_LEFT_CURLY:
        return '{';
    case TOKEN_LEFT_SQUARE:
        return '[';
    default:
        return '\0';
    }
}

/// The kind that closes a group in an argument, or TOKEN_UNDEF when `open` opens none.
EToken ClosingBracketOf(EToken open)
{
    switch (open)
    {
    case TOKEN_LEFT_PAREN:
        return TOKEN_RIGHT_PAREN;
    case TOKEN_LEFT_CURLY:
        return TOKEN_RIGHT_CURLY;
    case TOKEN_LEFT_SQUARE:
        return TOKEN_RIGHT_SQUARE;
    default:
        return TOKEN_UNDEF;
    }
}

[[noreturn, gnu::noinline, gnu::cold]] void ThrowArgumentNotEnded(SubString argument)
{
    xstring message("Met EOS while reading argument ");
    message += argument;
    throw LexScannerException(message, argument);
}

[[noreturn, gnu::noinline, gnu::cold]] void ThrowNotOpened(EToken open, const LSToken& token)
{
    StringStream message(4096);
    message << OpeningCharacter(open) << " expected when read " << token;
    throw LexScannerException(message.GetString(), token);
}

/// Reads an argument in back quotes, of which the first begins `s`, and the token behind it.
LSToken ScanBackQuotedArgument(SubString& s, SubString& arg)
{
    const SubString whole(s);
    ++s;
    const void* quote = s ? std::memchr(s.m_p1, '`', static_cast<size_t>(s.size())) : nullptr;
    if (quote == nullptr)
        ThrowArgumentNotEnded(whole);
    arg = SubString(s.m_p1, static_cast<const char*>(quote));
    s.m_p1 = arg.m_p2 + 1;
    return LsScanToken(s, /*returnComments=*/false);
}

} // namespace

void ReadGivenToken(SubString& s, EToken expected, const char* message)
{
    const LSToken token = LsScanToken(s, /*returnComments=*/false);
    if (token.m_type != expected)
        throw LexScannerException(message, token);
}

ssize_t ScanBackwardsThroughSpacesAndTabs(SubString& s)
{
    ssize_t width = 0;
    for (; s; --s.m_p2)
    {
        const char last = s.m_p2[-1];
        if (last != ' ' && last != '\t')
            break;
        width += last == '\t' ? 4 : 1;
    }
    return width;
}

namespace
{

/// Reads an argument that is a single name, as most are; false, with nothing read, when it is not.
bool ScanOneName(SubString& s, SubString& arg, EToken close, LSToken& end)
{
    if (ClassOf(*s) > CHAR_RAW_PREFIX)
        return false;
    const char* const nameEnd = SkipNameCharacters(s.begin(), s.end());
    const char* const p = SkipBlanks(nameEnd, s.end());
    if (p == s.end())
        return false;
    const bool isComma = *p == ',';
    if (!isComma && !(*p == ')' && close == TOKEN_RIGHT_PAREN) &&
        !(*p == ']' && close == TOKEN_RIGHT_SQUARE))
        return false;
    arg = SubString(s.begin(), nameEnd);
    end = LSToken(isComma ? TOKEN_COMMA : close, SubString(p, p + 1));
    s.m_p1 = p + 1;
    return true;
}

} // namespace

LSToken ScanArgument(SubString& s, SubString& arg, EToken close)
{
    s.m_p1 = SkipBlanks(s.begin(), s.end());
    if (LSToken end; s && ScanOneName(s, arg, close, end))
        return end;
    if (s && *s == '`')
        return ScanBackQuotedArgument(s, arg);
    const SubString whole(s);
    arg.m_p1 = s.m_p1;
    for (;;)
    {
        arg.m_p2 = s.m_p1;
        const LSToken token = LsScanToken(s, /*returnComments=*/false);
        if (token.m_type == close || token.m_type == TOKEN_COMMA)
            return token;
        if (token.m_type == TOKEN_END)
            ThrowArgumentNotEnded(whole);
        const EToken groupClose = ClosingBracketOf(token.m_type);
        MatchingBracket found;
        if (groupClose != TOKEN_UNDEF &&
            !SkipToMatchingBracket(s, token.m_type, groupClose, found, CurrentBracketCache()))
            ThrowArgumentNotEnded(whole);
    }
}

SubString ScanBrackettedSection(SubString& s, bool readOpen, EToken open, EToken close)
{
    if (readOpen)
    {
        const LSToken token = LsScanToken(s, /*returnComments=*/false);
        if (token.m_type != open)
            ThrowNotOpened(open, token);
    }
    SubString section(s);
    const char* const opened = s.begin() - 1; // the bracket has just been read
    ScanWhiteSpace(section);
    MatchingBracket found;
    if (!SkipToMatchingBracket(s, open, close, found, CurrentBracketCache()))
    {
        NoteOpened(opened, s.begin());
        throw LexScannerException("Met EOS while reading bracketted section", s);
    }
    section.m_p2 = found.m_lastEnd < section.m_p1 ? section.m_p1 : found.m_lastEnd;
    return section;
}

bool SubStringsAreTokenEquivalent(SubString a, SubString b)
{
    for (;;)
    {
        const LSToken tokenA = LsScanToken(a, /*returnComments=*/false);
        const LSToken tokenB = LsScanToken(b, /*returnComments=*/false);
        if (tokenA.m_type == TOKEN_END)
            return tokenB.m_type == TOKEN_END;
        if (tokenA.m_type != tokenB.m_type || tokenA.m_str != tokenB.m_str)
            return false;
    }
}

} // namespace telv
