// SPDX-License-Identifier: MIT
// What the files that look for hints share. Hints err on the side of silence: one that is wrong is
// worse than none.
#pragma once

#include "tlMacroExpander/src/LSToken.h"
#include <vector>

namespace telv
{

/// Whether a hint that is found now would be kept: looking for one costs time.
bool IsHintWanted();

/// The tokens of a text, as views of it; none when it can't be read.
std::vector<LSToken> TokensOf(SubString text);

} // namespace telv
