// SPDX-License-Identifier: MIT
// Hints err on the side of silence: one that is wrong is worse than none.
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/Expressions/BuiltIns.h"
#include "tlMacroExpander/src/Hints/NearName.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/OpenedAt.h"
#include "tlMacroExpander/src/Scan/ScanSection.h"
#include <algorithm>
#include <string_view>
#include <vector>

namespace telv
{

namespace
{

/// The state of the run when a hint is wanted there, else null.
RunState* HintedState()
{
    RunState* const state = RunState::Current();
    return state == nullptr || state->m_errorsAreSwallowed || !state->m_hint.empty() ? nullptr
                                                                                     : state;
}

/// The tokens of a text; none when it can't be read.
std::vector<LSToken> TokensOf(SubString text)
{
    std::vector<LSToken> tokens;
    try
    {
        for (LSToken token = LsScanToken(text, /*returnComments=*/false); token.m_type != TOKEN_END;
             token = LsScanToken(text, /*returnComments=*/false))
            tokens.push_back(token);
    }
    catch (const LexScannerException&)
    {
        return {};
    }
    return tokens;
}

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

/// The word that the error stands at; empty when it stands at none, or elsewhere.
SubString WordAt(SubString expanded, const LexScannerException& error)
{
    const char* const pos = error.m_pos;
    if (pos < expanded.begin() || pos >= expanded.end() || ClassOf(*pos) > CHAR_RAW_PREFIX)
        return SubString();
    return SubString(pos, SkipNameCharacters(pos, expanded.end()));
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
    const SubString word = WordAt(expanded, error);
    if (HintedState() == nullptr || word.empty())
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

/// Behind the `>` that closes the `<` before `p`, when only what lists of types have stands between
/// them, and a comma; else null.
const char* SkipTypes(const char* p, const char* end)
{
    ssize_t depth = 1;
    bool hasComma = false;
    for (; p != end; ++p)
    {
        const char last = p[-1];
        if (*p == '<' && IsNameCharacter(last))
            ++depth;
        else if (*p == '>' && ClassOf(last) != CHAR_BLANK)
            --depth;
        else if (!IsNameCharacter(*p) && ClassOf(*p) != CHAR_BLANK && *p != ',' && *p != ':' &&
                 *p != '*' && *p != '&')
            return nullptr;
        hasComma = hasComma || *p == ',';
        if (depth == 0)
            return hasComma ? p + 1 : nullptr;
    }
    return nullptr;
}

/// Whether `p` can be behind the closing `>` of a type: right behind that of a comparison stands
/// its operand.
bool IsBehindType(const char* p, const char* end)
{
    const char* const next = SkipBlanks(p, end);
    if (next == end)
        return true;
    if (ClassOf(*next) <= CHAR_RAW_PREFIX)
        return next != p;
    return *next == ',' || *next == ':' || *next == '*' || *next == '&';
}

/// Whether a list of arguments holds, outside comments, strings and back quotes, a type such as
/// `name<a, b>`.
bool HasCommaInAngles(SubString list)
{
    const char* nameEnd = nullptr; // of the identifier that was read last
    while (list)
    {
        const char* const p = SkipBlanks(list.begin(), list.end());
        if (p != list.end() && *p == '`')
            list.m_p1 = std::find(p + 1, list.end(), '`');
        else if (p == nameEnd && p != list.end() && *p == '<')
            if (const char* const behind = SkipTypes(p + 1, list.end());
                behind != nullptr && IsBehindType(behind, list.end()))
                return true;
        const LSToken token = LsScanToken(list, /*returnComments=*/false);
        nameEnd = token.m_type == TOKEN_IDENTIFIER ? token.m_str.end() : nullptr;
    }
    return false;
}

/// The values of the element `(a, b)`; -1 when it can't be read.
ssize_t CountValues(SubString element)
{
    try
    {
        LSToken end = LsScanToken(element, /*returnComments=*/false);
        if (end.m_type != TOKEN_LEFT_PAREN)
            return -1;
        ssize_t count = 0;
        SubString value;
        do
        {
            end = ScanArgument(element, value, TOKEN_RIGHT_PAREN);
            ++count;
        } while (end.m_type == TOKEN_COMMA);
        return end.m_type == TOKEN_RIGHT_PAREN ? count : -1;
    }
    catch (const LexScannerException&)
    {
        return -1;
    }
}

/// Whether `.name` stands in the text outside @quote.
bool HasMethod(SubString text, SubString name)
{
    const std::vector<LSToken> tokens = TokensOf(text);
    ssize_t depth = 0; // of the brackets of @quote
    for (size_t i = 1; i < tokens.size(); ++i)
    {
        const EToken kind = tokens[i].m_type;
        const bool isQuote = i >= 2 && kind == TOKEN_LEFT_PAREN &&
                             tokens[i - 1].m_str == SubString("quote") &&
                             tokens[i - 2].m_type == TOKEN_AT;
        if (isQuote || (depth > 0 && kind == TOKEN_LEFT_PAREN))
            ++depth;
        else if (depth > 0 && kind == TOKEN_RIGHT_PAREN)
            --depth;
        else if (depth == 0 && tokens[i - 1].m_type == TOKEN_DOT && tokens[i].m_str == name)
            return true;
    }
    return false;
}

/// Long texts are named by their first characters.
xstring Shown(SubString text)
{
    constexpr ssize_t longest = 60;
    xstring shown(text.size() > longest ? SubString(text.begin(), text.begin() + longest) : text);
    if (text.size() > longest)
        shown += "...";
    std::ranges::replace(shown.begin(), shown.end(), '\n', ' ');
    return shown;
}

} // namespace

void NoteHint(std::initializer_list<SubString> parts)
{
    RunState* const state = HintedState();
    if (state == nullptr)
        return;
    for (const SubString& part : parts)
        state->m_hint += part;
}

xstring ExpansionRun::Hint(const LexScannerException& error) const
{
    const std::string_view description(error.m_description.begin(),
                                       static_cast<size_t>(error.m_description.size()));
    if (m_state->m_hint.empty() && m_state->m_isTextLost &&
        description.find("Met EOS") != std::string_view::npos)
        return "the bracket that ends a block of lines must stand on a line of its own: the "
               "character before it is lost";
    return m_state->m_hint;
}

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
    if (HintedState() == nullptr)
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

void HintAtArguments(const char* list, SubString rest)
{
    constexpr ssize_t longest = 4096; // of what is looked at
    if (HintedState() == nullptr)
        return;
    SubString text(list, rest.begin() + std::min(rest.size(), longest));
    const SubString whole(text);
    try
    {
        MatchingBracket found;
        if (SkipToMatchingBracket(text, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN, found, nullptr) &&
            HasCommaInAngles(SubString(whole.begin(), found.m_close)))
            NoteHint({"an argument that holds a comma stands between back quotes: `...`"});
    }
    catch (const LexScannerException&)
    {
        return; // the list is not whole
    }
}

void HintAtElement(SubString element, ssize_t names)
{
    if (HintedState() == nullptr)
        return;
    const char* const begin = SkipBlanks(element.begin(), element.end());
    const ssize_t count = CountValues(element);
    if (count >= 0)
        NoteHint({"the element ", Shown(element), " has ", ToString(count),
                  count == 1 ? " value, and " : " values, and ", ToString(names),
                  names == 1 ? " is wanted" : " are wanted"});
    else if (begin != element.end() && *begin != '(')
        NoteHint(
            {"an element with several values is written (a, b), and this one is ", Shown(element)});
}

void HintAtPythonMacro(const LSMacroVariable& macro, const LexScannerException& error)
{
    const RunState* const state = HintedState();
    if (state == nullptr || dynamic_cast<const ExpansionLimitException*>(&error) == nullptr)
        return;
    const auto isOfMacro = [&](const CallPlace& call)
    { return call.m_kind == CallPlace::CALL_MACRO && call.m_name == macro.m_name; };
    if (std::ranges::count_if(state->m_callPlaces, isOfMacro) > 1 &&
        HasMethod(macro.GetSubstitutionString(), macro.m_name))
        NoteHint({"the method's name ", macro.m_name, " calls the macro itself: write @quote(.",
                  macro.m_name, ") or give the macro another name"});
}

/// What is noted here may be old: it belongs to the error at `errorPos` alone.
void NoteOpened(const char* opened, const char* errorPos)
{
    RunState* const state = RunState::Current();
    if (state == nullptr || state->m_errorsAreSwallowed)
        return;
    state->m_openedAt = state->ResolvePosition(opened);
    state->m_neverClosed = state->ResolvePosition(errorPos);
}

/// In a lenient run no error of a token leaves the scanner, and there may be one for each byte.
void NoteOpenedToken(const char* opened, const char* errorPos)
{
    if (!RunState::IsLenient())
        NoteOpened(opened, errorPos);
}

} // namespace telv
