// SPDX-License-Identifier: MIT
// The command `tlexpand where`.
#pragma once

#include "options/WhereOptions.h"

namespace telv::tool
{

/// Prints the source of a place of an output, or the ranges of the output that come from a line of
/// a source; the exit status 0, or 1 when there is nothing to print, which has been reported.
///
/// @throws FileError, MapError
int RunWhereCommand(const WhereOptions& options);

} // namespace telv::tool
