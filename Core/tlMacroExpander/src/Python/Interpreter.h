// SPDX-License-Identifier: MIT
// The embedded interpreter: its start, its end, and the dictionary that all code shares. All of
// this is called with the lock held, on Python's own stack.
#pragma once

#ifdef TELV_PYTHON_ENABLED

#include "tlUtils/StringExt.h"

namespace telv
{

class ExpansionRun;

/// Starts the interpreter. One that its threads have kept is used again.
void StartPython();

/// Does what is left to do at the end of a program; false with the text of the first error.
bool FinishCode(xstring& errorString);

/// Releases the shared module and ends the interpreter. When threads of Python code are left, the
/// interpreter stays for them: they hold what it would free.
void EndPython();

/// Puts the directories of the run, which may be null, before Python's own, in the place of those
/// of the run before.
void ApplyModulePath(const ExpansionRun* run);

/// Lowers Python's recursion limit, until the end of the scope, to what fits on its stack.
class RecursionLimitScope
{
public:
    RecursionLimitScope();
    /// A limit that the code has set stays.
    ~RecursionLimitScope();
    RecursionLimitScope(const RecursionLimitScope&) = delete;
    RecursionLimitScope& operator=(const RecursionLimitScope&) = delete;

private:
    int m_previous;
    int m_limit;
};

} // namespace telv

#endif
