// SPDX-License-Identifier: MIT
// Ancestors of frames, by jumps of a skew-binary kind: a frame knows its parent and one ancestor
// further up, chosen so that any depth is reached in a logarithmic number of steps. Most frames are
// never asked, so the jumps are made when they are needed.
#include "tlMacroExpander/src/Frames/FrameTree.h"

namespace telv
{

/// Makes the jumps of `frame` and its ancestors. On the way up, each frame without one notes there
/// from where the way came.
void FrameTree::MakeJumps(const VarFrame* frame)
{
    VarFrame* at = const_cast<VarFrame*>(frame);
    VarFrame* below = nullptr;
    for (; Place(at).m_jump == nullptr && at->m_parent != nullptr; at = at->m_parent)
    {
        Place(at).m_jump = below;
        below = at;
    }
    if (at->m_parent == nullptr)
        Place(at).m_jump = at;
    while (below != nullptr)
    {
        at = below;
        below = Place(at).m_jump;
        VarFrame* const parent = at->m_parent;
        VarFrame* const jump = Place(parent).m_jump;
        VarFrame* const further = Place(jump).m_jump;
        const bool equalJumps = Depth(parent) - Depth(jump) == Depth(jump) - Depth(further);
        Place(at).m_jump = equalJumps ? further : parent;
    }
}

const VarFrame* FrameTree::AncestorAt(const VarFrame* frame, int64 depth)
{
    if (Place(frame).m_jump == nullptr)
        MakeJumps(frame);
    while (Depth(frame) > depth)
    {
        const VarFrame* const jump = Place(frame).m_jump;
        frame = Depth(jump) >= depth ? jump : frame->m_parent;
    }
    return frame;
}

const VarFrame* FrameTree::CommonAncestor(const VarFrame* a, const VarFrame* b)
{
    a = AncestorAt(a, Depth(b));
    b = AncestorAt(b, Depth(a));
    while (a != b)
    {
        // At one depth, both jump equally far.
        const bool isBelow = Place(a).m_jump != Place(b).m_jump;
        a = isBelow ? Place(a).m_jump : a->m_parent;
        b = isBelow ? Place(b).m_jump : b->m_parent;
    }
    return a;
}

} // namespace telv
