// SPDX-License-Identifier: MIT
// Python's own lock stays taken from one use to the next, so a change of thread is a change of the
// thread state. The thread that started the interpreter has its first one; any other gets one for
// as long as it holds the lock.
#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Python/PythonLock.h"
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Python/PythonStack.h"
#include <mutex>

namespace telv
{

namespace
{

std::mutex s_mutex;
/// Scopes of this thread. (A recursive mutex knows its thread by a number that a fork changes.)
thread_local int t_depth = 0;

// What the mutex guards.
unsigned long s_starts = 0;            ///< Of the interpreter.
PyThreadState* s_firstState = nullptr; ///< Null while no interpreter runs.
PyThreadState* s_lentState = nullptr;  ///< Made for the thread that has the lock, or null.
ExpansionRun* s_run = nullptr;

/// The start that this thread made. (Its number could be given to another thread after its end.)
thread_local unsigned long t_start = 0;

void Attach()
{
    if (s_firstState == nullptr || t_start == s_starts)
        return;
    s_lentState = Python().PyThreadState_New(s_firstState->interp);
    Python().PyThreadState_Swap(s_lentState);
}

void Detach()
{
    if (s_lentState == nullptr)
        return;
    // Releases what code of this thread has kept, which may run code.
    CallOnPythonStack([] { Python().PyThreadState_Clear(s_lentState); });
    Python().PyThreadState_Swap(s_firstState);
    Python().PyThreadState_Delete(s_lentState);
    s_lentState = nullptr;
}

} // namespace

PythonLock::PythonLock()
{
    const bool isOutermost = t_depth == 0;
    if (isOutermost)
        s_mutex.lock();
    ++t_depth;
    m_previousRun = s_run;
    if (ExpansionRun* const run = ExpansionRun::Current())
        s_run = run;
    if (isOutermost)
        Attach();
}

PythonLock::~PythonLock()
{
    const bool isOutermost = t_depth == 1;
    if (isOutermost)
        Detach();
    s_run = m_previousRun;
    --t_depth;
    if (isOutermost)
        s_mutex.unlock();
}

void PythonLock::NoteStart()
{
    t_start = ++s_starts;
    s_firstState = Python().PyThreadState_Get();
}

bool PythonLock::PrepareEnd()
{
    if (s_firstState == nullptr)
        return true;
    PyThreadState* state = Python().PyInterpreterState_ThreadHead(s_firstState->interp);
    for (; state != nullptr; state = Python().PyThreadState_Next(state))
        if (state != s_firstState && state != s_lentState)
            return false;
    s_firstState = nullptr;
    s_lentState = nullptr;
    return true;
}

ExpansionRun* PythonLock::Run()
{
    return s_run;
}

} // namespace telv

#endif
