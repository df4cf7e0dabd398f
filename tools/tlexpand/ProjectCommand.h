// SPDX-License-Identifier: MIT
// The command `tlexpand project [OPTIONS] FILE`.
#pragma once

#include "options/Options.h"

namespace telv::tool
{

/// Reads a project and prints it as JSON; the exit status 0, or 1 after errors in the files, which
/// have been reported. Nothing is printed then.
///
/// @throws FileError
int RunProjectCommand(const ProjectOptions& options);

} // namespace telv::tool
