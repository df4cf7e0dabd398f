// Levels of expansion: limits, inherited text ownership, and positions of passing errors.
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/MacroExpander.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include "tlMacroExpander/src/Run/TemporaryText.h"
#include <exception>
#include <utility>

namespace telv
{

ExpansionLevel::ExpansionLevel(ExpansionRun& run, const MacroExpander& expander)
    : m_run(run), m_outer(run.m_level), m_expander(expander),
      m_owner(std::exchange(run.m_nextOwner, nullptr)), m_bracketLevel(this),
      m_exceptions(std::uncaught_exceptions())
{
    const SubString text = expander.m_origStr;
    if (m_owner == nullptr && m_outer == nullptr)
        m_owner = FallbackRun().m_nextOwner;
    if (m_owner != nullptr && !IsWithin(text, m_owner->Text()))
        m_owner = nullptr;
    if (m_outer != nullptr)
    {
        TemporaryText* const outerOwner = m_outer->m_owner;
        if (m_owner == nullptr && outerOwner != nullptr && IsWithin(text, outerOwner->Text()))
            m_owner = outerOwner;
        if (IsWithin(text, m_outer->m_bracketLevel->m_expander.m_origStr))
            m_bracketLevel = m_outer->m_bracketLevel;
    }
    CheckLimits();
    run.ForgetErrors();
    run.m_failurePos = nullptr;
    run.m_level = this;
    ++run.m_depth;
}

ExpansionLevel::~ExpansionLevel()
{
    if (IsFailing() && !m_errorHasPosition && m_run.m_failurePos == nullptr)
        m_run.m_failurePos = m_run.CurrentPosition();
    m_run.m_level = m_outer;
    --m_run.m_depth;
}

bool ExpansionLevel::IsFailing() const noexcept
{
    return HeldError::Get(m_run) != nullptr || std::uncaught_exceptions() > m_exceptions;
}

void ExpansionLevel::CheckLimits()
{
    const char* const pos = m_expander.m_origStr.begin();
    CheckStack(pos);
    if (m_run.m_depth >= m_run.m_limits.m_maxDepth) [[unlikely]]
        ThrowNestedTooDeeply(pos);
    CountStep(m_run, pos);
}

void ExpansionLevel::MoveOutOfDeadTexts(LexScannerException& e) noexcept
{
    ExpansionRun* const run = ExpansionRun::Current();
    if (run == nullptr)
        return;
    for (const ExpansionRun::DeadText& text : run->m_deadTexts)
    {
        if (text.m_begin <= e.m_pos && e.m_pos <= text.m_end)
            e.m_pos = text.m_origin;
    }
    run->m_deadTexts.clear();
    run->m_failurePos = nullptr;
    if (run->m_level != nullptr)
        run->m_level->m_errorHasPosition = true;
}

/// Expansions with an import handler are the application's, and so may be what it starts from one.
bool ExpansionLevel::IsCalledByApplication() const
{
    return m_outer == nullptr || m_expander.m_importHandler != nullptr ||
           m_outer->m_expander.m_importHandler != nullptr;
}

ExpansionLevel* ExpansionLevel::Current() noexcept
{
    const ExpansionRun* const run = ExpansionRun::Current();
    return run == nullptr ? nullptr : run->m_level;
}

TemporaryText* ExpansionLevel::CurrentOwner() noexcept
{
    const ExpansionLevel* const level = Current();
    return level == nullptr ? nullptr : level->m_owner;
}

BracketCache* ExpansionLevel::Brackets()
{
    ExpansionLevel& holder = *m_bracketLevel;
    if (holder.m_brackets == nullptr)
        holder.m_brackets = std::make_unique<BracketCache>(holder.m_expander.m_origStr);
    return holder.m_brackets.get();
}

BracketCache* CurrentBracketCache()
{
    ExpansionLevel* const level = ExpansionLevel::Current();
    return level == nullptr ? nullptr : level->Brackets();
}

const char* ExpansionLevel::Position() const
{
    const char* const directive = m_expander.m_startDirectivePos;
    return directive == nullptr ? m_expander.m_origStr.begin() : directive;
}

void ExpansionLevel::CheckSize(ssize_t size)
{
    const ExpansionRun* const run = ExpansionRun::Current();
    if (run != nullptr && size > run->m_limits.m_maxOutput)
        ThrowOutputTooLarge(nullptr);
}

void ExpansionLevel::ForgetErrors() noexcept
{
    if (ExpansionRun* const run = ExpansionRun::Current())
    {
        run->ForgetErrors();
        run->m_failurePos = nullptr;
    }
}

void ExpansionLevel::NotePiece()
{
    TemporaryText* const owner = CurrentOwner();
    if (owner == nullptr || owner->m_isViewedByMap)
        return;
    CurrentRun().m_keptTexts.push_back(owner->shared_from_this());
    owner->m_isViewedByMap = true;
}

void ExpansionLevel::ThrowTooManySteps(const char* pos)
{
    throw ExpansionLimitException("Too many expansion steps", pos);
}

void ExpansionLevel::ThrowOutputTooLarge(const char* pos)
{
    throw ExpansionLimitException("Output too large", pos);
}

} // namespace telv
