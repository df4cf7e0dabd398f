// SPDX-License-Identifier: MIT
// The nearest binding of a name, where the newest one is neither of the frame that asks nor of its
// parent.
//
// The frame's ancestors and the bindings are both in the order of age, newest first, so the two are
// walked side by side: where they meet is the answer. Nearly always that takes a step or two. When
// it takes longer, the search jumps. Say that the newest binding left, of frame B, is not an
// ancestor of the frame F, and that A is where their ways to the root part. What A and its
// ancestors bind is found from B's binding, which knows the next binding above it and, like the
// jumps of frames, some further up. What lies between A and F is newer than B, and so has been
// passed, unless the branch that leads to F is older than B; expansion never asks from such a
// frame, because B is destroyed before it goes on there. Then the next older binding is tried.
#include "tlMacroExpander/src/Frames/NameTable.h"

namespace telv
{

namespace
{

constexpr int s_fewSteps = 32;

} // namespace

/// Finds one binding. Recursion ends at the second level: it asks for older bindings, whose links
/// are made by then.
class BindingSearch
{
public:
    static NameBinding* Run(const VarFrame* frame, NameBinding* binding);

private:
    static NameBinding* Jump(const VarFrame* frame, NameBinding* binding);
    static NameBinding* FirstAtOrAbove(NameBinding* binding, int64 depth);
    static void MakeLinks(NameBinding* binding);
    static void MakeLink(NameBinding& binding);
};

NameBinding* NameTable::FindNearest(const VarFrame* frame, NameBinding* newest)
{
    return BindingSearch::Run(frame, newest);
}

/// `binding` and older ones are left to search.
NameBinding* BindingSearch::Run(const VarFrame* frame, NameBinding* binding)
{
    for (int steps = 0; binding != nullptr && steps < s_fewSteps; ++steps)
    {
        if (binding->m_frame == frame)
            return binding;
        if (binding->m_number > FrameTree::Number(frame))
            binding = binding->m_older;
        else if ((frame = frame->m_parent) == nullptr)
            return nullptr;
    }
    while (binding != nullptr)
    {
        const VarFrame* const common = FrameTree::CommonAncestor(frame, binding->m_frame);
        if (common == binding->m_frame)
            return binding;
        const int64 depth = FrameTree::Depth(common);
        if (common == frame ||
            FrameTree::Number(FrameTree::AncestorAt(frame, depth + 1)) > binding->m_number)
        {
            MakeLinks(binding);
            return FirstAtOrAbove(binding, depth);
        }
        binding = binding->m_older;
    }
    return nullptr;
}

/// The first of the bindings above `binding` whose frame is at most as deep as `depth`.
NameBinding* BindingSearch::FirstAtOrAbove(NameBinding* binding, int64 depth)
{
    while (binding != nullptr && FrameTree::Depth(binding->m_frame) > depth)
    {
        NameBinding* const jump = binding->m_jump;
        const bool isBelow = jump != nullptr && FrameTree::Depth(jump->m_frame) > depth;
        binding = isBelow ? jump : binding->m_above;
    }
    return binding;
}

/// Makes the links of `binding` and all older ones, from the oldest that has none.
void BindingSearch::MakeLinks(NameBinding* binding)
{
    if (binding->m_level >= 0)
        return;
    NameBinding* first = binding;
    while (first->m_older != nullptr && first->m_older->m_level < 0)
        first = first->m_older;
    for (;; first = first->m_newer)
    {
        MakeLink(*first);
        if (first == binding)
            return;
    }
}

void BindingSearch::MakeLink(NameBinding& binding)
{
    NameBinding* const above = Run(binding.m_frame->m_parent, binding.m_older);
    binding.m_above = above;
    binding.m_level = above == nullptr ? 0 : above->m_level + 1;
    binding.m_jump = above;
    const NameBinding* const jump = above == nullptr ? nullptr : above->m_jump;
    const NameBinding* const further = jump == nullptr ? nullptr : jump->m_jump;
    if (further != nullptr && above->m_level - jump->m_level == jump->m_level - further->m_level)
        binding.m_jump = jump->m_jump;
}

} // namespace telv
