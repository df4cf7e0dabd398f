// SPDX-License-Identifier: MIT
// Names that name nothing, and texts that are meant as strings: what stands in the source is
// compared with what it was expanded to.
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/Expressions/BuiltIns.h"
#include "tlMacroExpander/src/Hints/HintSupport.h"
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/Hints/NearName.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include <algorithm>
#include <vector>

namespace telv
{

namespace
{

/// The words of a text that are no strings, comments or numbers.
std::vector<SubString> WordsOf(SubString text)
{
    std::vector<SubString> words;
    for (const LSToken& token : TokensOf(text))
        if (token.m_type == TOKEN_IDENTIFIER)
            words.push_back(token.m_str);
    return words;
}

bool HasWord(const std::vector<SubString>& words, SubString word)
{
    return std::ranges::find(words, word) != words.end();
}

/// The token that the error stands at; empty when it stands inside one, which can't be read, or
/// elsewhere.
LSToken TokenAt(SubString expanded, const LexScannerException& error)
{
    const char* const pos = error.m_pos;
    if (pos < expanded.begin() || pos >= expanded.end())
        return LSToken();
    try
    {
        LSToken token;
        do
            token = LsScanToken(expanded, /*returnComments=*/false);
        while (token && token.m_str.begin() < pos);
        return token.m_str.begin() == pos ? token : LSToken();
    }
    catch (const LexScannerException&)
    {
        return LSToken();
    }
}

/// The visible or built-in name that the word is probably meant to be; empty for none.
SubString NearestTo(VarFrame& frame, SubString word)
{
    NearName near(word);
    near.OfferVisible(frame);
    ForEachBuiltIn([&](SubString name) { near.Offer(name); });
    return near.Best();
}

/// The text that a name without arguments stands for; empty for any other.
SubString PlainTextOf(const LSVariable& var)
{
    if (var.GetType() == LSV_STRING)
        return static_cast<const LSValueVariable&>(var).m_value;
    if (var.GetType() != LSV_MACRO)
        return SubString();
    const auto& macro = static_cast<const LSMacroVariable&>(var);
    return macro.m_isPython || macro.GetNumArgs() > 0 ? SubString() : macro.GetSubstitutionString();
}

bool IsString(VarFrame& frame, const LSToken& token)
{
    if (token.m_type == TOKEN_SINGLE_QUOTED_STRING || token.m_type == TOKEN_DOUBLE_QUOTED_STRING)
        return true;
    const LSVariable* const var =
        token.m_type == TOKEN_IDENTIFIER ? FindVisible(frame, token.m_str) : nullptr;
    return var != nullptr && var->GetType() == LSV_STRING;
}

bool ComparesOrAppends(const LSToken& token)
{
    switch (token.m_type)
    {
    case TOKEN_PLUS:
    case TOKEN_DBL_EQUAL:
    case TOKEN_EXCLAM_EQUAL:
    case TOKEN_LESS:
    case TOKEN_GREATER:
    case TOKEN_LESS_EQUAL:
    case TOKEN_GREATER_EQUAL:
        return true;
    default:
        return false;
    }
}

/// Whether the name at `i` is compared with a string, or joined to one.
bool IsBesideString(VarFrame& frame, const std::vector<LSToken>& source, size_t i)
{
    return (i + 2 < source.size() && ComparesOrAppends(source[i + 1]) &&
            IsString(frame, source[i + 2])) ||
           (i >= 2 && ComparesOrAppends(source[i - 1]) && IsString(frame, source[i - 2]));
}

/// Whether the text of a name is meant as text and not as a part of the expression.
bool IsMeantAsText(VarFrame& frame, const LSVariable& var, const std::vector<LSToken>& source,
                   size_t i)
{
    const bool isBesideString = IsBesideString(frame, source, i);
    const bool isAlone = source.size() == 1;
    if (var.GetType() == LSV_STRING)
        return isBesideString || isAlone;
    const std::vector<LSToken> text = TokensOf(PlainTextOf(var));
    const bool isWords = std::ranges::all_of(text, [](const LSToken& token)
                                             { return token.m_type == TOKEN_IDENTIFIER; });
    return isWords && (isBesideString || (isAlone && text.size() > 1));
}

/// A name in the source whose text brought the word into the expression: a string that is not
/// written as one. What is near a known name is rather that name, written wrong.
void HintAtText(VarFrame& frame, const std::vector<LSToken>& source, SubString word)
{
    for (size_t i = 0; i < source.size(); ++i)
    {
        const SubString name = source[i].m_str;
        const LSVariable* const var =
            source[i].m_type == TOKEN_IDENTIFIER ? FindVisible(frame, name) : nullptr;
        if (var == nullptr || !HasWord(WordsOf(PlainTextOf(*var)), word))
            continue;
        if (NearestTo(frame, word).empty() && IsMeantAsText(frame, *var, source, i))
            NoteHint({"'", name, "' is replaced by its text before the expression is read; @str(",
                      name, ") is its text as a string"});
        return;
    }
}

/// The text without the blanks around it when it can stand between quotes as it is: words on one
/// line, none of which is replaced.
SubString QuotableWords(VarFrame& frame, SubString source)
{
    source = WithoutBlanks(source);
    const bool isWords = std::ranges::all_of(source.begin(), source.end(),
                                             [](char c) { return c == ' ' || IsNameCharacter(c); });
    const std::vector<SubString> words = isWords ? WordsOf(source) : std::vector<SubString>();
    const bool isPlain = std::ranges::none_of(words, [&](SubString word)
                                              { return FindVisible(frame, word) != nullptr; });
    return isWords && isPlain ? source : SubString();
}

void HintAt(VarFrame& frame, SubString source, SubString expanded, const LexScannerException& error,
            bool wantsString)
{
    if (!IsHintWanted())
        return;
    const LSToken token = TokenAt(expanded, error);
    const SubString word = token.m_type == TOKEN_IDENTIFIER ? token.m_str : SubString();
    if (word.empty())
        return;
    if (!HasWord(WordsOf(source), word))
        return HintAtText(frame, TokensOf(source), word);
    if (IsBuiltIn(word) || FindVisible(frame, word) != nullptr)
        return;
    const SubString quotable = wantsString ? QuotableWords(frame, source) : SubString();
    const SubString nearest = NearestTo(frame, word);
    if (!nearest.empty() && (quotable.empty() || quotable == word))
        NoteHint({"'", word, "' names nothing here; did you mean '", nearest, "'?"});
    else if (!quotable.empty())
        NoteHint({"a string is written in quotes: \"", quotable, "\""});
    else
        NoteHint({"'", word, "' names nothing here"});
}

} // namespace

void HintAtExpression(VarFrame& frame, SubString source, SubString expanded,
                      const LexScannerException& error)
{
    HintAt(frame, source, expanded, error, /*wantsString=*/false);
}

void HintAtString(VarFrame& frame, SubString source, SubString expanded,
                  const LexScannerException& error)
{
    HintAt(frame, source, expanded, error, /*wantsString=*/true);
}

void HintAtName(VarFrame& frame, SubString name, SubString rest)
{
    if (!IsHintWanted())
        return;
    const char* const next = SkipBlanks(rest.begin(), rest.end());
    if (next != rest.end() && ClassOf(*next) <= CHAR_RAW_PREFIX)
        return NoteHint({"'", name, "' is no type: bool, int, double, char and string are"});
    NearName near(name);
    near.OfferVisible(frame);
    if (!near.Best().empty())
        NoteHint({"did you mean '", near.Best(), "'?"});
    else
        NoteHint({"a new variable has a type: @let int ", name, " = {...}"});
}

void HintAtList(VarFrame& frame, SubString source, SubString word)
{
    if (!IsHintWanted() || FindVisible(frame, word) != nullptr)
        return;
    const char* const begin = SkipBlanks(source.begin(), source.end());
    if (SubString(begin, SkipNameCharacters(begin, source.end())) != word)
        return; // what the name of the list stands for
    NearName near(word);
    near.OfferVisible(frame);
    if (!near.Best().empty())
        NoteHint({"'", word, "' names nothing here; did you mean '", near.Best(), "'?"});
}

} // namespace telv
