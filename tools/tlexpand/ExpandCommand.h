// The command `tlexpand [OPTIONS] [FILE]`.
#pragma once

#include "options/Options.h"

namespace telv::tool
{

/// Expands as the options say; the exit status 0, or 1 after an error in the source text, which has
/// been reported.
///
/// @throws UsageError  Outputs that are one file, or a file that is read.
/// @throws FileError
int RunExpandCommand(const ExpandOptions& options);

} // namespace telv::tool
