// SPDX-License-Identifier: MIT
// Texts that a directive or a call expands before it goes on: into a string, or into a value of a
// type.
#pragma once

#include "tlMacroExpander/src/MacroExpander.h"

namespace telv
{

/// ReadVariableValueByParsingExpression for a directive or macro name, to which errors in the
/// expanded text are moved.
void ReadVariableValueFor(VarFrame* frame, const LevelText& text, ELSVariable type, xstring& value,
                          const char* origin);

/// Expands a text in `frame` into a string, which is unchanged after an error. Its pieces are
/// recorded when they are asked for.
void ExpandIntoString(VarFrame& frame, const LevelText& text, ssize_t srcIndent, xstring& output,
                      OutputPieces* pieces = nullptr);

} // namespace telv
