// SPDX-License-Identifier: MIT
// The module `telv`, through which Python's streams reach the library.
#ifdef TELV_PYTHON_ENABLED

#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/UsePython"

#include "tlMacroExpander/src/Python/PythonApi.h"
// Python's header wants to be the first to include the system's.
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Python/PythonLock.h"
#include "tlMacroExpander/src/Python/PythonStreams.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/UsePython.h"
#include <cstring>

namespace telv
{

StringStream s_errorString(4096);

/// The functions of the module `telv`; Python keeps the address.
extern TLEXPANDER_API PyMethodDef TelvMethods[3];
PyMethodDef TelvMethods[] = {
    {"WriteToStdOut", WriteToStdOut, METH_VARARGS, "Write to stdout"},
    {"WriteToStdErr", WriteToStdErr, METH_VARARGS, "Write to stderr"},
    {nullptr, nullptr, 0, nullptr},
};

namespace
{

constexpr int s_moduleApiVersion = 1013;

PyObject* NewNone()
{
    PyObject* const none = Python()._Py_NoneStruct;
    Py_INCREF(none);
    return none;
}

/// Counts what code prints. The first text that is too much is kept back, and so is all after it;
/// the error is thrown when the code has returned, which may catch any error of its own.
bool MayPrint(ExpansionRun* run, const char* text)
{
    try
    {
        ExpansionLevel::CountPrinted(run, static_cast<ssize_t>(std::strlen(text)), nullptr);
        return true;
    }
    catch (const ExpansionLimitException&)
    {
        RunState::Of(*run).m_printsTooMuch = true;
        return false;
    }
}

/// Writes the one string argument to `os`. An exception of ours becomes one of Python's. What `run`
/// prints, unless it is null, is counted.
PyObject* WriteArgument(PyObject* args, xostream& os, ExpansionRun* run, bool flush)
{
    const char* text = nullptr;
    if (Python().PyArg_ParseTuple(args, "s", &text) == 0)
        return nullptr;
    try
    {
        if (run != nullptr && !MayPrint(run, text))
            return Python().PyErr_NoMemory();
        os << text;
        if (flush)
            os.flush();
    }
    catch (...)
    {
        return Python().PyErr_NoMemory();
    }
    return NewNone();
}

} // namespace

void CheckPrinted(const char* errorPos)
{
    if (const RunState* const state = RunState::Current();
        state != nullptr && state->m_printsTooMuch)
        ExpansionLevel::ThrowOutputTooLarge(errorPos);
}

void InitTelvModule()
{
    TELV_ASSERT(s_haveInitialisedPython);
    Python().Py_InitModule4_64("telv", TelvMethods, nullptr, nullptr, s_moduleApiVersion);
}

PyObject* WriteToStdOut(PyObject* /*self*/, PyObject* args)
{
    ExpansionRun* const run = PythonLock::Run();
    return WriteArgument(args, PrintStreamOf(run), run, /*flush=*/true);
}

PyObject* WriteToStdErr(PyObject* /*self*/, PyObject* args)
{
    return WriteArgument(args, s_errorString, nullptr, /*flush=*/false);
}

} // namespace telv

#endif
