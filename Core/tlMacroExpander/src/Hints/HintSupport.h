// SPDX-License-Identifier: MIT
// What the files that look for hints share. Hints err on the side of silence: one that is wrong is
// worse than none.
#pragma once

#include "tlMacroExpander/src/LSToken.h"
#include <vector>

namespace telv
{

class VarFrame;

/// Whether a hint that is found now would be kept: looking for one costs time.
bool IsHintWanted();

/// The tokens of a text, as views of it; none when it can't be read.
std::vector<LSToken> TokensOf(SubString text);

/// `text` begins with a bracket that is never closed, or with an argument in such a list: the other
/// half of the bracket when that stands in a comment of its line; else null. Linear.
const char* FindBracketInComment(SubString text, bool isArgument);

/// The visible or built-in name that the word is probably meant to be; empty for none.
SubString NearestTo(VarFrame& frame, SubString word);

} // namespace telv
