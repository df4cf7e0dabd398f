// SPDX-License-Identifier: MIT
// A definition or an import in the frame ends its use: what a round has made is not seen by the
// next one.
#include "tlMacroExpander/src/Directives/RoundFrame.h"
#include "tlMacroExpander/src/Frames/FrameTree.h"
#include "tlMacroExpander/src/Run/RunState.h"
#include "tlMacroExpander/src/Scan/FastPaths.h"
#include "tlMacroExpander/src/Values/OwningVariables.h"

namespace telv
{

RoundFrame::RoundFrame(VarFrame& parent, const xvector<SubString>& names, TemporaryText* owner)
    : m_parent(parent), m_names(names), m_owner(owner)
{
    const auto count = static_cast<size_t>(names.size());
    m_entries.Hold(FrameTree::Names(parent), count,
                   [&](size_t i) { return names[static_cast<ssize_t>(i)]; });
    m_bound.reserve(count);
}

VarFrame& RoundFrame::Begin()
{
    if (IsLeftAsBound())
        return *m_frame;
    m_bound.clear();
    return m_frame.emplace(&m_parent);
}

/// Whether the frame holds nothing but a variable for each name. Nobody may know them for those of
/// an earlier round.
bool RoundFrame::IsLeftAsBound() const
{
    return m_frame && !m_bound.empty() && m_bound.size() == static_cast<size_t>(m_names.size()) &&
           m_frame->m_localVariables.m_first == m_bound.back() && m_frame->m_setOfFrames.empty() &&
           FastPaths::IsOn(FastPaths::ROUNDS) && RunState::CurrentObserver() == nullptr;
}

void RoundFrame::Bind(ssize_t name, const LevelText& value)
{
    const auto index = static_cast<size_t>(name);
    if (index < m_bound.size())
    {
        FrameTree::Names(m_parent).NoteChangedText();
        return SetLoopVariable(*m_bound[index], value);
    }
    auto bound = MakeLoopVariable(m_names[name], &m_parent, m_owner, value);
    OwningMacroVariable* const var = bound.get();
    FrameTree::AddBound(*m_frame, bound.release(), m_entries[index]);
    m_bound.push_back(var);
}

} // namespace telv
