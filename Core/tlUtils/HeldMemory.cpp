// SPDX-License-Identifier: MIT
// The sum of a thread. A block counts with what the allocator adds to it.
#include "tlUtils/HeldMemory.h"

namespace telv
{

namespace
{

thread_local constinit HeldMemory t_memory [[gnu::tls_model("initial-exec")]];

} // namespace

MemoryLimitReached::~MemoryLimitReached() = default;

const char* MemoryLimitReached::what() const noexcept
{
    return "Out of memory";
}

HeldMemory& ThreadMemory() noexcept
{
    return t_memory;
}

void HoldMemory(ssize_t bytes, ssize_t former)
{
    if (bytes > HeldMemory::s_unlimited / 2) [[unlikely]]
        throw std::bad_alloc();
    const ssize_t held = t_memory.m_bytes + BlockSize(bytes) - BlockSize(former);
    if (held > t_memory.m_most) [[unlikely]]
        throw MemoryLimitReached();
    t_memory.m_bytes = held;
}

void ReleaseMemory(ssize_t bytes) noexcept
{
    t_memory.m_bytes -= BlockSize(bytes);
}

} // namespace telv
