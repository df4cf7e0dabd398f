// SPDX-License-Identifier: MIT
// The lines of files that the lines of Python code come from.
//
// Code is expanded before it runs, so a line of it can come from any line of the file. Python's own
// tables of lines only ever count up. So compiled code carries the lines as one more constant,
// which nothing in it refers to; they live as long as the code, and are looked at for tracebacks
// alone. Empty in a build without Python.
#pragma once

#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/UsePythonInside.h"

namespace telv
{

/// Makes compiled code, and the functions in it, carry the lines. Leaves no error pending: what
/// there is no memory for is not carried.
void AttachLines(PyObject* code, const CodeLines& lines);

/// Gives the entries of a traceback the lines that their code carries. Doing so twice does no harm.
void UseAttachedLines(PyObject* traceback);

/// Gives the pending error of compiling code the line of the file. To be called without
/// `lines.m_before` added to its lines.
void MoveCompileError(const CodeLines& lines);

} // namespace telv

#endif
