// SPDX-License-Identifier: MIT
// Python runs on one thread at a time: whoever calls the bridge holds this lock, and Python's own
// lock with it. Threads that Python code has started run only while Python code runs.
#pragma once

#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Python/PythonApi.h"

namespace telv
{

class ExpansionRun;

/// Waits until no other thread uses Python, and makes this one known to the interpreter if that
/// runs. Scopes nest on a thread. Python code itself must not take it: the thread that waits for
/// the code has it.
class PythonLock
{
public:
    PythonLock();
    ~PythonLock();
    PythonLock(const PythonLock&) = delete;
    PythonLock& operator=(const PythonLock&) = delete;

    /// To be called when the interpreter was started, with the lock held: this is its first thread.
    static void NoteStart();
    /// To be called before the interpreter ends: nothing is left to be put back. False when threads
    /// that Python code has started are still there: they would run on in what has ended.
    static bool PrepareEnd();

    /// The run of the thread that has the lock: Python's other threads print for it. May be null.
    static ExpansionRun* Run();

private:
    ExpansionRun* m_previousRun;
};

} // namespace telv

#endif
