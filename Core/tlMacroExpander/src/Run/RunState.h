// SPDX-License-Identifier: MIT
// What a run keeps to itself: the expansion in progress, what has been counted, and the texts that
// were made while expanding.
#pragma once

#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Run/TemporaryText.h"
#include <map>
#include <set>
#include <vector>

namespace telv
{

class BracketCache;
class ExpansionLevel;
class ExpansionObserver;
class Watch;

/// The private half of an ExpansionRun.
class RunState
{
public:
    RunState();
    ~RunState();
    RunState(const RunState&) = delete;
    RunState& operator=(const RunState&) = delete;

    static RunState& Of(const ExpansionRun& run) { return *run.m_state; }

    /// The run installed for this thread, or null. Inside the library, where no call is needed.
    static ExpansionRun* CurrentRun() noexcept;
    /// Its state, or null.
    static RunState* Current() noexcept
    {
        const ExpansionRun* const run = CurrentRun();
        return run == nullptr ? nullptr : run->m_state.get();
    }

    /// Whether the run of this thread takes what is no token as text.
    static bool IsLenient() noexcept
    {
        const ExpansionRun* const run = CurrentRun();
        return run != nullptr && run->m_lenient;
    }

    /// Who observes the run of this thread, or null.
    static ExpansionObserver* CurrentObserver() noexcept
    {
        const RunState* const state = Current();
        return state == nullptr ? nullptr : state->m_observer;
    }

    /// The live text that holds `pos`, its end included, or null.
    const TextOrigin* FindLiveText(const char* pos) const;

    /// A text that died while an exception was passing, and the place that replaces it.
    struct DeadText
    {
        const char* m_begin;
        const char* m_end;
        const char* m_origin;
    };

    /// A text that the application made known; what is viewed outlives the run.
    struct KnownText
    {
        SubString m_name;
        SubString m_text;
        const LSSourceFile* m_file = nullptr; ///< Null when it is in none.
    };

    void AddText(const KnownText& text) { m_knownTexts[text.m_text.begin()] = text; }
    /// The known text that holds `pos`, its end included, or null.
    const KnownText* FindText(const char* pos) const;

    /// See ExpansionRun.
    bool FindOrigin(const char* pos, SubString& origin) const;
    const char* ResolvePosition(const char* pos) const;
    /// Where the characters of `text` stand in a text that the application gave: there, or where
    /// they were copied from into a live text; null when that is not known.
    const char* FindGiven(SubString text) const;

    /// Called from destructors: room was made when the text was.
    void NoteDeath(const TextOrigin& text) noexcept;

    /// A scope begins and ends in which the run is that of the thread.
    void Install() noexcept;
    void Uninstall() noexcept;

    /// Counts memory that is not given back before the run has ended.
    void HoldToEnd(ssize_t bytes);

    /// To be called when no error is passing any more.
    void ForgetErrors() noexcept
    {
        m_deadTexts.clear();
        m_markFreeLength = 0;
        m_failurePos = nullptr;
        m_callPlaces.clear();
        m_moreCallPlaces = 0;
        m_importPlaces.clear();
        m_overdraft = 0;
        m_hint.clear();
        m_isTextLost = false;
        m_openedAt = m_neverClosed = m_definedAt = m_elementAt = nullptr;
    }

    /// An error passes the invocation of a macro, or a round of a loop, at `pos`.
    void NoteCall(CallPlace::EKind kind, SubString name, const char* pos, ssize_t round);
    /// An error passes the import at `pos`.
    void NoteImport(const char* pos) { m_importPlaces.push_back(ResolvePosition(pos)); }

    ExpansionObserver* m_observer = nullptr; ///< See ExpansionRun::SetObserver.
    ExpansionLevel* m_level = nullptr;       ///< Innermost expansion in progress.
    ssize_t m_depth = 0;                     ///< Expansions inside one another.
    ssize_t m_steps = 0;
    ssize_t m_printed = 0;              ///< Bytes.
    bool m_printsTooMuch = false;       ///< Python code has.
    int m_scopes = 0;                   ///< That have installed the run.
    ssize_t m_held = 0;                 ///< Bytes, while none has.
    ssize_t m_heldToEnd = 0;            ///< Of that, what nobody else gives back.
    ssize_t m_heldBefore = 0;           ///< By others of the thread, while one has.
    ssize_t m_overdraft = 0;            ///< What the passing error may take beyond the limit.
    const char* m_failurePos = nullptr; ///< See ExpansionRun::FailurePosition.
    xstring m_hint;                     ///< See ExpansionRun::Hint; empty for none.
    const char* m_openedAt = nullptr;   ///< What `m_neverClosed`, an error, found without an end.
    const char* m_neverClosed = nullptr;
    const char* m_definedAt = nullptr; ///< See ExpansionRun, as the next.
    const char* m_elementAt = nullptr;
    /// Characters that the ends of blocks have taken away; see Scan/LostText.h.
    HeldSet<const char*> m_lostText;
    bool m_isTextLost = false; ///< A text whose last character is one of these had an error.
    HeldVector<DeadText> m_deadTexts;
    std::vector<CallPlace> m_callPlaces; ///< See ExpansionRun, as the next two.
    ssize_t m_moreCallPlaces = 0;
    std::vector<const char*> m_importPlaces;
    ssize_t m_markFreeLength = 0; ///< Of the passing error's description; see ErrorContext.cpp.
    bool m_errorsAreSwallowed = false;                      ///< See SwallowedErrors.
    HeldVector<std::shared_ptr<TemporaryText>> m_keptTexts; ///< For the map; see NotePiece.
    std::shared_ptr<LiveTexts> m_liveTexts;                 ///< Null while none was made.
    HeldMap<const char*, KnownText> m_knownTexts;           ///< By where they begin.
    std::unique_ptr<Watch> m_watch; ///< What has been seen for warnings; null while nothing was.
    HeldMap<const char*, BracketCache*> m_brackets; ///< Of texts in progress, by where they begin.
};

namespace detail
{

/// Only ever read through RunState: on its own so that a read is one instruction.
extern thread_local constinit ExpansionRun* t_currentRun [[gnu::tls_model("initial-exec")]];

} // namespace detail

inline ExpansionRun* RunState::CurrentRun() noexcept
{
    return detail::t_currentRun;
}

} // namespace telv
