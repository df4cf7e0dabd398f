// SPDX-License-Identifier: MIT
// The command `tlexpand explain`, as far as it begins with a map; with a text it is an expansion
// whose output is the page.
#pragma once

#include "options/Options.h"

namespace telv::tool
{

/// Writes the page for the map that the options name; the exit status.
///
/// @throws FileError, MapError
int RunExplainMapCommand(const ExpandOptions& options);

} // namespace telv::tool
