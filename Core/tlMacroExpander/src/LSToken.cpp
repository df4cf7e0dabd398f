// SPDX-License-Identifier: MIT
// The token scanner. Every byte of every text passes through here.
//
// The first character decides by its class (CharClass.h) which construct is read. That has the
// effect of trying number, quoted strings, identifier, comment, preprocessor comment and operators
// in this order: their first characters differ, but for `r` before a quote, `/` and `@`, where one
// or two more characters decide. Operators take the longest form that their row of kinds knows.
// What fails is composed apart, in cold functions, so that the loops stay small.
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Run/RunState.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/FastPaths.h"
#include "tlMacroExpander/src/Scan/PlainStretch.h"
#include "tlMacroExpander/src/Scan/TokenScan.h"

namespace telv
{

namespace
{

/// The kinds of token that an operator character c begins; TOKEN_UNDEF where there is none.
struct OperatorKinds
{
    EToken m_single = TOKEN_UNDEF;       ///< c
    EToken m_withEqual = TOKEN_UNDEF;    ///< c=
    EToken m_doubled = TOKEN_UNDEF;      ///< cc
    EToken m_doubledEqual = TOKEN_UNDEF; ///< cc=
};

struct OperatorTable
{
    OperatorKinds m_kinds[128];

    // clang-format off
    constexpr OperatorTable() : m_kinds()
    {
        Set('<', TOKEN_LESS,      TOKEN_LESS_EQUAL,      TOKEN_DBL_LESS,      TOKEN_DBL_LESS_EQUAL);
        Set('>', TOKEN_GREATER,   TOKEN_GREATER_EQUAL,   TOKEN_DBL_GREATER,   TOKEN_DBL_GREATER_EQUAL);
        Set('&', TOKEN_AMPERSAND, TOKEN_AMPERSAND_EQUAL, TOKEN_DBL_AMPERSAND, TOKEN_DBL_AMPERSAND_EQUAL);
        Set('|', TOKEN_VLINE,     TOKEN_VLINE_EQUAL,     TOKEN_DBL_VLINE,     TOKEN_DBL_VLINE_EQUAL);
        Set('^', TOKEN_CARET,     TOKEN_CARET_EQUAL,     TOKEN_DBL_CARET,     TOKEN_DBL_CARET_EQUAL);
        Set('+', TOKEN_PLUS,      TOKEN_PLUS_EQUAL,      TOKEN_DBL_PLUS);
        Set('*', TOKEN_ASTERISK,      TOKEN_ASTERISK_EQUAL);
        Set('/', TOKEN_FORWARD_SLASH, TOKEN_SLASH_EQUAL);
        Set('%', TOKEN_PERCENT,       TOKEN_PERCENT_EQUAL);
        Set('!', TOKEN_EXCLAM,        TOKEN_EXCLAM_EQUAL);
        Set('=', TOKEN_EQUAL,         TOKEN_DBL_EQUAL);
        Set('?', TOKEN_QUESTION,      TOKEN_QUESTION_EQUAL);
        Set(':', TOKEN_COLON,  TOKEN_UNDEF, TOKEN_COLON_COLON);
        Set('$', TOKEN_DOLLAR, TOKEN_UNDEF, TOKEN_DOLLAR_DOLLAR);
        Set('#', TOKEN_HASH);
        Set('.', TOKEN_DOT);
        Set(',', TOKEN_COMMA);
        Set(';', TOKEN_SEMICOLON);
        Set('(', TOKEN_LEFT_PAREN);
        Set(')', TOKEN_RIGHT_PAREN);
        Set('{', TOKEN_LEFT_CURLY);
        Set('}', TOKEN_RIGHT_CURLY);
        Set('[', TOKEN_LEFT_SQUARE);
        Set(']', TOKEN_RIGHT_SQUARE);
        Set('~', TOKEN_TILDE);
        Set('\\', TOKEN_BACK_SLASH);
        Set('`', TOKEN_BACK_QUOTE);
    }
    // clang-format on

private:
    constexpr void Set(char c, EToken single, EToken withEqual = TOKEN_UNDEF,
                       EToken doubled = TOKEN_UNDEF, EToken doubledEqual = TOKEN_UNDEF)
    {
        m_kinds[static_cast<unsigned char>(c)] = {single, withEqual, doubled, doubledEqual};
    }
};

constexpr OperatorTable s_operators;

/// The kinds that `c`, an ASCII character, begins.
inline const OperatorKinds& KindsOf(char c)
{
    return s_operators.m_kinds[static_cast<unsigned char>(c)];
}

[[noreturn, gnu::noinline, gnu::cold]] void ThrowInvalidToken(SubString token, const char* pos)
{
    xstring message("Invalid token ");
    message += token;
    throw LexScannerException(message, pos);
}

[[noreturn, gnu::noinline, gnu::cold]] void ThrowBadToken(SubString s)
{
    xstring message("Bad token ");
    message += *s;
    throw LexScannerException(message, s);
}

/// The character `offset` places behind the first one, or NUL, which no token continues with.
inline char PeekAt(SubString s, ssize_t offset)
{
    return offset < s.size() ? s.m_p1[offset] : '\0';
}

/// Consumes `length` characters as a token of the given kind.
inline EToken Take(SubString& s, ssize_t length, EToken kind)
{
    s.m_p1 += length;
    return kind;
}

inline EToken ScanName(SubString& s)
{
    s.m_p1 = SkipNameCharacters(s.m_p1 + 1, s.m_p2);
    return TOKEN_IDENTIFIER;
}

EToken ScanSingleQuoted(SubString& s)
{
    LsScanLiteralString(s, '\'', "single quoted string");
    return TOKEN_SINGLE_QUOTED_STRING;
}

EToken ScanDoubleQuoted(SubString& s)
{
    LsScanLiteralString(s, '"', "double quoted string");
    return TOKEN_DOUBLE_QUOTED_STRING;
}

inline EToken ScanRawStringOrName(SubString& s)
{
    const char next = PeekAt(s, 1);
    if (next == '\'')
        return ScanSingleQuoted(s);
    if (next == '"')
        return ScanDoubleQuoted(s);
    return ScanName(s);
}

/// Operators of the forms c, c= and cc.
inline EToken ScanOperator(SubString& s)
{
    const OperatorKinds& kinds = KindsOf(*s.m_p1);
    const char next = PeekAt(s, 1);
    if (next == '=' && kinds.m_withEqual != TOKEN_UNDEF)
        return Take(s, 2, kinds.m_withEqual);
    if (next == *s.m_p1 && kinds.m_doubled != TOKEN_UNDEF)
        return Take(s, 2, kinds.m_doubled);
    return Take(s, 1, kinds.m_single);
}

/// Operators of the forms c, c=, cc and cc=; `++=` is the one that does not exist.
EToken ScanDoublingOperator(SubString& s)
{
    const OperatorKinds& kinds = KindsOf(*s.m_p1);
    if (PeekAt(s, 1) != *s.m_p1 || PeekAt(s, 2) != '=')
        return ScanOperator(s);
    const char* const start = s.m_p1;
    s.m_p1 += 3;
    if (kinds.m_doubledEqual == TOKEN_UNDEF)
        ThrowInvalidToken(SubString(start, s.m_p1), s.m_p1);
    return kinds.m_doubledEqual;
}

EToken ScanMinus(SubString& s)
{
    switch (PeekAt(s, 1))
    {
    case '-':
        return Take(s, 2, TOKEN_DBL_LESS); // programs rely on it
    case '=':
        return Take(s, 2, TOKEN_MINUS_EQUAL);
    case '>':
        return Take(s, 2, TOKEN_MINUS_GREATER);
    default:
        return Take(s, 1, TOKEN_MINUS);
    }
}

inline EToken ScanSlash(SubString& s)
{
    return LsScanComment(s) ? TOKEN_COMMENT : ScanOperator(s);
}

EToken ScanAt(SubString& s)
{
    ++s.m_p1;
    return LsScanComment(s) ? TOKEN_PREPROC_COMMENT : TOKEN_AT;
}

/// Reads the token that begins at the first character of `s`, which is not empty.
inline EToken ScanTokenHere(SubString& s)
{
    switch (ClassOf(*s.m_p1))
    {
    case CHAR_NAME:
        return ScanName(s);
    case CHAR_RAW_PREFIX:
        return ScanRawStringOrName(s);
    case CHAR_DIGIT:
        return LsScanNumber(s);
    case CHAR_SINGLE_QUOTE:
        return ScanSingleQuoted(s);
    case CHAR_DOUBLE_QUOTE:
        return ScanDoubleQuoted(s);
    case CHAR_SLASH:
        return ScanSlash(s);
    case CHAR_AT:
        return ScanAt(s);
    case CHAR_MINUS:
        return ScanMinus(s);
    case CHAR_DOUBLING:
        return ScanDoublingOperator(s);
    case CHAR_OPERATOR:
        return ScanOperator(s);
    case CHAR_BLANK:
    case CHAR_BAD:
        break;
    }
    ThrowBadToken(s);
}

/// Reads the next token; `start` is where it begins, also when it is none.
inline LSToken ScanStrictly(SubString& s, bool returnComments, const char*& start)
{
    for (;;)
    {
        start = SkipBlanks(s.m_p1, s.m_p2);
        s.m_p1 = start;
        if (start >= s.m_p2)
            return LSToken(TOKEN_END, SubString(start, start));
        const EToken kind = ScanTokenHere(s);
        if (kind != TOKEN_COMMENT || returnComments)
            return LSToken(kind, SubString(start, s.m_p1));
    }
}

/// LsScanToken, for inlining into the loops of this file. In a lenient run what would be an error
/// begins with a token of no kind, one character long.
inline LSToken ScanToken(SubString& s, bool returnComments)
{
    const char* start = s.begin();
    try
    {
        return ScanStrictly(s, returnComments, start);
    }
    catch (const LexScannerException&)
    {
        if (!RunState::IsLenient())
            throw;
        s.m_p1 = start + 1;
        return LSToken(TOKEN_UNDEF, SubString(start, start + 1));
    }
}

} // namespace

LSToken LsScanToken(SubString& s, bool returnComments)
{
    return ScanToken(s, returnComments);
}

EToken LsScanTokenHelper(SubString& s)
{
    static_cast<void>(*s); // asserts that there is a character
    return ScanTokenHere(s);
}

namespace
{

constexpr bool IsBracket(char c)
{
    return c == '(' || c == ')' || c == '[' || c == ']' || c == '{' || c == '}';
}

constexpr bool IsBracket(EToken kind)
{
    return kind == TOKEN_LEFT_PAREN || kind == TOKEN_RIGHT_PAREN || kind == TOKEN_LEFT_SQUARE ||
           kind == TOKEN_RIGHT_SQUARE || kind == TOKEN_LEFT_CURLY || kind == TOKEN_RIGHT_CURLY;
}

/// Where the first token begins that is a bracket or has to be looked at. `lastEnd` is moved behind
/// the last one before it. Operators are taken character by character: none holds a bracket.
const char* SkipTokensWithoutBrackets(const char* p, const char* end, const char*& lastEnd)
{
    while (p < end)
    {
        const char* const start = p;
        switch (ClassOf(*p))
        {
        case CHAR_RAW_PREFIX:
            if (end - p > 1 && (p[1] == '"' || p[1] == '\''))
                return start;
            [[fallthrough]];
        case CHAR_NAME:
            p = SkipNameCharacters(p + 1, end);
            break;
        case CHAR_DIGIT:
            p = SkipPlainNumber(p, end);
            if (p == nullptr)
                return start;
            break;
        case CHAR_BLANK:
            ++p;
            continue;
        case CHAR_DOUBLING:
            if (*p == '+')
                return start;
            ++p;
            break;
        case CHAR_MINUS:
        case CHAR_OPERATOR:
            if (IsBracket(*p))
                return start;
            ++p;
            break;
        default:
            return start;
        }
        lastEnd = p;
    }
    return end;
}

} // namespace

LSToken ScanToEither(SubString& s, EToken a, EToken b, const char*& lastEnd)
{
    const bool passesOver =
        FastPaths::IsOn(FastPaths::PLAIN_STRETCHES) && IsBracket(a) && IsBracket(b);
    for (;;)
    {
        if (passesOver)
            s.m_p1 = SkipTokensWithoutBrackets(s.begin(), s.end(), lastEnd);
        const LSToken token = ScanToken(s, /*returnComments=*/false);
        if (token.m_type == a || token.m_type == b || token.m_type == TOKEN_END)
            return token;
        lastEnd = token.m_str.end();
    }
}

xostream& operator<<(xostream& os, const LSToken& t)
{
    if (t.m_str.empty())
        return os << "EOS";
    return os << t.m_str;
}

} // namespace telv
