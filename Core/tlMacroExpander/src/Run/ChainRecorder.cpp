// SPDX-License-Identifier: MIT
// What is open is a stack; a piece stores the part of it that is not stored yet. A step is stored
// at most once, and before what is inside it.
#include "tlMacroExpander/ChainRecorder.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <algorithm>

namespace telv
{

namespace
{

/// The range itself, or what made the text that it lies in.
SubString PlaceInGivenText(SubString place)
{
    const ExpansionRun* const run = ExpansionRun::Current();
    SubString origin;
    return run != nullptr && run->FindOrigin(place.begin(), origin) ? origin : place;
}

} // namespace

void ChainRecorder::ExpansionBegins(const ObservedExpansion& expansion)
{
    if (m_output == nullptr)
        m_output = &expansion.m_output;
    if (&expansion.m_output != m_output)
        return;
    // What an application has written itself, before or between expansions, has pieces too.
    while (m_stepOfPiece.size() < m_output->m_pieces.m_pieces.size())
        m_stepOfPiece.push_back(-1);
}

void ChainRecorder::InvocationBegins(const ObservedInvocation& invocation)
{
    const LSVariable& variable = invocation.m_variable;
    m_open.push_back({variable.GetType() == LSV_MACRO,
                      {ChainStep::STEP_MACRO, variable.m_name, invocation.m_place, 0, -1}});
}

void ChainRecorder::InvocationEnds() noexcept
{
    End();
}

void ChainRecorder::RoundBegins(const ObservedRound& round)
{
    const char* const name = round.m_loop == "for" ? "@for" : "@while";
    m_open.push_back({true, {ChainStep::STEP_LOOP, name, round.m_place, round.m_round, -1}});
}

void ChainRecorder::RoundEnds() noexcept
{
    End();
}

void ChainRecorder::End() noexcept
{
    m_open.pop_back();
    m_stored = std::min(m_stored, m_open.size());
}

void ChainRecorder::PieceWritten(const ObservedPiece& piece)
{
    if (&piece.m_output == m_output)
        m_stepOfPiece.push_back(CurrentStep());
}

/// The innermost step that is open, stored with all around it; -1 when there is none.
ssize_t ChainRecorder::CurrentStep()
{
    ssize_t step = m_stored == 0 ? -1 : m_open[m_stored - 1].m_index;
    for (; m_stored < m_open.size(); ++m_stored)
    {
        Store(m_open[m_stored], step);
        step = m_open[m_stored].m_index;
    }
    return step;
}

void ChainRecorder::Store(Open& open, ssize_t outer)
{
    open.m_index = outer;
    if (!open.m_isStep)
        return;
    ChainStep step = open.m_step;
    step.m_name = *m_names.emplace(step.m_name).first;
    step.m_place = PlaceInGivenText(step.m_place);
    step.m_outer = outer;
    m_steps.push_back(step);
    open.m_index = m_steps.size() - 1;
}

} // namespace telv
