// SPDX-License-Identifier: MIT
// The limit in bytes of the thread: what others hold does not count.
#include "tlMacroExpander/src/Run/MemoryLimit.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Run/RunState.h"
#include <algorithm>
#include <utility>

namespace telv
{

namespace
{

/// For an error and its lines.
constexpr ssize_t s_overdraft = ssize_t(1) << 20;

ssize_t MostOf(const ExpansionRun& run)
{
    const ssize_t most = run.m_limits.m_maxMemory;
    const RunState& state = RunState::Of(run);
    const ssize_t before = state.m_heldBefore + state.m_overdraft;
    const bool isLimited =
        most != ExpansionLimits::s_none && most < HeldMemory::s_unlimited - before;
    return isLimited ? before + most : HeldMemory::s_unlimited;
}

} // namespace

MemoryLimitScope::MemoryLimitScope(const ExpansionRun& run) noexcept
    : m_run(run), m_previous(std::exchange(ThreadMemory().m_most, MostOf(run)))
{
}

/// What an error may take beyond the limit, it may until it has left the run.
MemoryLimitScope::~MemoryLimitScope()
{
    const bool wasLimited = m_previous != HeldMemory::s_unlimited;
    ThreadMemory().m_most = m_previous + (wasLimited ? RunState::Of(m_run).m_overdraft : 0);
}

void ThrowOutOfMemory(const ExpansionRun& run, const char* pos)
{
    // More than the limit may be held already: a text that was given, say.
    HeldMemory& memory = ThreadMemory();
    ssize_t& overdraft = RunState::Of(run).m_overdraft;
    overdraft = 0;
    overdraft = std::max<ssize_t>(memory.m_bytes - MostOf(run), 0) + s_overdraft;
    if (memory.m_most != HeldMemory::s_unlimited) // within a scope
        memory.m_most = MostOf(run);
    throw ExpansionLimitException("Out of memory", pos);
}

} // namespace telv
