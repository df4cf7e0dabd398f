// SPDX-License-Identifier: MIT
// Substitution of dollar macros, pass by pass, and the error when it would not end.
#pragma once

#include "tlMacroExpander/LSVariable.h"

namespace telv
{

/// Writes `s` with each known `$(NAME)` replaced, once; true if any was.
bool RunDollarMacroPass(const FileScopeVarFrame& frame, xostream& os, SubString s);

/// Runs passes over `s` until nothing changes; true if `s` changed.
/// @throws ExpansionLimitException  when that would never be; `s` is then unchanged.
bool SubstituteDollarMacros(const FileScopeVarFrame& frame, xstring& s);

} // namespace telv
