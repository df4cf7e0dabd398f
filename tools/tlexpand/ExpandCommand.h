// SPDX-License-Identifier: MIT
// The command `tlexpand [OPTIONS] [FILE]`.
#pragma once

#include "input/ImportTexts.h"
#include "options/Options.h"
#include <functional>
#include <string>
#include <vector>

namespace telv::tool
{

/// Expands as the options say; the exit status 0, or 1 after an error in the source text, which has
/// been reported. The process is to end then.
///
/// @throws UsageError  Outputs that are one file, or a file that is read.
/// @throws FileError
int RunExpandCommand(const ExpandOptions& options);

/// Is told the paths of what a text has read, before its outputs take their places; throws a
/// UsageError where they may not.
using ImportCheck = std::function<void(const std::vector<std::string>& paths)>;

/// The same as one of several runs, with the imports' texts of earlier ones.
int RunExpandCommand(const ExpandOptions& options, ImportTexts& texts,
                     const ImportCheck& checkImports);

} // namespace telv::tool
