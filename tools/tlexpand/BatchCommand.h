// SPDX-License-Identifier: MIT
// The command `tlexpand [OPTIONS] --batch LIST` or `--out-dir DIR FILE...`: many files in one run.
#pragma once

#include "options/Options.h"

namespace telv::tool
{

/// Whether the options ask for many files.
bool IsBatch(const ExpandOptions& options);

/// Expands each file as a run of its own would, in processes that go on from file to file, and says
/// at the end which ones failed. The exit status: 0, or the largest of those that the files had.
///
/// @throws UsageError, FileError  Before anything is expanded.
int RunBatchCommand(const ExpandOptions& options);

} // namespace telv::tool
