// SPDX-License-Identifier: MIT
// Warnings: what has been seen while expanding, and how one reaches the application.
//
// A kind that is off costs one look at the run where its text is met anyway. Kinds that have to
// look at tokens have no such place: while one of them is on, texts are read token by token
// (ExpansionLevel::AllowsFastPaths).
#pragma once

#include "tlMacroExpander/src/Hints/NearIndex.h"
#include "tlMacroExpander/src/Run/RunState.h"
#include "tlUtils/HeldContainers.h"
#include <initializer_list>
#include <string>
#include <utility>

namespace telv
{

/// Kinds that have to look at each token.
constexpr unsigned s_watchingWarnings =
    WARN_UNKNOWN_NAME | WARN_HIDDEN_NAME | WARN_UNUSED | WARN_TABS;

/// Whether the run of this thread warns of one of `kinds`.
inline bool Warns(unsigned kinds) noexcept
{
    const ExpansionRun* const run = RunState::CurrentRun();
    return run != nullptr && (run->m_warnings & kinds) != 0;
}

/// Warns at `pos`, unless that place has had a warning of this kind, or the text around it is
/// wanted to be wrong.
void Warn(EWarning kind, const char* pos, std::initializer_list<SubString> text);

/// What a run has seen.
class Watch
{
public:
    struct Definition
    {
        SubString m_name;
        SubString m_body; ///< Empty for a variable.
        bool m_isMacro;
    };

    /// Of the current run, which must be there.
    static Watch& Current();

    /// Whether this is the first warning of its kind at this place; in a text that was made, of
    /// its words: what was copied there was seen where it stands.
    bool IsFirst(EWarning kind, const char* pos, const xstring& words, bool isMade)
    {
        const bool isNew = m_words.emplace(kind, std::string(words.begin(), words.end())).second;
        return m_warned.emplace(kind, pos).second && (isNew || !isMade);
    }
    /// A definition whose name stands in the application's text.
    void NoteDefinition(const Definition& definition)
    {
        m_definitions.emplace(definition.m_name.begin(), definition);
    }
    /// The variable that was defined by the name `definition` is used.
    void NoteUse(SubString definition) { m_used.insert(definition.begin()); }
    /// A name was met at `place`, whatever it meant, or is assigned to there: it is no use of what
    /// was not found there.
    void NoteMet(const char* place) { m_met.insert(place); }
    bool IsMet(const char* place) const { return m_met.contains(place); }
    bool IsUsed(SubString definition) const { return m_used.contains(definition.begin()); }
    /// By where their names stand.
    const HeldMap<const char*, Definition>& Definitions() const { return m_definitions; }

    NearIndex& Near() { return m_near; }
    /// A part of a text that is being expanded no line of which begins with tabs.
    SubString& TabFree() { return m_tabFree; }

private:
    HeldSet<std::pair<EWarning, const char*>> m_warned;
    HeldSet<std::pair<EWarning, std::string>> m_words; ///< Of those.
    HeldMap<const char*, Definition> m_definitions;
    HeldSet<const char*> m_used;
    HeldSet<const char*> m_met;
    NearIndex m_near;
    SubString m_tabFree;
};

} // namespace telv
