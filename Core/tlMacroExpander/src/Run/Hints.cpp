// SPDX-License-Identifier: MIT
// Hints err on the side of silence: one that is wrong is worse than none.
#include "tlMacroExpander/src/Run/Hints.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/Expressions/BuiltIns.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/NearName.h"
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

/// The words of a text that are no strings, comments or numbers.
std::vector<SubString> WordsOf(SubString text)
{
    std::vector<SubString> words;
    try
    {
        for (LSToken token = LsScanToken(text, /*returnComments=*/false); token.m_type != TOKEN_END;
             token = LsScanToken(text, /*returnComments=*/false))
            if (token.m_type == TOKEN_IDENTIFIER)
                words.push_back(token.m_str);
    }
    catch (const LexScannerException&)
    {
        return {};
    }
    return words;
}

bool HasWord(const std::vector<SubString>& words, SubString word)
{
    return std::ranges::find(words, word) != words.end();
}

const LSVariable* FindVisible(VarFrame& frame, SubString name)
{
    try
    {
        return frame.Find(name, name.begin());
    }
    catch (const LexScannerException&)
    {
        return nullptr;
    }
}

/// The word that the error stands at; empty when it stands at none, or elsewhere.
SubString WordAt(SubString expanded, const LexScannerException& error)
{
    const char* const pos = error.m_pos;
    if (pos < expanded.begin() || pos >= expanded.end() || ClassOf(*pos) > CHAR_RAW_PREFIX)
        return SubString();
    return SubString(pos, SkipNameCharacters(pos, expanded.end()));
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

/// A name in the source whose text brought the word into the expression: a string that is not
/// written as one.
bool HintAtText(VarFrame& frame, const std::vector<SubString>& source, SubString word)
{
    if (HasWord(source, word))
        return false;
    for (const SubString& name : source)
    {
        const LSVariable* const var = FindVisible(frame, name);
        if (var == nullptr || !HasWord(WordsOf(PlainTextOf(*var)), word))
            continue;
        NoteHint({"'", name, "' is replaced by its text before the expression is read; @str(", name,
                  ") is its text as a string"});
        return true;
    }
    return false;
}

void HintAt(VarFrame& frame, SubString source, SubString expanded, const LexScannerException& error,
            bool wantsString)
{
    const SubString word = WordAt(expanded, error);
    if (HintedState() == nullptr || word.empty())
        return;
    const std::vector<SubString> words = WordsOf(source);
    if (HintAtText(frame, words, word) || !HasWord(words, word) || IsBuiltIn(word) ||
        FindVisible(frame, word) != nullptr)
        return;
    NearName near(word);
    near.OfferVisible(frame);
    ForEachBuiltIn([&](SubString name) { near.Offer(name); });
    if (!near.Best().empty())
        NoteHint({"'", word, "' names nothing here; did you mean '", near.Best(), "'?"});
    else if (wantsString)
        NoteHint({"a string is written in quotes: \"", word, "\""});
    else
        NoteHint({"'", word, "' names nothing here"});
}

/// Whether a list of arguments holds `name<`, a comma and `>` in this order: no comparison is
/// written so.
bool HasCommaInAngles(SubString list)
{
    bool isOpen = false;
    bool hasComma = false;
    char last = ' ';
    for (const char c : list)
    {
        isOpen = isOpen || (c == '<' && ClassOf(last) <= CHAR_RAW_PREFIX);
        hasComma = hasComma || (isOpen && c == ',');
        if (hasComma && c == '>' && ClassOf(last) != CHAR_BLANK)
            return true;
        last = c;
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
    if (HintedState() == nullptr || dynamic_cast<const ExpansionLimitException*>(&error) == nullptr)
        return;
    const SubString body = macro.GetSubstitutionString();
    const std::vector<SubString> words = WordsOf(body);
    const auto isMethod = [&](SubString word)
    {
        const char* p = word.begin();
        while (p != body.begin() && ClassOf(p[-1]) == CHAR_BLANK)
            --p;
        return word == macro.m_name && p != body.begin() && p[-1] == '.';
    };
    if (std::ranges::any_of(words, isMethod))
        NoteHint({"the method's name ", macro.m_name, " calls the macro itself: write @quote(.",
                  macro.m_name, ") or give the macro another name"});
}

/// In a lenient run errors of the scanner are none, so what is noted here may be old: it belongs to
/// the error at `errorPos` alone.
void NoteOpened(const char* opened, const char* errorPos)
{
    RunState* const state = RunState::Current();
    if (state == nullptr || state->m_errorsAreSwallowed || RunState::IsLenient())
        return;
    state->m_openedAt = state->ResolvePosition(opened);
    state->m_neverClosed = state->ResolvePosition(errorPos);
}

} // namespace telv
