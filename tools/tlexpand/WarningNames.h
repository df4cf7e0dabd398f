// SPDX-License-Identifier: MIT
// What the kinds of warnings are called.
#pragma once

#include "tlMacroExpander/ExpansionWarning.h"
#include <string>

namespace telv::tool
{

/// The kind of this name; WARN_NONE when there is none.
EWarning FindWarning(const std::string& name);

/// The name of a single kind.
const char* NameOfWarning(EWarning kind);

/// All names, separated by commas.
std::string NamesOfWarnings();

} // namespace telv::tool
