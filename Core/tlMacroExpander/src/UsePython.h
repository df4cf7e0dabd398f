// SPDX-License-Identifier: MIT
// The bridge to the embedded Python 2.7 interpreter.
//
// The library is loaded when Python is first used and the interpreter started then; all Python code
// of the process shares one dictionary. These functions may be called from any thread: they wait
// for one another, so that Python code of several threads runs one at a time, on a stack of its
// own. Python code is trusted with everything that the process may do.
#pragma once

#include "tlMacroExpander/Export.h"
#include "tlUtils/StringExt.h"
#include <vector>

// The name that Python's own header gives the structure.
struct _object; // NOLINT(bugprone-reserved-identifier)

namespace telv
{

using PyObject = ::_object;

/// What Python has written to its standard error.
extern TLEXPANDER_API StringStream s_errorString;
extern TLEXPANDER_API bool s_haveInitialisedPython;
/// The module in whose dictionary all code runs; owned. Null while Python is not started.
extern TLEXPANDER_API PyObject* s_module;
/// Its dictionary; borrowed.
extern TLEXPANDER_API PyObject* s_moduleDict;

/// An owning reference to a Python object; tests true when there is one.
class TLEXPANDER_API PyObjectRef : public safe_bool<PyObjectRef>
{
public:
    PyObject* m_pyObj;

    PyObjectRef() : m_pyObj(nullptr) {}
    /// Takes over a new reference; may be null.
    explicit PyObjectRef(PyObject* pyObj) : m_pyObj(pyObj) {}
    PyObjectRef(PyObjectRef&& other) noexcept : m_pyObj(other.m_pyObj) { other.m_pyObj = nullptr; }
    PyObjectRef(const PyObjectRef&) = delete;
    PyObjectRef& operator=(const PyObjectRef&) = delete;
    ~PyObjectRef();

    bool boolean_test() const { return m_pyObj != nullptr; }
};

/// @throws LexScannerException  "Python is disabled" at `pos`: the current run forbids Python, or
///     the library was built without it.
void CheckPythonAllowed(const char* pos);

/// Loads the Python library if it is not loaded yet.
/// @throws LexScannerException  "Python 2.7 is not available: " and the reason, at `pos`.
void LoadPython(const char* pos);

/// Starts the interpreter; does nothing when it runs already.
TLEXPANDER_API void InitPython();
/// Ends the interpreter as the end of a program does: waits for its threads, calls the functions of
/// `atexit`, closes files. Errors of this are dropped. The next `InitPython` starts a fresh one
/// (with the modules that are loaded, when daemon threads of Python code still use them).
TLEXPANDER_API void UninitPython();
/// The same; does nothing when the interpreter does not run.
/// @throws LexScannerException  "Python error: " and the traceback, at `errorPos`: a function of
///     `atexit` failed, or a file that was left open can't be written.
TLEXPANDER_API void FinishPython(const char* errorPos);
/// Registers the module `telv`, through which Python's streams reach the library.
TLEXPANDER_API void InitTelvModule();

/// `telv.WriteToStdOut(text)`: writes to `xcout` and flushes. New reference, or null with a Python
/// error set.
TLEXPANDER_API PyObject* WriteToStdOut(PyObject* self, PyObject* args);
/// `telv.WriteToStdErr(text)`: appends to `s_errorString`.
TLEXPANDER_API PyObject* WriteToStdErr(PyObject* self, PyObject* args);

/// Replaces `errorString` with the pending exception as Python prints it.
TLEXPANDER_API void GetPythonError(xstring& errorString);

/// Evaluates an expression: a new reference, or null with `errorString` set and no error pending.
TLEXPANDER_API PyObject* ExecutePythonExpression(const xstring& expression, xstring& errorString);

/// Runs statements. `path` is what tracebacks call them.
/// @throws LexScannerException  "Python compilation error: " or "Python error: " and the traceback,
///     at `errorPos`.
TLEXPANDER_API void RunPython(const xstring& path, const xstring& pythonCode, const char* errorPos);

/// Where the lines of code stand in a file.
struct CodeLines
{
    ssize_t m_before = 0; ///< Lines that stand before it.
    /// The line of each line of the code, counted from 1; empty when they follow on one another.
    std::vector<int> m_lines;
    SubString m_file; ///< The text of the file.
};

/// The same for code that comes from `lines` of `path`, which tracebacks name.
void RunPythonOfFile(const xstring& path, const CodeLines& lines, const xstring& pythonCode,
                     const char* errorPos);

/// Evaluates an expression and stores its value as text.
/// @throws LexScannerException  "Python error: " and the traceback, or "Can't convert python
///     result", at `errorPos`; `result` is then unchanged.
TLEXPANDER_API void EvalPythonExpression(const xstring& pythonCode, xstring& result,
                                         const char* errorPos);

/// Writes an int, a float, a str or a list of such as text.
/// @throws LexScannerException  "Can't convert python result" at `errorPos` for anything else.
TLEXPANDER_API void WritePythonObject(xostream& os, PyObject* p, const char* errorPos);

} // namespace telv
