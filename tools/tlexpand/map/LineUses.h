// SPDX-License-Identifier: MIT
// What a range of a source, a line of it, became in the output.
#pragma once

#include "map/OutputMap.h"

namespace telv::tool
{

/// A stretch of output that has to do with a range of a source.
struct RangeUse
{
    ssize_t m_begin = 0; ///< The first byte of output,
    ssize_t m_end = 0;   ///< and the one behind the last.
    /// It comes from elsewhere, but through an invocation or a loop that stands in the range.
    bool m_isThrough = false;
};

/// What came from `range`, and, where the map has chains, what came through it; in the order of
/// output, each as long as it can be. What did both counts as what came from it. Linear.
std::vector<RangeUse> FindUses(const OutputMap& map, const SourceRange& range);

} // namespace telv::tool
