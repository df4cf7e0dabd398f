// SPDX-License-Identifier: MIT
// Passes over text that means nothing: most of most texts.
//
// Between two tokens that may matter, the expander only copies. What stands there is read here with
// as little work as the grammar allows: operators need not be told apart, numbers and strings not
// be decoded. Where a token is out of the ordinary or might be an error, the stretch ends before
// it, and the token scanner reads it.
#pragma once

#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/QuietText.h"
#include "tlUtils/BasicSubString.h"

namespace telv
{

/// Behind the quoted string that begins at `p` (its quote), or null when that is not as simple as
/// can be: in double quotes with a dollar sign, with an unusual escape, or not closed on its line.
const char* SkipPlainString(const char* p, const char* end);

/// Behind the comment or operator that begins with the slash at `p`, or null when it is a comment
/// without an end.
const char* SkipPlainSlash(const char* p, const char* end);

/// Behind the integer that begins at `p`; null when it is another number, or may be an error.
inline const char* SkipPlainNumber(const char* p, const char* end)
{
    do
        ++p;
    while (p < end && ClassOf(*p) == CHAR_DIGIT);
    if (p == end)
        return p;
    const char next = *p;
    const bool goesOn = next == '.' || next == 'e' || next == 'E' || next == 'x' || next == 'X';
    return goesOn ? nullptr : p;
}

/// Behind the operator that begins with the plus sign at `p`; null for `++=`, which is none.
inline const char* SkipPlainPlus(const char* p, const char* end)
{
    if (end - p < 2 || p[1] != '+')
        return p + 1;
    if (end - p > 2 && p[2] == '=')
        return nullptr;
    return p + 2;
}

/// Behind the tokens at `p` that can't matter where no name is bound. The name of which a part is
/// quiet only is not passed over.
inline const char* SkipQuietTokens(const char* p, const char* end)
{
    const char* behind = SkipQuietText(p, end);
    while (behind != end && behind != p && IsNameCharacter(behind[-1]))
        --behind;
    return behind;
}

/// Where the first token of `s` begins that has to be looked at, or the end of `s`. What lies
/// before it are whole tokens, comments and white space.
///
/// @param anyName    Whether any name can matter at all.
/// @param mayMatter  Asked for each name, which it gets as a SubString; false to pass over it.
template <class MayMatter>
const char* SkipPlainStretch(SubString s, bool anyName, const MayMatter& mayMatter)
{
    const char* p = s.begin();
    const char* const end = s.end();
    while (p < end)
    {
        if (!anyName && (p = SkipQuietTokens(p, end)) == end)
            break;
        const char* const start = p;
        switch (ClassOf(*p))
        {
        case CHAR_RAW_PREFIX:
            if (end - p > 1 && (p[1] == '"' || p[1] == '\''))
                return start;
            [[fallthrough]];
        case CHAR_NAME:
            p = SkipNameCharacters(p + 1, end);
            if (mayMatter(SubString(start, p)))
                return start;
            break;
        case CHAR_DIGIT:
            p = SkipPlainNumber(p, end);
            break;
        case CHAR_SINGLE_QUOTE:
        case CHAR_DOUBLE_QUOTE:
            p = SkipPlainString(p, end);
            break;
        case CHAR_SLASH:
            p = SkipPlainSlash(p, end);
            break;
        case CHAR_DOUBLING:
            p = *p == '+' ? SkipPlainPlus(p, end) : p + 1;
            break;
        case CHAR_BLANK:
        case CHAR_MINUS:
        case CHAR_OPERATOR:
            ++p;
            break;
        case CHAR_AT:
        case CHAR_BAD:
            return start;
        }
        if (p == nullptr)
            return start;
    }
    return end;
}

} // namespace telv
