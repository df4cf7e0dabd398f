// SPDX-License-Identifier: MIT
// What directives ask of the bridge to Python besides what it offers to applications in
// UsePython.h.
#pragma once

#include "tlMacroExpander/src/UsePython.h"

namespace telv
{

/// @throws LexScannerException  "Python is disabled" at `pos`: the current run forbids Python, or
///     the library was built without it.
void CheckPythonAllowed(const char* pos);

/// Loads the Python library if it is not loaded yet.
/// @throws LexScannerException  "Python 2.7 is not available: " and the reason, at `pos`.
void LoadPython(const char* pos);

/// RunPython for code that stands behind `linesBefore` lines of `path`: tracebacks count from
/// there.
void RunPythonBehind(const xstring& path, ssize_t linesBefore, const xstring& pythonCode,
                     const char* errorPos);

} // namespace telv
