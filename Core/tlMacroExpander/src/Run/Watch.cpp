// SPDX-License-Identifier: MIT
// The way to a warning is read off the levels of expansion: nothing is noted before there is one.
#include "tlMacroExpander/src/Run/Watch.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/LostText.h"
#include <algorithm>
#include <map>
#include <vector>

namespace telv
{

namespace
{

/// The word at `pos` in the text of a level, behind an `@` that stands there; empty for none.
SubString WordAt(SubString text, const char* pos, bool& isDirective)
{
    isDirective = false;
    if (pos < text.begin() || pos >= text.end())
        return SubString();
    isDirective = *pos == '@';
    const char* const begin = SkipBlanks(isDirective ? pos + 1 : pos, text.end());
    return SubString(begin, SkipNameCharacters(begin, text.end()));
}

/// Adds what the level was expanding when the one inside it began.
void AddPlace(const ExpansionLevel& level, const RunState& state, ExpansionWarning& warning)
{
    bool isDirective = false;
    const char* const pos = level.Position();
    const SubString word = WordAt(level.Text(), pos, isDirective);
    const char* const place = state.ResolvePosition(pos);
    if (isDirective && word == "import")
        warning.m_importPlaces.push_back(place);
    const bool isLoop = isDirective && level.Round() > 0;
    if (word.empty() || (isDirective && !isLoop))
        return;
    if (static_cast<ssize_t>(warning.m_callPlaces.size()) == ExpansionRun::s_mostCallPlaces)
        ++warning.m_moreCallPlaces;
    else if (isLoop)
        warning.m_callPlaces.push_back({CallPlace::CALL_LOOP, xstring(), place, level.Round()});
    else
        warning.m_callPlaces.push_back({CallPlace::CALL_MACRO, xstring(word), place, 0});
}

/// Names that stand in a text, but for comments and strings, and where.
class Occurrences
{
public:
    explicit Occurrences(const std::vector<const Watch::Definition*>& wanted)
    {
        for (const Watch::Definition* definition : wanted)
            m_places[definition->m_name];
    }

    void Read(SubString text)
    {
        while (text)
            ReadToken(text);
    }

    /// Whether a name stands anywhere but where something of that name is defined, or in the
    /// definition itself, or where it has been met.
    bool HasOther(const Watch::Definition& definition, const Watch& watch) const
    {
        return std::ranges::any_of(m_places.at(definition.m_name),
                                   [&](const char* place)
                                   {
                                       return !watch.Definitions().contains(place) &&
                                              !watch.IsMet(place) &&
                                              !IsWithin(SubString(place, place), definition.m_body);
                                   });
    }

private:
    void ReadToken(SubString& text)
    {
        const char* const begin = SkipBlanks(text.begin(), text.end());
        text.m_p1 = begin;
        try
        {
            const LSToken token = LsScanToken(text, /*returnComments=*/true);
            if (token.m_type != TOKEN_IDENTIFIER)
                return;
            const auto found = m_places.find(token.m_str);
            if (found != m_places.end())
                found->second.push_back(token.m_str.begin());
        }
        catch (const LexScannerException&)
        {
            text.m_p1 = begin == text.end() ? begin : begin + 1; // a part that was never expanded
        }
    }

    struct IsLess
    {
        bool operator()(SubString a, SubString b) const
        {
            return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end());
        }
    };

    std::map<SubString, std::vector<const char*>, IsLess> m_places;
};

} // namespace

Watch& Watch::Current()
{
    RunState& state = *RunState::Current();
    if (state.m_watch == nullptr)
        state.m_watch = std::make_unique<Watch>();
    return *state.m_watch;
}

void Warn(EWarning kind, const char* pos, std::initializer_list<SubString> text)
{
    const ExpansionRun& run = *RunState::CurrentRun();
    RunState& state = RunState::Of(run);
    if (run.m_warningSink == nullptr || SwallowedErrors::AreExpected())
        return;
    ExpansionWarning warning;
    warning.m_kind = kind;
    warning.m_pos = state.ResolvePosition(pos);
    for (const SubString& part : text)
        warning.m_text += part;
    if (!Watch::Current().IsFirst(kind, warning.m_pos, warning.m_text, warning.m_pos != pos))
        return;
    if (state.m_level != nullptr)
        for (const ExpansionLevel* level = state.m_level->Outer(); level != nullptr;
             level = level->Outer())
            AddPlace(*level, state, warning);
    run.m_warningSink(warning);
}

void NoteLostText(const char* lost, const char* close)
{
    if (RunState* const state = RunState::Current())
        state->m_lostText.insert(lost);
    if (Warns(WARN_DROPPED_TEXT))
        Warn(WARN_DROPPED_TEXT, lost,
             {"this character is lost: the '", SubString(close, close + 1),
              "' that ends a block of lines must stand on a line of its own"});
}

namespace
{

/// The definitions in `text` that nothing uses; `count` receives how many there are in all.
std::vector<const Watch::Definition*>
FindUnusedIn(const Watch& watch, SubString text, const std::vector<SubString>& texts, size_t& count)
{
    count = 0;
    std::vector<const Watch::Definition*> unused;
    for (const auto& [pos, definition] : watch.Definitions())
    {
        if (!IsWithin(definition.m_name, text))
            continue;
        ++count;
        if (!watch.IsUsed(definition.m_name))
            unused.push_back(&definition);
    }
    if (unused.empty())
        return unused;
    Occurrences occurrences(unused);
    for (const SubString& read : texts)
        occurrences.Read(read);
    std::erase_if(unused, [&](const Watch::Definition* definition)
                  { return occurrences.HasOther(*definition, watch); });
    return unused;
}

} // namespace

std::vector<ExpansionWarning> ExpansionRun::FindUnused(SubString text,
                                                       const std::vector<SubString>& texts) const
{
    std::vector<ExpansionWarning> warnings;
    if (m_state->m_watch == nullptr)
        return warnings;
    size_t count = 0;
    for (const Watch::Definition* definition : FindUnusedIn(*m_state->m_watch, text, texts, count))
    {
        ExpansionWarning& warning = warnings.emplace_back();
        warning.m_kind = WARN_UNUSED;
        warning.m_pos = definition->m_name.begin();
        warning.m_text = definition->m_isMacro ? "the macro '" : "the variable '";
        warning.m_text += definition->m_name;
        warning.m_text += "' is not used";
    }
    return warnings;
}

bool ExpansionRun::DefinesInVain(const std::vector<SubString>& defining,
                                 const std::vector<SubString>& texts) const
{
    if (m_state->m_watch == nullptr)
        return false;
    size_t count = 0;
    for (const SubString& text : defining)
    {
        size_t countHere = 0;
        if (FindUnusedIn(*m_state->m_watch, text, texts, countHere).size() < countHere)
            return false;
        count += countHere;
    }
    return count > 0;
}

} // namespace telv
