// SPDX-License-Identifier: MIT
// One expansion in progress: the innermost one is known to the run.
//
// Levels form a chain through the native stack. They hold what nested expansions need to be told
// (who owns the text, whether pieces are recorded) and count what is limited.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/src/Run/LevelText.h"
#include "tlMacroExpander/src/Run/LookupCount.h"
#include "tlMacroExpander/src/Run/RunState.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include "tlMacroExpander/src/Run/Watch.h"
#include "tlMacroExpander/src/Scan/BracketCache.h"
#include "tlMacroExpander/src/Scan/FastPaths.h"
#include <memory>
#include <utility>

namespace telv
{

class ExpandedOutput;
class ScannedText;
struct ScanItem;

/// Who wants the pieces of an output.
enum EPieces : unsigned char
{
    PIECES_UNWANTED = 0, ///< Nobody: the text may be written in long stretches.
    PIECES_RECORDED = 1, ///< Whoever reads the output's map.
    PIECES_OBSERVED = 2  ///< The run's observer. Both may.
};

/// Who wants them under the run of this thread.
inline EPieces WantedPieces(bool isRecorded)
{
    const unsigned observed = RunState::CurrentObserver() != nullptr ? PIECES_OBSERVED : 0;
    return static_cast<EPieces>(observed | (isRecorded ? PIECES_RECORDED : 0));
}

/// Lives as long as one `MacroExpander::Expand`.
class ExpansionLevel
{
public:
    /// @param position  Of the current directive or name, kept up to date by the expander; what it
    ///                  points to is null before the first.
    /// @throws ExpansionLimitException  when the run's limits or the stack do not allow another.
    ExpansionLevel(RunState& state, const ExpansionLimits& limits, const LevelText& text,
                   const char* const& position, EPieces pieces)
        : m_state(state), m_limits(limits), m_outer(state.m_level), m_text(text.m_text),
          m_position(position), m_owner(text.m_owner), m_scanned(text.m_scanned),
          m_first(text.m_first), m_pieces(pieces)
    {
        if (m_owner == nullptr && m_outer != nullptr && m_outer->m_owner != nullptr &&
            IsWithin(m_text, m_outer->m_owner->Text()))
            m_owner = m_outer->m_owner;
        CheckLevelStack(m_text.begin());
        if (state.m_depth >= limits.m_maxDepth) [[unlikely]]
            ThrowNestedTooDeeply(m_text.begin());
        CountStep(m_text.begin());
        state.m_level = this;
        ++state.m_depth;
    }
    ~ExpansionLevel()
    {
        if (!m_isFinished) [[unlikely]]
            NoteFailure();
        if (m_ownBrackets != nullptr)
            DropBrackets();
        m_state.m_level = m_outer;
        --m_state.m_depth;
    }
    ExpansionLevel(const ExpansionLevel&) = delete;
    ExpansionLevel& operator=(const ExpansionLevel&) = delete;

    /// The innermost level of this thread, or null.
    static ExpansionLevel* Current() noexcept
    {
        const RunState* const state = RunState::Current();
        return state == nullptr ? nullptr : state->m_level;
    }

    /// Who owns the text that is being expanded on this thread: null when the application does.
    static TemporaryText* CurrentOwner() noexcept
    {
        const ExpansionLevel* const level = Current();
        return level == nullptr ? nullptr : level->m_owner;
    }

    RunState& State() const { return m_state; }
    SubString Text() const { return m_text; }
    /// Whether `position` is what the level was made with: whether it is the level of that
    /// expander.
    bool IsOf(const char* const& position) const { return &m_position == &position; }
    EPieces Pieces() const { return m_pieces; }
    /// Whether the output is written piece by piece.
    bool IsRecorded() const { return m_pieces != PIECES_UNWANTED; }
    /// Whether the pieces are kept in the output.
    bool KeepsPieces() const { return (m_pieces & PIECES_RECORDED) != 0; }
    /// Whether somebody is told what happens.
    bool IsObserved() const { return (m_pieces & PIECES_OBSERVED) != 0; }
    const ExpansionLimits& Limits() const { return m_limits; }

    /// False where every write is to be checked, every look-up counted, or every token looked at.
    bool AllowsFastPaths() const
    {
        return m_limits.m_maxOutput == ExpansionLimits::s_none && AllowsPassingOver();
    }
    /// The same for ways that leave all writing as it is.
    bool AllowsPassingOver() const
    {
        return !IsCountingLookups() && m_state.m_depth < m_limits.m_maxDepth &&
               !Warns(s_watchingWarnings);
    }

    /// The expansion around this one, or null.
    const ExpansionLevel* Outer() const { return m_outer; }

    /// The round of the loop that is the current directive; 0 outside of loops.
    ssize_t Round() const { return m_round; }
    void SetRound(ssize_t round) { m_round = round; }

    /// What is known of the text, or null.
    ScannedText* Scanned() const { return m_scanned; }
    unsigned FirstItem() const { return m_first; }
    /// The item that is being expanded; null while the text is read as if for the first time.
    ScanItem* Item() const { return m_item; }
    void Enter(ScanItem* item) { m_item = item; }

    /// The current directive or name, or the start of the text before the first.
    const char* Position() const { return m_position == nullptr ? m_text.begin() : m_position; }

    /// Counts an expansion, an invocation or a loop round.
    void CountStep(const char* pos)
    {
        if (++m_state.m_steps > m_limits.m_maxSteps) [[unlikely]]
            ThrowTooManySteps(pos);
    }

    /// Counts the steps of `depth` expansions inside one another; false, with nothing counted, when
    /// a limit would be met.
    bool CountNested(ssize_t depth, ssize_t steps)
    {
        if (depth > m_limits.m_maxDepth - m_state.m_depth ||
            steps > m_limits.m_maxSteps - m_state.m_steps)
            return false;
        m_state.m_steps += steps;
        return true;
    }

    /// Other expansions, which are not made one by one, lie between this one and those inside.
    class Deeper
    {
    public:
        Deeper(ExpansionLevel& level, ssize_t count) : m_state(level.m_state), m_count(count)
        {
            m_state.m_depth += count;
        }
        ~Deeper() { m_state.m_depth -= m_count; }
        Deeper(const Deeper&) = delete;
        Deeper& operator=(const Deeper&) = delete;

    private:
        RunState& m_state;
        ssize_t m_count;
    };

    bool HasStepLeft() const { return m_state.m_steps < m_limits.m_maxSteps; }

    /// An error has left `text`: remembers whether the end of a block has taken its end away.
    static void NoteLostText(SubString text, RunState& state) noexcept;
    /// The same for the thread's run.
    static void NoteLostText(SubString text) noexcept
    {
        if (RunState* const state = RunState::Current())
            NoteLostText(text, *state);
    }

    /// To be called when the text has been expanded.
    void Finish() { m_isFinished = true; }

    /// What is known of the brackets in this text, or in a larger one that holds it; null when
    /// there is nothing worth knowing.
    BracketCache* Brackets();

    /// The same if it is known already, else null.
    BracketCache* KnownBrackets();

    /// Notes that a piece of the mapped output views the text.
    void NotePiece();

    /// Moves the position of a passing error out of the texts that died under it.
    static void MoveOutOfDeadTexts(LexScannerException& e) noexcept;

    /// @throws ExpansionLimitException  `size` bytes are more than the current run allows; without
    ///     a position.
    static void CheckSize(ssize_t size);

    /// Counts text that is about to be printed in `run`, which may be null.
    /// @throws ExpansionLimitException  It is more than the run allows, in all; at `pos`.
    static void CountPrinted(ExpansionRun* run, ssize_t size, const char* pos);

    /// To be called where an error has been swallowed.
    static void ForgetErrors() noexcept;

    [[noreturn]] static void ThrowTooManySteps(const char* pos);
    [[noreturn]] static void ThrowOutputTooLarge(const char* pos);

private:
    void NoteFailure() noexcept;
    void DropBrackets() noexcept;

    RunState& m_state;
    const ExpansionLimits& m_limits;
    ExpansionLevel* m_outer;
    SubString m_text;
    const char* const& m_position;
    TemporaryText* m_owner;
    BracketCache* m_knownBrackets = nullptr; ///< Null: not asked for yet, or none.
    std::unique_ptr<BracketCache> m_ownBrackets;
    bool m_isBracketOwner = false; ///< Others find `m_ownBrackets` through the run.
    ScannedText* m_scanned;
    ScanItem* m_item = nullptr;
    ssize_t m_round = 0;
    unsigned m_first;
    EPieces m_pieces;
    bool m_isFinished = false;
    bool m_errorHasPosition = false; ///< The error that ended it says where it is.
};

/// While it lives, errors of the text get no words: @assertfails swallows them, and composing what
/// nobody reads would make nested ones quadratic. Running out of something is not swallowed.
class SwallowedErrors
{
public:
    SwallowedErrors() : m_state(RunState::Current())
    {
        if (m_state != nullptr)
            m_previous = std::exchange(m_state->m_errorsAreSwallowed, true);
    }
    ~SwallowedErrors()
    {
        if (m_state != nullptr)
            m_state->m_errorsAreSwallowed = m_previous;
    }
    SwallowedErrors(const SwallowedErrors&) = delete;
    SwallowedErrors& operator=(const SwallowedErrors&) = delete;

    /// Whether an error that is thrown now will be swallowed.
    static bool AreExpected() noexcept
    {
        const RunState* const state = RunState::Current();
        return state != nullptr && state->m_errorsAreSwallowed;
    }

private:
    RunState* m_state;
    bool m_previous = false;
};

} // namespace telv
