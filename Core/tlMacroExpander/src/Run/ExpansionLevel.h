// One expansion in progress: the innermost one is known to the run.
//
// Levels form a chain through the native stack. They carry what nested expansions inherit (who owns
// the text, the known bracket pairs) and count what is limited.
#pragma once

#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Scan/BracketCache.h"
#include <exception>
#include <utility>

namespace telv
{

class MacroExpander;

/// The run installed for this thread, or the fallback.
ExpansionRun& CurrentRun() noexcept;

/// Serves, on this thread, members of an expander that are called while no run is installed. What
/// they expand has a run of its own.
ExpansionRun& FallbackRun() noexcept;

/// Lives as long as one `MacroExpander::Expand`.
class ExpansionLevel
{
public:
    /// @throws ExpansionLimitException  when the run's limits or the stack do not allow another.
    ExpansionLevel(ExpansionRun& run, const MacroExpander& expander);
    ~ExpansionLevel();
    ExpansionLevel(const ExpansionLevel&) = delete;
    ExpansionLevel& operator=(const ExpansionLevel&) = delete;

    /// Moves the position of a passing error out of the texts that died under it.
    static void MoveOutOfDeadTexts(LexScannerException& e) noexcept;

    /// Whether an error is passing that was thrown since the level began.
    bool IsFailing() const noexcept;

    /// Whether the application called: what leaves this level must not point into dead text.
    bool IsCalledByApplication() const;

    /// Whether the innermost level of `run` is that of `expander`.
    static bool IsOf(const ExpansionRun& run, const MacroExpander& expander) noexcept
    {
        return run.m_level != nullptr && &run.m_level->m_expander == &expander;
    }

    /// The innermost level of this thread, or null.
    static ExpansionLevel* Current() noexcept;

    /// Who owns the text that is being expanded on this thread: null when the application does.
    static TemporaryText* CurrentOwner() noexcept;

    /// What is known of the brackets in the text of this level, or in a larger one that holds it.
    BracketCache* Brackets();
    /// The current directive or name, or the start of the text before the first.
    const char* Position() const;

    /// Counts an expansion, an invocation or a loop round.
    static void CountStep(ExpansionRun& run, const char* pos)
    {
        if (++run.m_steps > run.m_limits.m_maxSteps) [[unlikely]]
            ThrowTooManySteps(pos);
    }
    /// Notes that a piece of the mapped output views the text of the innermost level.
    static void NotePiece();

    /// @throws ExpansionLimitException  `size` bytes are more than the current run allows; without
    /// a
    ///     position.
    static void CheckSize(ssize_t size);

    /// To be called where an error has been swallowed.
    static void ForgetErrors() noexcept;

    [[noreturn]] static void ThrowTooManySteps(const char* pos);
    [[noreturn]] static void ThrowOutputTooLarge(const char* pos);

private:
    friend class TextOwnerScope;

    void CheckLimits();

    ExpansionRun& m_run;
    ExpansionLevel* m_outer;
    const MacroExpander& m_expander;
    TemporaryText* m_owner;
    ExpansionLevel* m_bracketLevel;           ///< The level whose text holds this one's.
    std::unique_ptr<BracketCache> m_brackets; ///< Made on demand.
    int m_exceptions;                         ///< In flight when the level began.
    bool m_errorHasPosition = false;          ///< The error that ended it says where it is.
};

/// Says who owns the text that the next expansion is given, where that is not the current text.
class TextOwnerScope
{
public:
    explicit TextOwnerScope(TemporaryText* owner) : m_run(CurrentRun())
    {
        m_run.m_nextOwner = owner;
    }
    ~TextOwnerScope() { m_run.m_nextOwner = nullptr; }
    TextOwnerScope(const TextOwnerScope&) = delete;
    TextOwnerScope& operator=(const TextOwnerScope&) = delete;

private:
    ExpansionRun& m_run;
};

/// An error on its way out that is not thrown. To unwind a level of invocations takes ten times as
/// long as to expand it, and each handler would do it again; so from one invocation to the next an
/// error is handed on by returning false. It is thrown again where the caller knows exceptions
/// only.
class HeldError
{
public:
    /// To be called in the handler of `e`.
    static void Hold(ExpansionRun& run, LexScannerException& e) noexcept
    {
        run.m_heldErrorOwner = std::current_exception();
        run.m_heldError = &e;
    }
    /// The error that is held, or null.
    static LexScannerException* Get(const ExpansionRun& run) noexcept { return run.m_heldError; }
    static void Drop(ExpansionRun& run) noexcept
    {
        run.m_heldError = nullptr;
        run.m_heldErrorOwner = nullptr;
    }
    /// Throws it.
    [[noreturn]] static void Throw(ExpansionRun& run)
    {
        run.m_heldError = nullptr;
        std::rethrow_exception(std::exchange(run.m_heldErrorOwner, nullptr));
    }
};

/// While it lives, errors of the text get no words: @assertfails swallows them, and composing what
/// nobody reads would make nested ones quadratic. Running out of something is not swallowed.
class SwallowedErrors
{
public:
    SwallowedErrors() : m_run(CurrentRun()), m_previous(m_run.m_errorsAreSwallowed)
    {
        m_run.m_errorsAreSwallowed = true;
    }
    ~SwallowedErrors() { m_run.m_errorsAreSwallowed = m_previous; }
    SwallowedErrors(const SwallowedErrors&) = delete;
    SwallowedErrors& operator=(const SwallowedErrors&) = delete;

    /// Whether an error that is thrown now will be swallowed.
    static bool AreExpected() noexcept
    {
        const ExpansionRun* const run = ExpansionRun::Current();
        return run != nullptr && run->m_errorsAreSwallowed;
    }

private:
    ExpansionRun& m_run;
    bool m_previous;
};

} // namespace telv
