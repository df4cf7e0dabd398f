// SPDX-License-Identifier: MIT
// Evaluating text that a directive expanded from between its brackets.
#pragma once

#include "tlMacroExpander/src/ExpressionParser.h"

namespace telv
{

/// Evaluates `text`, all of it, as a bool. Errors read as if the opening bracket stood before it.
bool ParseBoolInBracket(SubString text);

/// The same as a string.
///
/// @param allowDataLoss  Values of other types are converted.
/// @param whenRead       What stands before the token in the error about what follows the
///                       expression: " when read ", or without its first blank.
xstring ParseStringInBracket(SubString text, bool allowDataLoss, const char* whenRead);

} // namespace telv
