// SPDX-License-Identifier: MIT
// Dependency files that make and ninja read.
#pragma once

#include <string>
#include <vector>

namespace telv::tool
{

/// One rule "OUTPUT: INPUT…" and, for each import whose name can be a target of make, a rule
/// without inputs, so that removing an import that is no longer needed does not stop make.
///
/// @param main     The main file; empty when it is standard input, which is no file.
/// @param imports  The other files; a name that comes again is left out.
/// @throws FileError  A name can't be written so that both programs read it.
std::string MakeDepfile(const std::string& output, const std::string& main,
                        const std::vector<std::string>& imports);

} // namespace telv::tool
