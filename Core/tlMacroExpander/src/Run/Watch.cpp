// SPDX-License-Identifier: MIT
// The way to a warning is read off the levels of expansion: nothing is noted before there is one.
#include "tlMacroExpander/src/Run/Watch.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Scan/CharClass.h"
#include "tlMacroExpander/src/Scan/LostText.h"
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

} // namespace telv
