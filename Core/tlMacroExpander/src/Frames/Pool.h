// SPDX-License-Identifier: MIT
// Memory for many small things of one kind that come and go. What is given back is used again; all
// of it is freed with the pool.
#pragma once

#include "tlUtils/HeldContainers.h"
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>
#include <vector>

namespace telv
{

/// Makes things of a plain type, without a value.
template <class T>
class Pool
{
    static_assert(std::is_trivially_default_constructible_v<T> &&
                  std::is_trivially_destructible_v<T>);

public:
    Pool() = default;
    ~Pool()
    {
        for (size_t i = 0; i < m_chunks.size(); ++i)
            ReleaseMemory(static_cast<ssize_t>(SizeOfChunk(i) * sizeof(Cell)));
    }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;

    T* Take()
    {
        MakeRoom();
        Cell* const cell = m_free;
        m_free = cell->m_next;
        return new (cell) T;
    }
    void Give(T* thing) noexcept { m_free = new (thing) Cell{m_free}; }

    /// After this the next `Take` does not allocate.
    void MakeRoom()
    {
        if (m_free == nullptr) [[unlikely]]
            Grow();
    }

private:
    union Cell
    {
        Cell* m_next;
        alignas(T) unsigned char m_bytes[sizeof(T)];
    };

    static constexpr size_t s_first = 8;
    static constexpr size_t s_most = 512;

    static size_t SizeOfChunk(size_t index) { return index == 0 ? s_first : s_most; }

    void Grow()
    {
        const size_t n = SizeOfChunk(m_chunks.size());
        m_chunks.reserve(m_chunks.size() + 1);
        m_chunks.push_back(MakeHeldArray<Cell>(n));
        for (Cell* cell = m_chunks.back().get() + n; cell != m_chunks.back().get();)
        {
            --cell;
            cell->m_next = m_free;
            m_free = cell;
        }
    }

    Cell* m_free = nullptr;
    std::vector<std::unique_ptr<Cell[]>> m_chunks;
};

/// Things that are reached by number, from 1. One that is not in use has the value of a new one.
template <class T>
class IndexedPool
{
public:
    IndexedPool() = default;
    ~IndexedPool() { ReleaseMemory(s_bytesOfChunk * static_cast<ssize_t>(m_chunks.size())); }
    IndexedPool(const IndexedPool&) = delete;
    IndexedPool& operator=(const IndexedPool&) = delete;

    T& operator[](uint32 index) const { return m_chunks[index / s_chunk][index % s_chunk]; }

    uint32 Take()
    {
        if (!m_free.empty())
        {
            const uint32 index = m_free.back();
            m_free.pop_back();
            return index;
        }
        if (m_next % s_chunk == 0 || m_chunks.empty())
            AddChunk();
        return m_next++;
    }
    /// After this the next `n` calls of `Give` do not allocate.
    void MakeRoomToGive(size_t n) { m_free.reserve(m_free.size() + n); }
    void Give(uint32 index)
    {
        m_free.push_back(index);
        std::destroy_at(&(*this)[index]);
        std::construct_at(&(*this)[index]);
    }

    template <class Visitor>
    void ForEach(Visitor visit) const
    {
        for (uint32 index = 1; index < m_next; ++index)
            visit((*this)[index]);
    }

private:
    static constexpr uint32 s_chunk = 16;
    static constexpr ssize_t s_bytesOfChunk = s_chunk * sizeof(T);

    void AddChunk()
    {
        m_chunks.reserve(m_chunks.size() + 1);
        m_chunks.push_back(MakeHeldArray<T>(s_chunk));
    }

    std::vector<std::unique_ptr<T[]>> m_chunks;
    HeldVector<uint32> m_free;
    uint32 m_next = 1;
};

/// Blocks of a few sizes. The address sanitizer sees each block freed.
class BlockPool
{
public:
    BlockPool() = default;
    ~BlockPool()
    {
        for (size_t kind = 0; kind < std::size(m_free); ++kind)
            while (Block* const block = m_free[kind])
            {
                m_free[kind] = block->m_next;
                Free(block, kind);
            }
    }
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    /// At most `s_largest` bytes.
    void* Take(size_t size)
    {
        Block*& free = m_free[Kind(size)];
        if (free == nullptr)
            return HeldAllocator<char>().allocate((Kind(size) + 1) * s_step);
        Block* const block = free;
        free = block->m_next;
        return block;
    }
    void Give(void* memory, size_t size) noexcept
    {
#if defined(TELV_ADDRESS_SANITIZER)
        Free(memory, Kind(size));
#else
        Block*& free = m_free[Kind(size)];
        free = new (memory) Block{free};
#endif
    }

    static constexpr size_t s_largest = 512;

private:
    struct Block
    {
        Block* m_next;
    };

    static constexpr size_t s_step = 32;
    static constexpr size_t Kind(size_t size)
    {
        return (size - 1) / s_step;
    }
    static void Free(void* block, size_t kind) noexcept
    {
        HeldAllocator<char>().deallocate(static_cast<char*>(block), (kind + 1) * s_step);
    }

    Block* m_free[s_largest / s_step] = {};
};

} // namespace telv
