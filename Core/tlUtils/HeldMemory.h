// SPDX-License-Identifier: MIT
// How much memory the texts, tables and variables of a thread hold, and how much they may.
//
// Growable arrays, pools and tables of both libraries say what they take and give back. The sum is
// kept for each thread: asking the allocator would be slow and would count what others hold. Memory
// that another thread gives back stays in the sum of the one that took it.
//
// Applications need it for texts that they keep themselves while a text is expanded: an import
// handler that counts the files which it holds lets the limit of the run mean them too.
#pragma once

#include "tlUtils/Export.h"
#include "tlUtils/IntTypes.h"
#include <limits>
#include <new>

namespace telv
{

/// Thrown where more would be held than the run of this thread may. An expansion under way makes of
/// it, as of every allocation that fails, the error "Out of memory" with its place.
class TLUTILS_API MemoryLimitReached : public std::bad_alloc
{
public:
    ~MemoryLimitReached() override;
    const char* what() const noexcept override;
};

/// What one thread holds. Read it; it is written by the functions below and by the libraries.
struct HeldMemory
{
    static constexpr ssize_t s_unlimited = std::numeric_limits<ssize_t>::max();

    ssize_t m_bytes = 0;
    ssize_t m_most = s_unlimited; ///< Set for the length of an expansion by MemoryLimitScope.

    /// Whether `bytes` more may be taken.
    bool HasRoom(ssize_t bytes) const { return m_bytes + bytes <= m_most; }
};

/// That of this thread.
TLUTILS_API HeldMemory& ThreadMemory() noexcept;

/// What the allocator takes for a block of `bytes`.
constexpr ssize_t BlockSize(ssize_t bytes)
{
    constexpr ssize_t least = 32;
    constexpr ssize_t step = 16;
    constexpr ssize_t header = 8;
    const ssize_t size = (bytes + header + step - 1) / step * step;
    return bytes == 0 ? 0 : (size < least ? least : size);
}

/// Counts a block that is about to be taken, in the place of one of `former` bytes.
/// @throws MemoryLimitReached  It would be too much; nothing has changed.
TLUTILS_API void HoldMemory(ssize_t bytes, ssize_t former = 0);
/// Counts one that was given back.
TLUTILS_API void ReleaseMemory(ssize_t bytes) noexcept;

/// Counts a block for the length of a scope, or longer.
class MemoryHold
{
public:
    explicit MemoryHold(ssize_t bytes) : m_bytes(bytes) { HoldMemory(bytes); }
    ~MemoryHold()
    {
        if (m_bytes != 0)
            ReleaseMemory(m_bytes);
    }
    MemoryHold(const MemoryHold&) = delete;
    MemoryHold& operator=(const MemoryHold&) = delete;

    /// The block stays; whoever gives it back releases it.
    void Keep() { m_bytes = 0; }

private:
    ssize_t m_bytes;
};

} // namespace telv
