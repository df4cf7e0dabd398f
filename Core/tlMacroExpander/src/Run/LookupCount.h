// SPDX-License-Identifier: MIT
// The counting of look-ups (VarFrame.h) as threads see it: who starts it does so while others
// expand.
#pragma once

#include "tlMacroExpander/LSVariable.h"

namespace telv
{

/// Whether look-ups are counted. They are then made literally, frame by frame.
inline bool IsCountingLookups() noexcept
{
    return __atomic_load_n(&s_started, __ATOMIC_RELAXED);
}

inline void CountLookup() noexcept
{
    __atomic_fetch_add(&s_count, 1, __ATOMIC_RELAXED);
}

} // namespace telv
