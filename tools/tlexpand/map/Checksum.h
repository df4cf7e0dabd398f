// SPDX-License-Identifier: MIT
// The sum by which a map knows its output again: CRC-32, as gzip and PNG have it, so that whoever
// reads a map can compute it with what is at hand.
#pragma once

#include "tlUtils/StringExt.h"
#include <cstdint>

namespace telv::tool
{

/// The CRC-32 of a text whose beginning has the sum `before` (0 of an empty one) and which goes on
/// with `text`. About 1 ms for a megabyte.
uint32_t AddToCrc32(uint32_t before, SubString text);

} // namespace telv::tool
