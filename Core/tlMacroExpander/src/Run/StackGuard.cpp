// SPDX-License-Identifier: MIT
// Bounds of the current thread's stack, cached per thread.
#include "tlMacroExpander/src/Run/StackGuard.h"
#include "tlMacroExpander/src/LSToken.h"
#include <algorithm>
#include <cstdint>
#include <limits>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

namespace telv
{

namespace
{

/// Left free for composing an error, for destructors, and for a signal handler.
constexpr std::uintptr_t s_reserve = 160UL * 1024;
constexpr std::uintptr_t s_leastReserve = 16UL * 1024;
/// What is assumed of a main stack without a limit, and of a fiber's from its outermost entry.
constexpr std::uintptr_t s_mostOfUnlimited = 256UL * 1024 * 1024;
constexpr std::uintptr_t s_fiber = 256UL * 1024;
/// What expansions take at most: enough for 100,000 nested macro calls of some size.
#if defined(__OPTIMIZE__) && !defined(TELV_ADDRESS_SANITIZER)
constexpr std::uintptr_t s_mostOfLevels = 176UL * 1024 * 1024;
#else
constexpr std::uintptr_t s_mostOfLevels = std::numeric_limits<std::uintptr_t>::max();
#endif

struct StackBounds
{
    std::uintptr_t m_low = 0;
    std::uintptr_t m_high = 0;
    const char* m_lowest = nullptr;
    const char* m_lowestLevel = nullptr;
};

thread_local StackBounds t_bounds;

/// Half of a small stack, but of the smallest as much as the deepest way between two checks takes.
std::uintptr_t ReserveOf(std::uintptr_t size)
{
    const std::uintptr_t least = std::min(s_leastReserve, size / 4 * 3);
    return std::clamp(size / 2, least, s_reserve);
}

void SetLowestUsable()
{
    const std::uintptr_t size = t_bounds.m_high - t_bounds.m_low;
    t_bounds.m_lowest = reinterpret_cast<const char*>(t_bounds.m_low + ReserveOf(size));
    const std::uintptr_t most = std::min(s_mostOfLevels, size);
    t_bounds.m_lowestLevel =
        std::max(t_bounds.m_lowest, reinterpret_cast<const char*>(t_bounds.m_high - most));
}

/// How much of the main thread's stack is counted on. It grows while it is used: without a limit of
/// its own down to the next mapping, wherever that is, and only as long as the limit of the address
/// space, which the texts need too, lets it.
std::uintptr_t MostOfMainStack()
{
    std::uintptr_t most = std::numeric_limits<std::uintptr_t>::max();
    rlimit limit;
    if (getrlimit(RLIMIT_STACK, &limit) == 0 && limit.rlim_cur == RLIM_INFINITY)
        most = s_mostOfUnlimited;
    if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
        most = std::min<std::uintptr_t>(most, limit.rlim_cur / 4);
    return most;
}

void ReadThreadBounds(std::uintptr_t frame)
{
    pthread_attr_t attributes;
    void* low = nullptr;
    size_t size = 0;
    if (pthread_getattr_np(pthread_self(), &attributes) == 0)
    {
        pthread_attr_getstack(&attributes, &low, &size); // changes nothing when it fails
        pthread_attr_destroy(&attributes);
    }
    t_bounds.m_low = reinterpret_cast<std::uintptr_t>(low);
    t_bounds.m_high = t_bounds.m_low + size;
    if (frame < t_bounds.m_low || frame >= t_bounds.m_high)
    {
        // A stack that the thread library does not know: count from where we met it.
        t_bounds.m_high = frame;
        t_bounds.m_low = frame - s_fiber;
    }
    if (gettid() == getpid())
        t_bounds.m_low =
            t_bounds.m_high - std::min(t_bounds.m_high - t_bounds.m_low, MostOfMainStack());
}

} // namespace

const char* LowestStackAddress(const char* frame)
{
    const auto address = reinterpret_cast<std::uintptr_t>(frame);
    if (address - t_bounds.m_low < t_bounds.m_high - t_bounds.m_low) [[likely]]
        return t_bounds.m_lowest;
    ReadThreadBounds(address);
    SetLowestUsable();
    return t_bounds.m_lowest;
}

const char* LowestLevelAddress(const char* frame)
{
    const auto address = reinterpret_cast<std::uintptr_t>(frame);
    if (address - t_bounds.m_low >= t_bounds.m_high - t_bounds.m_low) [[unlikely]]
        LowestStackAddress(frame);
    return t_bounds.m_lowestLevel;
}

void SetStackBounds(const char* low, const char* high)
{
    t_bounds.m_low = reinterpret_cast<std::uintptr_t>(low);
    t_bounds.m_high = reinterpret_cast<std::uintptr_t>(high);
    SetLowestUsable();
}

void ThrowNestedTooDeeply(const char* pos)
{
    throw ExpansionLimitException("Expansion nested too deeply", pos);
}

} // namespace telv
