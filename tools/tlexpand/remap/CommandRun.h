// SPDX-License-Identifier: MIT
// Runs a program and reads what it writes, as it writes it.
#pragma once

#include "tlUtils/StringExt.h"
#include <functional>

namespace telv::tool
{

/// Runs `arguments` (ending with a null), found as the shell finds programs, with this process's
/// standard input, until it has ended and both its streams are closed.
///
/// @param out, err  Take what comes from its standard output and standard error.
/// @return Its exit status; 128 and the number of the signal that ended it; 127 when there is no
/// such
///     program and 126 when it can't be started, which has been reported.
int RunAndRead(char** arguments, const std::function<void(SubString)>& out,
               const std::function<void(SubString)>& err);

/// Reads a descriptor to its end.
///
/// @throws FileError
void ReadStream(int fd, const std::function<void(SubString)>& take);

} // namespace telv::tool
