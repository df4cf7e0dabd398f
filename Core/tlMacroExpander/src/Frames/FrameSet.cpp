// SPDX-License-Identifier: MIT
// The set of frames: a hash table of addresses, at most three quarters full.
#include "tlMacroExpander/FrameSet.h"
#include "tlMacroExpander/src/Frames/HashName.h"
#include "tlUtils/HeldContainers.h"
#include <algorithm>
#include <functional>
#include <utility>

namespace telv
{

namespace
{

using Allocator = HeldAllocator<VarFrame*>;

VarFrame** Allocate(ssize_t n)
{
    return Allocator().allocate(static_cast<size_t>(n));
}

void Deallocate(VarFrame** frames, ssize_t n)
{
    if (frames != nullptr)
        Allocator().deallocate(frames, static_cast<size_t>(n));
}

} // namespace

void FrameSet::Free()
{
    Deallocate(m_slots, m_capacity);
    Deallocate(m_sorted, m_size);
}

/// The slot of `frame`, or the free one where it would go; null without a table.
VarFrame** FrameSet::FindSlot(const VarFrame* frame) const
{
    if (m_slots == nullptr)
        return nullptr;
    const uint64 mask = static_cast<uint64>(m_capacity) - 1;
    uint64 slot = MultiplyFold(reinterpret_cast<uint64>(frame), 0x9e3779b97f4a7c15UL) & mask;
    while (m_slots[slot] != nullptr && m_slots[slot] != frame)
        slot = (slot + 1) & mask;
    return m_slots + slot;
}

bool FrameSet::contains(const VarFrame* frame) const
{
    VarFrame* const* const slot = FindSlot(frame);
    return slot != nullptr && *slot != nullptr;
}

void FrameSet::MakeRoom(ssize_t n)
{
    if ((m_size + n) * 4 <= ssize_t{m_capacity} * 3)
        return;
    ssize_t capacity = m_capacity == 0 ? 4 : m_capacity;
    while ((m_size + n) * 4 > capacity * 3)
        capacity *= 2;
    VarFrame** const former = m_slots;
    const int32 formerCapacity = m_capacity;
    m_slots = Allocate(capacity);
    std::fill(m_slots, m_slots + capacity, nullptr);
    m_capacity = static_cast<int32>(capacity);
    for (int32 i = 0; i < formerCapacity; ++i)
        if (former[i] != nullptr)
            *FindSlot(former[i]) = former[i];
    Deallocate(former, formerCapacity);
}

bool FrameSet::insert(VarFrame* frame)
{
    if (contains(frame))
        return false;
    MakeRoom(1);
    *FindSlot(frame) = frame;
    Deallocate(std::exchange(m_sorted, nullptr), m_size);
    ++m_size;
    return true;
}

FrameSet::const_iterator FrameSet::Sorted() const
{
    if (m_sorted == nullptr && m_size > 0)
    {
        m_sorted = Allocate(m_size);
        VarFrame** next = m_sorted;
        ForEach([&](VarFrame* frame) { *next++ = frame; });
        std::sort(m_sorted, next, std::less<>());
    }
    return m_sorted;
}

FrameSet::const_iterator FrameSet::find(VarFrame* frame) const
{
    return contains(frame) ? std::lower_bound(begin(), end(), frame, std::less<>()) : end();
}

} // namespace telv
