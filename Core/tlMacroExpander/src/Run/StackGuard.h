// SPDX-License-Identifier: MIT
// The one guard against running out of stack.
//
// It compares the address of the caller's frame with the lowest address that still leaves room for
// composing and throwing an error. The bounds of the thread's real stack are read once per thread.
#pragma once

#include "tlMacroExpander/Export.h"

namespace telv
{

/// The address below which nothing may nest further on this thread; computed on the first call.
const char* LowestStackAddress(const char* frame);

/// Makes [low, high) the stack of this thread, for those that switch to one of their own.
void SetStackBounds(const char* low, const char* high);

[[noreturn]] void ThrowNestedTooDeeply(const char* pos);

/// True while there is stack left to nest one level deeper.
[[gnu::always_inline]] inline bool HasStackLeft()
{
    // A local's address would be wrong under AddressSanitizer's fake stacks.
    const char* const frame = static_cast<const char*>(__builtin_frame_address(0));
    return frame > LowestStackAddress(frame);
}

/// The same for expansions inside one another, which take less of a very large stack: each of them
/// has to be unwound before endless recursion can be reported.
const char* LowestLevelAddress(const char* frame);

/// @throws ExpansionLimitException  "Expansion nested too deeply" at `pos`, while there still is
///     stack enough to report it.
[[gnu::always_inline]] inline void CheckStack(const char* pos)
{
    if (!HasStackLeft()) [[unlikely]]
        ThrowNestedTooDeeply(pos);
}

/// The same for one more expansion.
[[gnu::always_inline]] inline void CheckLevelStack(const char* pos)
{
    const char* const frame = static_cast<const char*>(__builtin_frame_address(0));
    if (frame <= LowestLevelAddress(frame)) [[unlikely]]
        ThrowNestedTooDeeply(pos);
}

} // namespace telv
