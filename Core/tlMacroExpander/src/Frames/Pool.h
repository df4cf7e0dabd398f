// SPDX-License-Identifier: MIT
// Memory for many small things of one kind that come and go. What is given back is used again; all
// of it is freed with the pool.
#pragma once

#include "tlUtils/HeldContainers.h"
#include <algorithm>
#include <bit>
#include <cstddef>
#include <iterator>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
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
/// They lie in chunks that begin at a line of the cache, each as large as all before it, up to a
/// limit: few tables are large, and a large one is looked at in any order.
template <class T>
class IndexedPool
{
    static_assert(std::is_trivially_destructible_v<T>);

public:
    IndexedPool() = default;
    ~IndexedPool()
    {
        for (size_t chunk = 0; chunk < m_chunks.size(); ++chunk)
        {
            ::operator delete(m_chunks[chunk], s_alignment);
            ReleaseMemory(BytesOfChunk(chunk));
        }
    }
    IndexedPool(const IndexedPool&) = delete;
    IndexedPool& operator=(const IndexedPool&) = delete;

    T& operator[](uint32 index) const
    {
        const Place place = PlaceOf(index);
        return m_chunks[place.m_chunk][place.m_offset];
    }

    uint32 Take()
    {
        if (!m_free.empty())
        {
            const uint32 index = m_free.back();
            m_free.pop_back();
            return index;
        }
        const Place place = PlaceOf(m_next);
        if (place.m_chunk == m_chunks.size())
            AddChunk();
        std::construct_at(m_chunks[place.m_chunk] + place.m_offset);
        return m_next++;
    }
    /// After this the next `n` calls of `Give` do not allocate.
    void MakeRoomToGive(size_t n) { m_free.reserve(m_free.size() + n); }
    void Give(uint32 index)
    {
        m_free.push_back(index);
        std::construct_at(&(*this)[index]);
    }

    /// Those that are not in use included.
    template <class Visitor>
    void ForEach(Visitor visit) const
    {
        for (uint32 index = 1; index < m_next; ++index)
            visit(index, (*this)[index]);
    }

private:
    struct Place
    {
        size_t m_chunk;
        size_t m_offset;
    };

    static constexpr size_t s_first = 16;
    static constexpr size_t s_most = 1024;
    static constexpr size_t s_growing = 6; ///< Chunks until one has `s_most`.
    static constexpr std::align_val_t s_alignment{64};
    static_assert(s_first << s_growing == s_most);

    static Place PlaceOf(uint32 index)
    {
        const size_t number = index - 1 + s_first; // counted as if one more chunk were the first
        if (number >= s_most) [[unlikely]]
            return {s_growing + number / s_most - 1, number % s_most};
        const size_t before = std::bit_floor(number);
        return {static_cast<size_t>(std::countr_zero(before)) - std::countr_zero(s_first),
                number - before};
    }
    static ssize_t BytesOfChunk(size_t chunk)
    {
        return static_cast<ssize_t>((chunk < s_growing ? s_first << chunk : s_most) * sizeof(T));
    }

    void AddChunk()
    {
        const ssize_t bytes = BytesOfChunk(m_chunks.size());
        m_chunks.reserve(m_chunks.size() + 1);
        MemoryHold hold(bytes);
        m_chunks.push_back(
            static_cast<T*>(::operator new(static_cast<size_t>(bytes), s_alignment)));
        hold.Keep();
    }

    std::vector<T*> m_chunks;
    HeldVector<uint32> m_free;
    uint32 m_next = 1;
};

/// Blocks of a few sizes, cut from larger ones, which are freed with the pool. The address
/// sanitizer gets each block from the allocator, to see it freed.
class BlockPool
{
public:
    BlockPool() = default;
    ~BlockPool()
    {
        while (Chunk* const chunk = m_chunks)
        {
            m_chunks = chunk->m_next;
            HeldAllocator<Chunk>().deallocate(chunk, chunk->m_count);
        }
    }
    BlockPool(const BlockPool&) = delete;
    BlockPool& operator=(const BlockPool&) = delete;

    /// At most `s_largest` bytes.
    void* Take(size_t size)
    {
#if defined(TELV_ADDRESS_SANITIZER)
        return HeldAllocator<char>().allocate(size);
#else
        Block*& free = m_free[Kind(size)];
        if (Block* const block = free)
        {
            free = block->m_next;
            return block;
        }
        const size_t count = Kind(size) + 1;
        if (static_cast<size_t>(m_end - m_next) < count)
            AddChunk();
        return std::exchange(m_next, m_next + count);
#endif
    }
    void Give(void* memory, size_t size) noexcept
    {
#if defined(TELV_ADDRESS_SANITIZER)
        HeldAllocator<char>().deallocate(static_cast<char*>(memory), size);
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

    /// The first of the pieces that were taken together; blocks are cut from the others.
    struct Chunk
    {
        Chunk* m_next;
        size_t m_count;
        size_t m_padding[2];
    };

    static constexpr size_t s_step = sizeof(Chunk);
    static constexpr size_t s_fewest = 64;
    static constexpr size_t s_most = 2048;
    static_assert(s_fewest > s_largest / s_step);

    static constexpr size_t Kind(size_t size)
    {
        return (size - 1) / s_step;
    }

    /// What is left of the last one is not used.
    void AddChunk()
    {
        const size_t count =
            m_chunks == nullptr ? s_fewest : std::min(2 * m_chunks->m_count, s_most);
        m_chunks = new (HeldAllocator<Chunk>().allocate(count)) Chunk{m_chunks, count, {}};
        m_next = m_chunks + 1;
        m_end = m_chunks + count;
    }

    Block* m_free[s_largest / s_step] = {};
    Chunk* m_chunks = nullptr;
    Chunk* m_next = nullptr; ///< Of the newest chunk, what has not been cut,
    Chunk* m_end = nullptr;  ///< up to here.
};

} // namespace telv
