// SPDX-License-Identifier: MIT
// Warnings that need to see tokens. All of them err on the side of silence: a name is only called
// wrong when the right one is there.
#include "tlMacroExpander/src/Directives/Watching.h"
#include "tlMacroExpander/src/Directives/DirectiveTable.h"
#include "tlMacroExpander/src/Expressions/BuiltIns.h"
#include "tlMacroExpander/src/Hints/NearName.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/Watch.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include <algorithm>
#include <cstring>
#include <iterator>
#include <string>

namespace telv
{

namespace
{

/// Words before a parenthesis that nobody means as a macro.
bool IsCommonWord(SubString word)
{
    static const SubString s_words[] = {"if",     "for",    "while", "switch", "catch",
                                        "return", "sizeof", "elif",  "assert", "defined"};
    return std::ranges::find(s_words, word) != std::end(s_words);
}

bool IsIdentifier(SubString text)
{
    return text && IsNameCharacter(*text) && ClassOf(*text) != CHAR_DIGIT &&
           SkipNameCharacters(text.begin(), text.end()) == text.end();
}

/// Whether the digits of two names are the same: `get1` and `get2` are both meant.
bool DifferInLetters(SubString a, SubString b)
{
    const auto digits = [](SubString name)
    {
        std::string found;
        std::copy_if(name.begin(), name.end(), std::back_inserter(found),
                     [](char c) { return ClassOf(c) == CHAR_DIGIT; });
        return found;
    };
    return digits(a) == digits(b);
}

void WatchCall(const MacroExpander& expander, SubString name)
{
    const SubString& rest = expander.m_str;
    const char* const next = SkipBlanks(rest.begin(), rest.end());
    constexpr ssize_t shortest = 3;
    if (next == rest.end() || *next != '(' || name.size() < shortest || IsCommonWord(name) ||
        IsBuiltIn(name))
        return;
    const SubString best = Watch::Current().Near().Find(*expander.m_vf, name);
    if (best.size() < shortest || !DifferInLetters(name, best) || EditDistance(name, best, 1) > 1)
        return;
    const LSVariable* const var = FindVisible(*expander.m_vf, best);
    if (var == nullptr || var->GetType() != LSV_MACRO)
        return;
    Warn(WARN_UNKNOWN_NAME, name.begin(), {"'", name, "' names nothing; '", best, "' is a macro"});
}

void WatchName(const MacroExpander& expander, SubString name)
{
    if (Warns(WARN_UNUSED))
        Watch::Current().NoteMet(name.begin());
    if (const LSVariable* const var = FindVisible(*expander.m_vf, name))
        Watch::Current().NoteUse(var->m_name);
    else if (Warns(WARN_UNKNOWN_NAME))
        WatchCall(expander, name);
}

/// Whether a comment begins behind other text of its line.
bool IsBehindText(SubString whole, SubString comment)
{
    const char* p = comment.begin();
    while (p != whole.begin() && (p[-1] == ' ' || p[-1] == '\t'))
        --p;
    return p != whole.begin() && p[-1] != '\n';
}

/// Whether a name ends at `p` that is no prefix of literals, as in `u'x'`.
bool IsBehindWord(SubString whole, const char* p)
{
    static const SubString s_prefixes[] = {"u", "U", "u8", "L",  "b",  "B",  "br", "bR", "Br", "BR",
                                           "f", "F", "fr", "rb", "rB", "Rb", "RB", "ur", "UR"};
    const char* begin = p;
    while (begin != whole.begin() && IsNameCharacter(begin[-1]))
        --begin;
    return begin != p && std::ranges::find(s_prefixes, SubString(begin, p)) == std::end(s_prefixes);
}

/// Whether two apostrophes are letters of words, as in `it's name that's`, and quote nothing.
bool IsBetweenWords(SubString whole, SubString token)
{
    return IsBehindWord(whole, token.begin()) ||
           (token.end() != whole.end() && IsNameCharacter(*token.end()));
}

/// Looks for visible names inside a token.
void WatchHidden(const MacroExpander& expander, SubString token, const char* where)
{
    for (const char* p = token.begin(); p != token.end();)
    {
        const char* const begin = p;
        if (!IsNameCharacter(*p))
        {
            ++p;
            continue;
        }
        p = SkipNameCharacters(p, token.end());
        const SubString name(begin, p);
        if (IsIdentifier(name) && FindVisible(*expander.m_vf, name) != nullptr)
            return Warn(WARN_HIDDEN_NAME, begin,
                        {"'", name, "' is not replaced: it stands ", where});
    }
}

/// The first tab of the blanks at `p`, or null; `p` moves behind them.
const char* FindTab(const char*& p, const char* end)
{
    const char* tab = nullptr;
    for (; p != end && (*p == ' ' || *p == '\t'); ++p)
        if (tab == nullptr && *p == '\t')
            tab = p;
    return tab;
}

/// The blanks before a text at the start of its first line; empty when they are not known.
SubString BlanksBefore(SubString text)
{
    const RunState::KnownText* const known = RunState::Current()->FindText(text.begin());
    const char* const first = known == nullptr ? text.begin() : known->m_text.begin();
    const char* p = text.begin();
    while (p != first && (p[-1] == ' ' || p[-1] == '\t'))
        --p;
    return p != first && p[-1] == '\n' ? SubString(p, text.begin()) : SubString();
}

/// Whether something stands behind the first line of a text.
bool HasMoreLines(SubString text)
{
    const char* const lineFeed = std::find(text.begin(), text.end(), '\n');
    return SkipBlanks(lineFeed, text.end()) != text.end();
}

/// The first tab that the line begins with on which the level's text is wanted; null for none, and
/// far behind the beginning of the line.
const char* FindTabBefore(const ExpansionLevel& level)
{
    constexpr ssize_t farthest = 4096;
    if (level.Outer() == nullptr)
        return nullptr;
    const char* const pos = level.Outer()->Position();
    const RunState::KnownText* const known = RunState::Current()->FindText(pos);
    const char* const first =
        known == nullptr ? level.Outer()->Text().begin() : known->m_text.begin();
    const char* line = pos;
    while (line != first && line[-1] != '\n' && pos - line < farthest)
        --line;
    return line == first || line[-1] == '\n' ? FindTab(line, pos) : nullptr;
}

/// The words that are not directives, and those that do what is meant.
SubString OtherWord(SubString word)
{
    static const struct
    {
        const char* m_word;
        const char* m_directive;
    } s_words[] = {{"include", "import"}, {"elif", "elseif"},     {"elsif", "elseif"},
                   {"define", "def"},     {"macro", "def"},       {"set", "let"},
                   {"var", "let"},        {"foreach", "for"},     {"echo", "print"},
                   {"error", "fail"},     {"python", "runpython"}};
    for (const auto& row : s_words)
        if (word == row.m_word)
            return row.m_directive;
    return SubString();
}

} // namespace

void WatchToken(const MacroExpander& expander, const LSToken& token)
{
    if (token.m_type == TOKEN_IDENTIFIER)
        WatchName(expander, token.m_str);
    else if (!Warns(WARN_HIDDEN_NAME))
        return;
    else if (token.m_type == TOKEN_SINGLE_QUOTED_STRING &&
             IsBetweenWords(expander.m_origStr, token.m_str))
        WatchHidden(expander, token.m_str, "between apostrophes");
    else if (token.m_type == TOKEN_COMMENT && IsBehindText(expander.m_origStr, token.m_str))
        WatchHidden(expander, token.m_str, "in a comment");
}

IndentationWatch::IndentationWatch(const MacroExpander& expander)
    : m_tabFree(Watch::Current().TabFree()), m_outer(m_tabFree)
{
    if (expander.m_dstIndent == 0 || !Warns(WARN_TABS))
        return;
    if (const char* const tab = expander.m_srcIndent == 0 ? nullptr : FindTabOfBlock(expander))
        Warn(WARN_TABS, tab, {"the tabs that indent this block are written as spaces"});
    else if (const char* const before = HasMoreLines(expander.m_origStr)
                                            ? FindTabBefore(*RunState::Current()->m_level)
                                            : nullptr)
        Warn(WARN_TABS, before,
             {"the tabs before what this line writes are spaces on its further lines"});
}

const char* IndentationWatch::FindTabOfBlock(const MacroExpander& expander)
{
    const char* tab = nullptr;
    if (expander.m_output.m_columnPos < 0)
    {
        const SubString blanks = BlanksBefore(expander.m_origStr);
        const char* p = blanks.begin();
        tab = FindTab(p, blanks.end());
    }
    return tab != nullptr ? tab : FindTabOfLines(expander.m_origStr);
}

/// What a text around this one has been searched for already is passed over.
const char* IndentationWatch::FindTabOfLines(SubString text)
{
    const char* p = text.begin();
    if (p >= m_outer.begin() && p < m_outer.end())
        p = std::min(m_outer.end(), text.end());
    const char* tab = nullptr;
    while (tab == nullptr && p != text.end())
    {
        const auto* const line =
            static_cast<const char*>(std::memchr(p, '\n', static_cast<size_t>(text.end() - p)));
        m_tabFree = SubString(text.begin(), line == nullptr ? text.end() : line);
        if (line == nullptr)
            break;
        p = line + 1;
        const char* const found = FindTab(p, text.end());
        if (p != text.end() && *p != '\n' && *p != '\r')
            tab = found;
    }
    return tab;
}

void WarnOfUnknownDirective(const MacroExpander& expander, SubString word)
{
    NearName near(word);
    ForEachDirectiveWord([&](SubString directive) { near.Offer(directive); });
    near.Offer("elseif");
    SubString best = OtherWord(word);
    if (best.empty())
        best = near.Best();
    const char* const pos = expander.m_startDirectivePos;
    if (word == "elseif")
        Warn(WARN_UNKNOWN_DIRECTIVE, pos, {"@elseif is not part of an @if and stays in the text"});
    else if (!best.empty())
        Warn(WARN_UNKNOWN_DIRECTIVE, pos,
             {"'@", word, "' is no directive and stays in the text; did you mean '@", best, "'?"});
    else if (FindVisible(*expander.m_vf, word) != nullptr)
        Warn(WARN_UNKNOWN_DIRECTIVE, pos,
             {"'@", word, "' is no directive and stays in the text; '", word,
              "' alone is replaced"});
    else
        Warn(WARN_UNKNOWN_DIRECTIVE, pos, {"'@", word, "' is no directive and stays in the text"});
}

void WatchComputedName(const MacroExpander& expander, SubString text)
{
    const SubString name = WithoutBlanks(text);
    if (!IsIdentifier(name) || FindVisible(*expander.m_vf, name) != nullptr)
        return;
    NearName near(name);
    if (NearIndex& index = Watch::Current().Near(); index.MayLook())
        index.CountLooks(near.OfferVisible(*expander.m_vf));
    const SubString best = near.Best();
    const char* const pos = expander.m_startDirectivePos;
    if (best.empty())
        Warn(WARN_UNKNOWN_NAME, pos, {"'", name, "' names nothing"});
    else
        Warn(WARN_UNKNOWN_NAME, pos, {"'", name, "' names nothing; did you mean '", best, "'?"});
}

void WatchDefinition(SubString name, SubString body, bool isMacro)
{
    if (RunState::Current()->FindText(name.begin()) != nullptr)
        Watch::Current().NoteDefinition({name, body, isMacro});
}

} // namespace telv
