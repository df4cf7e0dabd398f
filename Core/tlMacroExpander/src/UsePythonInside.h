// SPDX-License-Identifier: MIT
// What directives ask of the bridge to Python besides what it offers to applications in
// UsePython.h.
#pragma once

#include "tlMacroExpander/src/UsePython.h"
#include <vector>

namespace telv
{

/// @throws LexScannerException  "Python is disabled" at `pos`: the current run forbids Python, or
///     the library was built without it.
void CheckPythonAllowed(const char* pos);

/// Loads the Python library if it is not loaded yet.
/// @throws LexScannerException  "Python 2.7 is not available: " and the reason, at `pos`.
void LoadPython(const char* pos);

/// Where the lines of code stand in a file.
struct CodeLines
{
    ssize_t m_before = 0; ///< Lines that stand before it.
    /// The line of each line of the code, counted from 1; empty when they follow on one another.
    std::vector<int> m_lines;
    SubString m_file; ///< The text of the file.
};

/// RunPython for code that comes from `lines` of `path`, which tracebacks name.
void RunPythonOfFile(const xstring& path, const CodeLines& lines, const xstring& pythonCode,
                     const char* errorPos);

} // namespace telv
