// SPDX-License-Identifier: MIT
// Blocks of text: bracketed on the same line, bracketed on lines of their own, or a rest of line.
//
// The first character behind the blanks decides between the forms: a line feed means that the
// bracket stands on a line of its own.
#include "tlMacroExpander/src/Scan/BracketCache.h"
#include "tlMacroExpander/src/Scan/LostText.h"
#include "tlMacroExpander/src/Scan/ScanSection.h"

namespace telv
{

namespace
{

/// The brackets of a block, and how messages name them.
struct BlockBrackets
{
    EToken m_open;
    EToken m_close;
    const char* m_openText;
    const char* m_closeText;
};

[[noreturn, gnu::noinline, gnu::cold]] void ThrowNotOpened(const BlockBrackets& brackets,
                                                           const LSToken& token)
{
    StringStream message(4096);
    message << "Expected " << brackets.m_openText << " when read " << token;
    throw LexScannerException(message.GetString(), token);
}

[[noreturn, gnu::noinline, gnu::cold]] void ThrowNotClosed(const BlockBrackets& brackets,
                                                           const LSToken& open)
{
    xstring message("Met EOS before closing ");
    message += brackets.m_closeText;
    throw LexScannerException(message, open);
}

/// Advances over white space up to the end of the line.
void SkipBlanksOnLine(SubString& s)
{
    while (s && (*s == ' ' || *s == '\t' || *s == '\v' || *s == '\f' || *s == '\r'))
        ++s;
}

/// Advances over the character `c` when it is the next one.
bool SkipCharacter(SubString& s, char c)
{
    if (!s || *s != c)
        return false;
    ++s;
    return true;
}

/// Advances over spaces and tabs and returns their width; a tab counts 4.
ssize_t SkipIndentation(SubString& s)
{
    ssize_t width = 0;
    for (; s && (*s == ' ' || *s == '\t'); ++s)
        width += *s == '\t' ? 4 : 1;
    return width;
}

/// [start, end), or the empty view at `start` when `end` lies before it.
SubString MakeView(const char* start, const char* end)
{
    return SubString(start, end < start ? start : end);
}

/// Takes what is left of the line that `s` is on.
SubString TakeRestOfLine(SubString& s)
{
    const char* const start = s.begin();
    while (s && *s != '\n' && *s != '\r')
        ++s;
    return SubString(start, s.begin());
}

/// Reads the rest of a block whose opening bracket, on the same line, has just been read.
SubString ScanSameLineBlock(SubString& s, const BlockBrackets& brackets, const LSToken& open)
{
    if (!s)
        ThrowNotClosed(brackets, open);
    SubString block(s);
    SkipCharacter(block, '\r');
    SkipCharacter(block, '\n');
    MatchingBracket found;
    if (!SkipToMatchingBracket(s, brackets.m_open, brackets.m_close, found, CurrentBracketCache()))
        throw LexScannerException("Met EOS while reading bracketted string", open);
    return MakeView(block.begin(), found.m_close);
}

/// Where the text of a block ends whose closing bracket stands at `close` on a line of its own: at
/// the end of the line before. Without such a line, at the last character that is no blank, which
/// is lost. `first` is the character that the search ends at.
const char* FindEndOfLines(const char* first, const char* close)
{
    const char* end = close - 1;
    while (end > first && (*end == ' ' || *end == '\t'))
        --end;
    if (*end == '\n' && end > first && end[-1] == '\r')
        --end;
    else if (*end != '\n' && end > first)
        NoteLostText(end, close);
    return end;
}

/// Reads a block whose opening bracket stands on a line that follows.
SubString ScanMultiLineBlock(SubString& s, ssize_t& indent, const BlockBrackets& brackets)
{
    const LSToken open = LsScanToken(s, /*returnComments=*/false);
    if (open.m_type != brackets.m_open)
        ThrowNotOpened(brackets, open);
    SubString block(s);
    SkipBlanksOnLine(block);
    if (SkipCharacter(block, '\n'))
        indent = SkipIndentation(block);
    MatchingBracket found;
    if (!SkipToMatchingBracket(s, brackets.m_open, brackets.m_close, found, CurrentBracketCache()))
        ThrowNotClosed(brackets, open);
    return MakeView(block.begin(), FindEndOfLines(open.m_str.begin(), found.m_close));
}

} // namespace

SubString ScanStringBlock(SubString& s, ssize_t& indent, EToken open, EToken close,
                          const char* openText, const char* closeText, bool requireOpen)
{
    const BlockBrackets brackets{open, close, openText, closeText};
    indent = 0;
    SkipBlanksOnLine(s);
    if (!s)
        ThrowNotOpened(brackets, LSToken(TOKEN_END, s));
    if (*s == '\n')
        return ScanMultiLineBlock(s, indent, brackets);
    SubString rest(s);
    const LSToken token = LsScanToken(rest, /*returnComments=*/false);
    if (token.m_type == open)
    {
        s = rest;
        return ScanSameLineBlock(s, brackets, token);
    }
    if (requireOpen)
        ThrowNotOpened(brackets, token);
    return TakeRestOfLine(s);
}

SubString ScanSubstString(SubString& s, ssize_t& indent)
{
    return ScanStringBlock(s, indent, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY, "{", "}",
                           /*requireOpen=*/false);
}

SubString ScanRndBrackettedString(SubString& s, ssize_t& indent)
{
    return ScanStringBlock(s, indent, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN, "(", ")",
                           /*requireOpen=*/true);
}

} // namespace telv
