// SPDX-License-Identifier: MIT
// Applies the limit of a run to the memory that its thread holds.
//
// What is too much is refused where it is asked for, as if there were no more memory; the innermost
// expansion makes of that an error with a place. Some more is allowed from then on, for the lines
// of the error.
#pragma once

#include "tlMacroExpander/ExpansionRun.h"
#include "tlUtils/HeldMemory.h"

namespace telv
{

/// The limit holds while it lives. Scopes nest; each replaces the outer one.
class MemoryLimitScope
{
public:
    explicit MemoryLimitScope(const ExpansionRun& run) noexcept;
    ~MemoryLimitScope();
    MemoryLimitScope(const MemoryLimitScope&) = delete;
    MemoryLimitScope& operator=(const MemoryLimitScope&) = delete;

    /// Whether more is held already than the run may.
    bool IsPassed() const noexcept { return !ThreadMemory().HasRoom(0); }

private:
    const ExpansionRun& m_run;
    ssize_t m_previous;
};

/// The error that the limit has been reached, at `pos`, where `run` is expanding.
[[noreturn]] void ThrowOutOfMemory(const ExpansionRun& run, const char* pos);

} // namespace telv
