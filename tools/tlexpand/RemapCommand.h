// SPDX-License-Identifier: MIT
// The command `tlexpand remap`.
#pragma once

#include "options/RemapOptions.h"

namespace telv::tool
{

/// Passes messages on with their places rewritten: those of standard input, or those of the command
/// that the options name. The exit status: that of the command; else 0, or 2 when something of the
/// maps could not be used, which has been reported.
///
/// @throws FileError  What is written can't be.
int RunRemapCommand(const RemapOptions& options);

} // namespace telv::tool
