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

/// Whether the scanner, given the text and what follows it in a list, stops where the text ends.
/// What it says to the text goes into `reason`.
template <class Scan>
bool Survives(const std::string& text, const char* behind, std::string& reason, Scan scan)
{
    const std::string all = text + behind;
    SubString rest = ViewOf(all);
    try
    {
        return scan(rest) && rest.empty();
    }
    catch (const LexScannerException& e)
    {
        reason = ToStdString(e.m_description);
        return false;
    }
}

/// Whether it consists of tokens.
bool IsText(const std::string& value, std::string& reason)
{
    const auto scan = [](SubString& rest)
    {
        while (LsScanToken(rest, /*returnComments=*/true).m_type != TOKEN_END)
        {
        }
        return true;
    };
    return Survives(value, "", reason, scan);
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
               argument.begin() == begin && ToStdString(argument) == value;
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
            return true;
        };
        return Survives(text, bracket, ignored, scan);
    };
    return (!place.m_isInParentheses || closes(TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN, ")")) &&
           (!place.m_isInSquares || closes(TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE, "]"));
}

} // namespace

bool AppendValue(std::string& text, SubString value, ValuePlace place, std::string& reason)
{
    reason.clear();
    if (IsPlain(value))
    {
        text.append(value.begin(), value.end());
        return true;
    }
    const std::string plain = ToStdString(value);
    if (!IsText(plain, reason))
        return false;
    if (IsGivenBack(plain, place) && LeavesOuterElements(plain, place))
    {
        text += plain;
        return true;
    }
    if (plain.find('`') != std::string::npos)
        return false;
    // A comment up to the end of the line, "//" in an address, ends before the next value.
    for (const char* const behind : {"`", "`\n"})
    {
        const std::string quoted = '`' + plain + behind;
        if (!LeavesOuterElements(quoted, place))
            continue;
        text += quoted;
        return true;
    }
    return false;
}

} // namespace telv::tool
