// SPDX-License-Identifier: MIT
// The table by which the scanner decides on a token's first character.
//
// White space and identifiers are the ones of ScanWhiteSpace and ScanIdentifier. They stand here a
// second time because the scanner reads every byte of a text and cannot call another library for
// each; a test compares the two byte by byte.
#pragma once

#include "tlUtils/BasicSubString.h"
#include "tlUtils/IntTypes.h"
#if defined(__SSE2__)
#include <bit>
#include <emmintrin.h>
#endif

namespace telv
{

/// What a character can begin. The first three are the characters of identifiers.
enum ECharClass : uint8
{
    CHAR_NAME,       ///< letters, `_` and every byte above 0x7f
    CHAR_RAW_PREFIX, ///< `r` and `R`: a name, or the prefix of a raw string
    CHAR_DIGIT,
    CHAR_BLANK,
    CHAR_SINGLE_QUOTE,
    CHAR_DOUBLE_QUOTE,
    CHAR_SLASH,    ///< a comment or an operator
    CHAR_AT,       ///< a preprocessor comment or a directive
    CHAR_MINUS,    ///< `-`, `-=`, `->` and the odd `--`
    CHAR_DOUBLING, ///< operators c, c=, cc and cc=
    CHAR_OPERATOR, ///< operators c, c= or cc
    CHAR_BAD       ///< begins nothing
};

/// The class of each byte.
struct CharClassTable
{
    ECharClass m_class[256];

    constexpr CharClassTable() : m_class()
    {
        for (int c = 0; c < 256; ++c)
            m_class[c] = c >= 0x80 ? CHAR_NAME : CHAR_BAD;
        for (int c = 'a'; c <= 'z'; ++c)
            m_class[c] = m_class[c - 'a' + 'A'] = CHAR_NAME;
        for (int c = '0'; c <= '9'; ++c)
            m_class[c] = CHAR_DIGIT;
        Set("_", CHAR_NAME);
        Set("rR", CHAR_RAW_PREFIX);
        Set(" \t\n\r\v\f", CHAR_BLANK);
        Set("'", CHAR_SINGLE_QUOTE);
        Set("\"", CHAR_DOUBLE_QUOTE);
        Set("/", CHAR_SLASH);
        Set("@", CHAR_AT);
        Set("-", CHAR_MINUS);
        Set("+<>&|^", CHAR_DOUBLING);
        Set("*%!=?:$#.,;(){}[]~\\`", CHAR_OPERATOR);
    }

private:
    constexpr void Set(const char* characters, ECharClass charClass)
    {
        for (; *characters != 0; ++characters)
            m_class[static_cast<unsigned char>(*characters)] = charClass;
    }
};

inline constexpr CharClassTable s_charClasses;

/// What the character can begin.
inline ECharClass ClassOf(char c)
{
    return s_charClasses.m_class[static_cast<unsigned char>(c)];
}

inline bool IsNameCharacter(char c)
{
    return ClassOf(c) <= CHAR_DIGIT;
}

/// The first character of [p, end) that is no white space, or `end`.
inline const char* SkipBlanks(const char* p, const char* end)
{
    while (p < end && ClassOf(*p) == CHAR_BLANK)
        ++p;
    return p;
}

/// `s` without the white space around it.
inline SubString WithoutBlanks(SubString s)
{
    s.m_p1 = SkipBlanks(s.m_p1, s.m_p2);
    while (s && ClassOf(s.m_p2[-1]) == CHAR_BLANK)
        --s.m_p2;
    return s;
}

#if defined(__SSE2__)

/// A bit for each of the 16 characters at `p` that is one of identifiers.
inline unsigned NameCharactersAt(const char* p)
{
    const __m128i text = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const auto within = [](__m128i c, char first, char last) // for first > 0
    {
        return _mm_and_si128(_mm_cmpgt_epi8(c, _mm_set1_epi8(static_cast<char>(first - 1))),
                             _mm_cmplt_epi8(c, _mm_set1_epi8(static_cast<char>(last + 1))));
    };
    const __m128i lower = _mm_or_si128(text, _mm_set1_epi8(0x20));
    const __m128i isName =
        _mm_or_si128(_mm_or_si128(within(lower, 'a', 'z'), within(text, '0', '9')),
                     _mm_cmpeq_epi8(text, _mm_set1_epi8('_')));
    // The sign bit is set in every byte above 0x7f.
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(isName, text)));
}

#endif

/// The end of the run of identifier characters that begins [p, end).
///
/// Most of a text is names of all lengths: a loop over characters guesses wrong at the end of each.
inline const char* SkipNameCharacters(const char* p, const char* end)
{
#if defined(__SSE2__)
    for (; end - p >= 16; p += 16)
    {
        const unsigned others = ~NameCharactersAt(p) & 0xffff;
        if (others != 0)
            return p + std::countr_zero(others);
    }
#endif
    while (p < end && IsNameCharacter(*p))
        ++p;
    return p;
}

} // namespace telv
