// SPDX-License-Identifier: MIT
// Variables that come and go with the frames of a tree take their memory from that tree: binding an
// argument then needs no allocation, once as many have been bound at a time.
#pragma once

#include "tlMacroExpander/src/Frames/Pool.h"

namespace telv
{

/// Base of a class `T` of variables that can be made in a pool, `new (pool) T(...)`, or as usual.
/// Nothing derives from `T`. Either way they are deleted as usual, and the pool must still be
/// there. In front of each stands whose its memory is.
template <class T>
class Recyclable
{
public:
    static void* operator new(size_t)
    {
        return Mark(HeldAllocator<char>().allocate(Size()), nullptr);
    }
    static void* operator new(size_t, BlockPool& pool) { return Mark(pool.Take(Size()), &pool); }
    static void operator delete(void* thing) noexcept { GiveBack(thing); }
    /// For a constructor that throws.
    static void operator delete(void* thing, BlockPool&) noexcept { GiveBack(thing); }

private:
    static constexpr size_t s_mark = sizeof(BlockPool*);

    static constexpr size_t Size()
    {
        static_assert(sizeof(T) + s_mark <= BlockPool::s_largest && alignof(T) <= s_mark);
        return sizeof(T) + s_mark;
    }

    static void* Mark(void* block, BlockPool* pool) { return ::new (block) BlockPool*(pool) + 1; }

    static void GiveBack(void* thing) noexcept
    {
        void* const block = static_cast<char*>(thing) - s_mark;
        if (BlockPool* const pool = *static_cast<BlockPool**>(block))
            pool->Give(block, Size());
        else
            HeldAllocator<char>().deallocate(static_cast<char*>(block), Size());
    }
};

} // namespace telv
