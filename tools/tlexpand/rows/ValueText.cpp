// SPDX-License-Identifier: MIT
// Most values are words and numbers, of which a look at the characters is enough; the scanner tells
// by exceptions what it does not like, which is dear.
#include "rows/ValueText.h"
#include "Files.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/ScanSection.h"
#include <cstring>

namespace telv::tool
{

namespace
{

bool IsDigit(char c)
{
    return '0' <= c && c <= '9';
}

/// Characters that are a token each, whatever stands beside them, and no bracket.
bool IsHarmlessBetweenWords(char c)
{
    return c == ' ' || c == '-' || c == ':' || c == ';' || c == '#' || c == '=';
}

/// Takes a word or a whole number; false when neither begins `s`, or what may not be one.
bool TakeWord(SubString& s)
{
    const bool isNumber = IsDigit(*s);
    const bool isWord = !isNumber && IsNameCharacter(*s);
    while (s && (isWord ? IsNameCharacter(*s) : IsDigit(*s)))
        ++s;
    return isWord || (isNumber && (!s || IsHarmlessBetweenWords(*s)));
}

/// Whether the value is surely given back as it is.
bool IsPlain(SubString value)
{
    if (value && (*value == ' ' || value.end()[-1] == ' '))
        return false;
    while (value)
    {
        if (IsHarmlessBetweenWords(*value))
            ++value;
        else if (!TakeWord(value))
            return false;
    }
    return true;
}

/// What `scan` says of the text and what follows it in a list; false when the scanner refuses it.
/// Then what it says goes into `reason`.
template <class Scan>
bool Survives(const std::string& text, const char* behind, std::string& reason, Scan scan)
{
    const std::string all = text + behind;
    SubString rest = ViewOf(all);
    try
    {
        return scan(rest);
    }
    catch (const LexScannerException& e)
    {
        reason = ToStdString(e.m_description);
        return false;
    }
}

/// Whether the token is a comment that takes all up to the end of its line out of the text.
bool IsRestOfLine(const LSToken& token)
{
    return token.m_type == TOKEN_PREPROC_COMMENT && token.m_str.begin()[2] == '/';
}

/// Whether it consists of tokens. `openComment` becomes the offset behind the first sign of a
/// comment that is text only for want of an end.
bool IsText(const std::string& value, std::string& reason, std::optional<size_t>& openComment)
{
    const auto scan = [&](SubString& rest)
    {
        const char* const begin = rest.begin();
        for (;;)
        {
            const LSToken token = LsScanToken(rest, /*returnComments=*/true);
            if (token.m_type == TOKEN_END)
                return true;
            if (IsRestOfLine(token) && rest.empty())
            {
                reason = "the comment that @// begins would go on behind it";
                return false;
            }
            const char* const sign = token.m_str.begin();
            const bool opens = token.m_type == TOKEN_UNDEF && *sign == '/' && rest && *rest == '*';
            if (opens && !openComment)
                openComment = static_cast<size_t>(sign - begin) + 2;
        }
    };
    return Survives(value, "", reason, scan);
}

/// Whether the last token of `text` ends where it does, whatever quotes stand in the next values.
bool IsApartFromNext(const std::string& text)
{
    if (text.find_first_of("'\"/") == std::string::npos)
        return true;
    std::string ignored;
    const auto isApart = [&](const char* next)
    {
        const auto scan = [&](SubString& rest)
        {
            const char* const end = rest.begin() + text.size();
            LSToken token;
            while (rest.begin() < end)
                token = LsScanToken(rest, /*returnComments=*/true);
            // Behind blanks at the end, the last token is the next comma.
            return rest.begin() == end || token.m_str.begin() == end;
        };
        return Survives(text, next, ignored, scan);
    };
    return isApart(",'") && isApart(",\"");
}

/// Whether cutting the list or tuple that it stands in gives the value back.
bool IsGivenBack(const std::string& value, ValuePlace place)
{
    const auto scan = [&](SubString& rest)
    {
        SubString argument;
        const EToken close = place.m_isInTuple ? TOKEN_RIGHT_PAREN : TOKEN_RIGHT_SQUARE;
        const char* const begin = rest.begin();
        return ScanArgument(rest, argument, close).m_type == TOKEN_COMMA &&
               argument.begin() == begin && ToStdString(argument) == value && rest.empty();
    };
    std::string ignored;
    return Survives(value, ",", ignored, scan);
}

/// Whether the elements around it are found to end where they do.
bool LeavesOuterElements(const std::string& text, ValuePlace place)
{
    std::string ignored;
    const auto closes = [&](EToken open, EToken close, const char* bracket)
    {
        const auto scan = [&](SubString& rest)
        {
            ScanBrackettedSection(rest, /*readOpen=*/false, open, close);
            return rest.empty();
        };
        return Survives(text, bracket, ignored, scan);
    };
    return (!place.m_isInParentheses || closes(TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN, ")")) &&
           (!place.m_isInSquares || closes(TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE, "]"));
}

/// Appends the value in back quotes, if it can stand there. A comment up to the end of the line,
/// "//" in an address, and a quote that is not closed on its line end before the next value.
void AppendQuoted(std::string& text, const std::string& value, ValuePlace place)
{
    for (const char* const behind : {"`", "`\n"})
    {
        const std::string quoted = '`' + value + behind;
        if (!LeavesOuterElements(quoted, place) || !IsApartFromNext(quoted))
            continue;
        text += quoted;
        return;
    }
}

} // namespace

ValueResult AppendValue(std::string& text, SubString value, ValuePlace place)
{
    ValueResult result;
    const size_t begin = text.size();
    if (IsPlain(value))
    {
        text.append(value.begin(), value.end());
        result.m_isWritten = true;
        return result;
    }
    const std::string plain = ToStdString(value);
    if (!IsText(plain, result.m_reason, result.m_openComment))
        return result;
    if (IsGivenBack(plain, place) && LeavesOuterElements(plain, place) && IsApartFromNext(plain))
        text += plain;
    else if (plain.find('`') == std::string::npos)
        AppendQuoted(text, plain, place);
    result.m_isWritten = text.size() > begin;
    if (result.m_openComment)
        *result.m_openComment += begin + (text[begin] == '`' && plain[0] != '`' ? 1 : 0);
    return result;
}

} // namespace telv::tool
