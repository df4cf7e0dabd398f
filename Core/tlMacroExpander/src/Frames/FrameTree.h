// SPDX-License-Identifier: MIT
// What the sources of this folder see of a frame beyond its public face.
#pragma once

#include "tlMacroExpander/VarFrame.h"

namespace telv
{

struct NameBinding;
class NameTable;

/// Access to the place of frames in their tree.
class FrameTree
{
public:
    /// The names of the tree of `frame`. Never null.
    static NameTable& Names(const VarFrame& frame) { return *frame.m_localVariables.m_map.m_names; }
    static int64 Depth(const VarFrame* frame) { return Place(frame).m_depth; }
    static int64 Number(const VarFrame* frame) { return Place(frame).m_number; }
    static bool IsRoot(const VarFrame* frame) { return Place(frame).m_depth == 0; }
    static FramePlace& Place(VarFrame* frame) { return frame->m_setOfFrames.m_place; }
    static const FramePlace& Place(const VarFrame* frame) { return frame->m_setOfFrames.m_place; }
    /// Its bindings, newest first; that it imports (NameTable::NoteImport) is one too.
    static NameBinding*& Bindings(VarFrame* frame)
    {
        return frame->m_localVariables.m_map.m_bindings;
    }
    /// The frame's own variable of this name, or null.
    static LSVariable* FindOwn(const VarFrame& frame, SubString name, uint64 hash)
    {
        return frame.m_localVariables.m_map.Lookup(name, hash);
    }
    /// Adds a variable to a frame in which nobody has looked for a name, where the entry of its own
    /// name in the table of the tree is known.
    static void AddBound(VarFrame& frame, LSVariable* v, NameEntry& entry)
    {
        frame.m_localVariables.AddBound(v, entry);
    }
    /// The ancestor of this depth. Logarithmic.
    static const VarFrame* AncestorAt(const VarFrame* frame, int64 depth);
    /// The deepest frame that is an ancestor of both, or one of them. Logarithmic.
    static const VarFrame* CommonAncestor(const VarFrame* a, const VarFrame* b);

private:
    static void MakeJumps(const VarFrame* frame);
};

} // namespace telv
