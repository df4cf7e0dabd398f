// SPDX-License-Identifier: MIT
// A set of frames in six words.
//
// The members stand in a hash table, so that many imports do not move each other about; an array in
// the order of addresses is made when somebody asks for that order. A frame has room for nothing
// else than its two sets, so each set ends in three words for its owner; a frame keeps there where
// it stands in its tree (FramePlace, in its set of all imported frames).
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/IntTypes.h"

namespace telv
{

class VarFrame;

/// Where a frame stands in its tree. The root has depth and number 0.
struct FramePlace
{
    int64 m_depth = 0;          ///< Number of ancestors.
    int64 m_number = 0;         ///< Larger than those of all frames of the tree that are older.
    VarFrame* m_jump = nullptr; ///< An ancestor further up; null until somebody asks for it.
};

/// Set of frames by address; owns no frame.
class TLEXPANDER_API FrameSet
{
public:
    using const_iterator = VarFrame* const*;
    using iterator = const_iterator;

    FrameSet() = default;
    ~FrameSet()
    {
        if (m_slots != nullptr)
            Free();
    }
    FrameSet(const FrameSet&) = delete;
    FrameSet& operator=(const FrameSet&) = delete;

    ssize_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    /// In the order of addresses. Valid until the next insertion.
    const_iterator begin() const { return Sorted(); }
    const_iterator end() const { return Sorted() + m_size; }
    const_iterator find(VarFrame* frame) const;
    /// Constant time.
    bool contains(const VarFrame* frame) const;
    /// Adds `frame`; false when it is there already. Amortised constant time.
    bool insert(VarFrame* frame);
    /// After this the next `n` insertions do not allocate.
    void MakeRoom(ssize_t n);

    /// Calls `visit` with each frame, in no particular order.
    template <class Visitor>
    void ForEach(Visitor visit) const
    {
        Any([&](VarFrame* frame) { return visit(frame), false; });
    }
    /// The same until it returns true; whether it did.
    template <class Visitor>
    bool Any(Visitor visit) const
    {
        for (int32 i = 0; i < m_capacity; ++i)
            if (VarFrame* const frame = m_slots[i]; frame != nullptr && visit(frame))
                return true;
        return false;
    }

private:
    friend class FrameTree;

    VarFrame** FindSlot(const VarFrame* frame) const;
    const_iterator Sorted() const;
    void Free();

    VarFrame** m_slots = nullptr;          ///< Open addressing; null while there is no member.
    mutable VarFrame** m_sorted = nullptr; ///< Made on demand, dropped by `insert`.
    int32 m_size = 0;
    int32 m_capacity = 0; ///< Slots, a power of two.

    FramePlace m_place; ///< Of the owning frame.
};

static_assert(sizeof(FrameSet) == 48, "the size of a standard ordered set");

} // namespace telv
