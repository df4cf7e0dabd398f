// SPDX-License-Identifier: MIT
// Writing to an output whose pieces nobody reads: the same characters at the same columns, no
// pieces.
//
// Recording costs 24 bytes for every stretch, and stretches can be single tokens. Without it a
// stretch that needs no indentation inside goes out with one put, and only its last line is looked
// at, for the column.
#pragma once

#include "tlMacroExpander/ExpandedOutput.h"

namespace telv
{

/// Writes `s`, text of a source or computed, as the recording operations of `output` would, each
/// line indented by `indent` columns. Positions in the output can't be mapped afterwards.
TLEXPANDER_API void WriteUnrecorded(ExpandedOutput& output, SubString s, ssize_t indent);

} // namespace telv
