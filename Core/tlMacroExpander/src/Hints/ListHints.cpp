// SPDX-License-Identifier: MIT
// Lists that have another number of parts than wanted: arguments of a call, values of an element.
#include "tlMacroExpander/src/Hints/HintSupport.h"
#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/Hints/NearName.h"
#include "tlMacroExpander/src/Hints/StringHints.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/BracketCache.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/ScanSection.h"
#include <algorithm>

namespace telv
{

namespace
{

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

/// Whether only single words stand between the commas: rather several arguments than a sentence.
bool IsListOfWords(SubString list)
{
    bool isBehindWord = false;
    for (const LSToken& token : TokensOf(list))
    {
        const bool isComma = token.m_type == TOKEN_COMMA;
        if (!isComma && (isBehindWord || token.m_type != TOKEN_IDENTIFIER))
            return false;
        isBehindWord = !isComma;
    }
    return true;
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

/// The text of the list that `source` begins with, or that it names; empty when that takes more
/// than a look.
SubString GivenList(VarFrame& frame, SubString source)
{
    SubString rest = source;
    const LSToken first = LsScanToken(rest, /*returnComments=*/false);
    if (first.m_type != TOKEN_IDENTIFIER)
        return source;
    const LSVariable* const var = FindVisible(frame, first.m_str);
    if (var == nullptr || var->GetType() != LSV_MACRO ||
        LsScanToken(rest, /*returnComments=*/false).m_type != TOKEN_RIGHT_PAREN)
        return SubString();
    const auto& macro = static_cast<const LSMacroVariable&>(*var);
    return macro.m_isPython || macro.GetNumArgs() > 0 ? SubString() : macro.GetSubstitutionString();
}

/// Where the element with this index begins in a list, behind its bracket if it has one: rows of
/// data have none in their file. Null when not all before it are `(a, b)`,
/// which stay one element whatever their values come to.
const char* FindElement(SubString list, ssize_t index)
{
    if (LsScanToken(list, /*returnComments=*/false).m_type != TOKEN_LEFT_SQUARE)
        return nullptr;
    for (; index > 0; --index)
    {
        SubString element;
        if (ScanArgument(list, element, TOKEN_RIGHT_SQUARE).m_type != TOKEN_COMMA ||
            element.empty() || *element != '(')
            return nullptr;
    }
    const char* const begin = SkipBlanks(list.begin(), list.end());
    return begin != list.end() && *begin == '(' ? SkipBlanks(begin + 1, list.end()) : begin;
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

void HintAtArguments(VarFrame& frame, const LSMacroVariable& macro, const char* list,
                     SubString rest)
{
    constexpr ssize_t longest = 4096; // of what is looked at
    if (!IsHintWanted())
        return;
    SubString text(list, rest.begin() + std::min(rest.size(), longest));
    const SubString whole(text);
    try
    {
        MatchingBracket found;
        if (!SkipToMatchingBracket(text, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN, found, nullptr))
            return;
        const SubString arguments(whole.begin(), found.m_close);
        SubString sentence;
        if (HasCommaInAngles(arguments))
            NoteHint({"an argument that holds a comma stands between back quotes: `...`"});
        else if (macro.GetNumArgs() == 1 && macro.m_argNames[0].m_type == LSV_STRING &&
                 !IsListOfWords(arguments) && GetQuotable(frame, arguments, sentence))
            NoteHint({"a string is written in quotes: \"", sentence, "\""});
    }
    catch (const LexScannerException&)
    {
        return; // the list is not whole
    }
}

void NoteElement(VarFrame& frame, SubString source, SubString list, ssize_t index)
{
    RunState* const state = RunState::Current();
    if (state == nullptr || state->m_errorsAreSwallowed || state->m_elementAt != nullptr)
        return;
    const SwallowedErrors nobodyIsTold;
    try
    {
        const SubString given = GivenList(frame, source);
        if (given.empty() || state->FindLiveText(given.begin()) != nullptr ||
            FindElement(list, index) == nullptr)
            return;
        state->m_elementAt = FindElement(given, index);
    }
    catch (const LexScannerException&)
    {
        return; // the list can't be read so far
    }
}

void HintAtElement(SubString element, ssize_t names)
{
    if (!IsHintWanted())
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

} // namespace telv
