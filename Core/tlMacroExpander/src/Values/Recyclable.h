// SPDX-License-Identifier: MIT
// Variables that come and go with the frames of a tree take their memory from that tree: binding an
// argument then needs no allocation, once as many have been bound at a time.
#pragma once

#include "tlMacroExpander/src/Frames/Pool.h"

namespace telv
{

/// Base of classes of variables that can be made in a pool, `new (pool) C(...)`, or as usual.
/// Either way they are deleted as usual, and the pool must still be there. In front of each stands
/// whose its memory is.
class Recyclable
{
public:
    static void* operator new(size_t size)
    {
        return Mark(HeldAllocator<char>().allocate(size + s_mark), nullptr);
    }
    static void* operator new(size_t size, BlockPool& pool)
    {
        return Mark(pool.Take(size + s_mark), &pool);
    }
    static void operator delete(void* thing, size_t size) noexcept
    {
        void* const block = static_cast<char*>(thing) - s_mark;
        if (BlockPool* const pool = *static_cast<BlockPool**>(block))
            pool->Give(block, size + s_mark);
        else
            HeldAllocator<char>().deallocate(static_cast<char*>(block), size + s_mark);
    }
    /// For a constructor that throws: the block stays with the pool.
    static void operator delete(void*, BlockPool&) noexcept {}

private:
    static constexpr size_t s_mark = sizeof(BlockPool*);

    static void* Mark(void* block, BlockPool* pool) { return ::new (block) BlockPool*(pool) + 1; }
};

} // namespace telv
