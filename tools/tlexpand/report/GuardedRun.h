// SPDX-License-Identifier: MIT
// Turns whatever the library throws while it works on a text into a diagnostic.
#pragma once

#include "output/PrintedText.h"
#include "report/Diagnostics.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <functional>

namespace telv::tool
{

/// Runs `work`, in which texts are expanded. False after an error, which has been reported with the
/// place that `run` knows. What the texts print is sent off in any case.
///
/// Python ends with the work, as at the end of a program: what fails then (a function of `atexit`,
/// a file left open that can't be written) is an error at the last place that ran Python code.
///
/// A process that Python code forked off ends when that code has ended: the run is the parent's to
/// finish. `run` calls for this and for `printed` during the work only.
///
/// @throws FileError, UsageError  From `work`, as they are.
bool RunGuarded(const std::function<void()>& work, ExpansionRun& run, const Sources& sources,
                const Diagnostics& diagnostics, PrintedText& printed);

/// Whether Python code has run in this process, which may have changed what later code meets: the
/// working directory, the environment, the locale.
bool PythonHasRun();

} // namespace telv::tool
