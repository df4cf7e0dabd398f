// SPDX-License-Identifier: MIT
// Levels of expansion: what is rare. Positions of passing errors, and whose brackets are known.
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Scan/CommentEnd.h"

namespace telv
{

/// An error without a position (out of memory, a broken assumption) gets the innermost place.
void ExpansionLevel::NoteFailure() noexcept
{
    if (!m_errorHasPosition && m_state.m_failurePos == nullptr)
        m_state.m_failurePos = m_state.ResolvePosition(Position());
    NoteLostText(m_text, m_state);
}

void ExpansionLevel::NoteLostText(SubString text, RunState& state) noexcept
{
    if (!state.m_lostText.empty() && state.m_lostText.contains(text.end()))
        state.m_isTextLost = true;
}

void ExpansionLevel::MoveOutOfDeadTexts(LexScannerException& e) noexcept
{
    RunState* const state = RunState::Current();
    if (state == nullptr)
        return;
    for (const RunState::DeadText& text : state->m_deadTexts)
    {
        if (text.m_begin <= e.m_pos && e.m_pos <= text.m_end)
            e.m_pos = text.m_origin;
    }
    state->m_deadTexts.clear();
    state->m_failurePos = nullptr;
    if (state->m_level != nullptr)
        state->m_level->m_errorHasPosition = true;
}

/// A text can be part of one that is being expanded further out, with others in between: the
/// argument of a macro whose body is another file's. What is known of brackets is kept with the
/// text that asked first, so that arguments nested in arguments are scanned once.
BracketCache* ExpansionLevel::KnownBrackets()
{
    if (m_knownBrackets != nullptr)
        return m_knownBrackets;
    if (m_outer != nullptr && m_outer->m_knownBrackets != nullptr &&
        IsWithin(m_text, m_outer->m_knownBrackets->Text()))
        return m_knownBrackets = m_outer->m_knownBrackets;
    auto& all = m_state.m_brackets;
    const auto next = all.upper_bound(m_text.begin());
    if (next != all.begin() && IsWithin(m_text, std::prev(next)->second->Text()))
        return m_knownBrackets = std::prev(next)->second;
    return nullptr;
}

BracketCache* ExpansionLevel::Brackets()
{
    if (BracketCache* const known = KnownBrackets())
        return known;
    if (m_text.size() < BracketCache::s_minimumSpan) // nothing to be remembered
        return nullptr;
    auto& all = m_state.m_brackets;
    m_ownBrackets = std::make_unique<BracketCache>(m_text);
    m_isBracketOwner = all.emplace(m_text.begin(), m_ownBrackets.get()).second;
    return m_knownBrackets = m_ownBrackets.get();
}

void ExpansionLevel::DropBrackets() noexcept
{
    if (m_isBracketOwner)
        m_state.m_brackets.erase(m_text.begin());
}

BracketCache* CurrentBracketCache()
{
    ExpansionLevel* const level = ExpansionLevel::Current();
    return level == nullptr ? nullptr : level->Brackets();
}

bool IsWithoutCommentEnd(SubString text)
{
    ExpansionLevel* const level = ExpansionLevel::Current();
    const BracketCache* const known = level == nullptr ? nullptr : level->KnownBrackets();
    return known != nullptr && known->IsWithoutCommentEnd(text);
}

void NoteWithoutCommentEnd(SubString text)
{
    if (BracketCache* const brackets = CurrentBracketCache())
        brackets->NoteWithoutCommentEnd(text);
}

void ExpansionLevel::CheckSize(ssize_t size)
{
    const ExpansionRun* const run = RunState::CurrentRun();
    if (run != nullptr && size > run->m_limits.m_maxOutput)
        ThrowOutputTooLarge(nullptr);
}

void ExpansionLevel::CountPrinted(ExpansionRun* run, ssize_t size, const char* pos)
{
    if (run == nullptr)
        return;
    ssize_t& printed = RunState::Of(*run).m_printed;
    if (size > run->m_limits.m_maxOutput - printed)
        ThrowOutputTooLarge(pos);
    printed += size;
}

void ExpansionLevel::ForgetErrors() noexcept
{
    if (RunState* const state = RunState::Current())
        state->ForgetErrors();
}

void ExpansionLevel::NotePiece()
{
    if (m_owner == nullptr || m_owner->m_isViewedByMap)
        return;
    m_state.m_keptTexts.push_back(m_owner->shared_from_this());
    m_owner->m_isViewedByMap = true;
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
