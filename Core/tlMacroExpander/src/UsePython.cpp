// The embedded interpreter: its start and end, the module through which its streams reach us, and
// running code in the one dictionary that all code shares.
//
// Python's environment variables are ignored and its modules come from beside the library, so that
// the same text gives the same result everywhere. No C++ exception passes through Python's frames.
#ifdef TELV_PYTHON_ENABLED

#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/UsePython"

#include "tlMacroExpander/src/Python/PythonApi.h"
// Python's header wants to be the first to include the system's.
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Python/PythonSignals.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include "tlMacroExpander/src/UsePython.h"
#include <algorithm>
#include <cstring>
#include <exception>

namespace telv
{

StringStream s_errorString(4096);
bool s_haveInitialisedPython = false;
PyObject* s_module = nullptr;
PyObject* s_moduleDict = nullptr;

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

constexpr const char* s_bootstrapScript = "import code\n"
                                          "import sys\n"
                                          "import telv\n"
                                          "class myStdOut:\n"
                                          "  def write(self,string):\n"
                                          "    telv.WriteToStdOut(string);\n"
                                          "\n"
                                          "class myStdErr:\n"
                                          "  def write(self,string):\n"
                                          "    telv.WriteToStdErr(string);\n"
                                          "\n"
                                          "sys.stdout = myStdOut()\n"
                                          "sys.stderr = myStdErr()\n"
                                          "\n"
                                          "TelvCodeConsole = code.InteractiveConsole()\n";

/// Python's own modules flush the streams, `multiprocessing` before it forks. Every write has been
/// passed on already.
constexpr const char* s_flushScript = "myStdOut.flush = myStdErr.flush = lambda self: None\n";

/// Tells the current run when Python code begins and when everything of it has ended, the releasing
/// of its objects included: so this is the first object where code is run.
class PythonCodeScope
{
public:
    PythonCodeScope() : m_run(ExpansionRun::Current()), m_exceptions(std::uncaught_exceptions())
    {
        if (m_run != nullptr && m_run->m_pythonBegins)
            m_run->m_pythonBegins();
    }
    ~PythonCodeScope()
    {
        if (m_run != nullptr && m_run->m_pythonEnded)
            m_run->m_pythonEnded(std::uncaught_exceptions() == m_exceptions);
    }
    PythonCodeScope(const PythonCodeScope&) = delete;
    PythonCodeScope& operator=(const PythonCodeScope&) = delete;

private:
    ExpansionRun* m_run;
    int m_exceptions;
};

/// What starting Python and simple code need.
constexpr ssize_t s_leastStack = ssize_t(64) * 1024;
/// More than one level of Python's recursion takes.
constexpr ssize_t s_stackPerLevel = 1024;

/// Lowers Python's recursion limit, until the end of the scope, to what fits on the stack that the
/// expansion has left: Python itself counts levels and knows nothing of bytes.
class RecursionLimitScope
{
public:
    /// @throws ExpansionLimitException  There is hardly any stack left.
    [[gnu::noinline]] explicit RecursionLimitScope(const char* pos)
    {
        const char* const frame = static_cast<const char*>(__builtin_frame_address(0));
        const ssize_t stack = frame - LowestStackAddress(frame);
        if (stack < s_leastStack)
            ThrowNestedTooDeeply(pos);
        InitPython();
        m_previous = Python().Py_GetRecursionLimit();
        m_limit = static_cast<int>(std::min<ssize_t>(m_previous, stack / s_stackPerLevel));
        Python().Py_SetRecursionLimit(m_limit);
    }
    /// A limit that the code has set stays.
    ~RecursionLimitScope()
    {
        if (Python().Py_GetRecursionLimit() == m_limit)
            Python().Py_SetRecursionLimit(m_previous);
    }
    RecursionLimitScope(const RecursionLimitScope&) = delete;
    RecursionLimitScope& operator=(const RecursionLimitScope&) = delete;

private:
    int m_previous;
    int m_limit;
};

/// Starts the interpreter without its module `site`: were that one broken, Python would end the
/// process. It is imported afterwards, as the start would have done, and may fail.
void StartInterpreter()
{
    *Python().Py_IgnoreEnvironmentFlag = 1;
    *Python().Py_NoSiteFlag = 1;
    Python().Py_SetPythonHome(PythonHome());
    Python().Py_InitializeEx(/*initsigs=*/0);
    const PyObjectRef site(Python().PyImport_ImportModule("site"));
    Python().PyErr_Clear();
}

/// Runs code in the dictionary of __main__; false, with nothing printed, when it fails.
bool RunSimpleString(const char* code)
{
    PyObject* const mainModule = Python().PyImport_AddModule("__main__");
    if (mainModule == nullptr)
        return false;
    PyObject* const dict = Python().PyModule_GetDict(mainModule);
    const PyObjectRef result(Python().PyRun_StringFlags(code, Py_file_input, dict, dict, nullptr));
    Python().PyErr_Clear();
    return static_cast<bool>(result);
}

/// Makes the module whose dictionary all code shares; it needs the built-in names.
void MakeSharedModule()
{
    s_module = Python().PyModule_New("test");
    TELV_ASSERT(s_module);
    // The assertion's text is the name of the variable.
    // NOLINTNEXTLINE(readability-identifier-naming)
    PyObject* const builtin_module = Python().PyImport_AddModule("__builtin__");
    TELV_ASSERT(builtin_module);
    Py_INCREF(builtin_module);
    Python().PyModule_AddObject(s_module, "__builtins__", builtin_module);
    s_moduleDict = Python().PyModule_GetDict(s_module);
}

PyObject* NewNone()
{
    PyObject* const none = Python()._Py_NoneStruct;
    Py_INCREF(none);
    return none;
}

/// Writes the one string argument to `os`. An exception of ours becomes one of Python's.
PyObject* WriteArgument(PyObject* args, xostream& os, bool flush)
{
    const char* text = nullptr;
    if (Python().PyArg_ParseTuple(args, "s", &text) == 0)
        return nullptr;
    try
    {
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

/// True when `code` can be given to Python as a C string; else its usual error is pending.
bool CheckNoNul(SubString code)
{
    if (code.empty() || std::memchr(code.begin(), 0, static_cast<size_t>(code.size())) == nullptr)
        return true;
    Python().PyErr_SetString(*Python().PyExc_TypeError,
                             "compile() expected string without null bytes");
    return false;
}

[[noreturn]] void ThrowPythonError(const char* prefix, const xstring& errorString,
                                   const char* errorPos)
{
    throw LexScannerException(xstring(prefix) + errorString, errorPos);
}

[[noreturn]] void ThrowPendingError(const char* prefix, const char* errorPos)
{
    xstring errorString;
    GetPythonError(errorString);
    ThrowPythonError(prefix, errorString, errorPos);
}

/// The code behind leading blanks, which Python would take for an indentation.
xstring WithoutLeadingBlanks(SubString code)
{
    while (!code.empty() && (code[0] == ' ' || code[0] == '\t'))
        ++code.m_p1;
    return xstring(code);
}

} // namespace

PyObjectRef::~PyObjectRef()
{
    Py_XDECREF(m_pyObj);
}

void CheckPythonAllowed(const char* pos)
{
    const ExpansionRun* const run = ExpansionRun::Current();
    if (run != nullptr && !run->m_pythonAllowed)
        throw LexScannerException("Python is disabled", pos);
}

void InitPython()
{
    if (s_haveInitialisedPython)
        return;
    LoadPython(nullptr);
    const PythonSignals signals;
    s_haveInitialisedPython = true;
    try
    {
        StartInterpreter();
        InitTelvModule();
        const bool bootStrapRanSuccessfully =
            RunSimpleString(s_bootstrapScript) && RunSimpleString(s_flushScript);
        TELV_ASSERT(bootStrapRanSuccessfully);
        MakeSharedModule();
    }
    catch (...)
    {
        UninitPython();
        throw;
    }
}

void UninitPython()
{
    const PythonSignals signals;
    {
        const PyObjectRef module(s_module);
        s_module = nullptr;
        s_moduleDict = nullptr;
    }
    if (!s_haveInitialisedPython)
        return;
    s_haveInitialisedPython = false;
    Python().Py_Finalize();
}

void InitTelvModule()
{
    TELV_ASSERT(s_haveInitialisedPython);
    Python().Py_InitModule4_64("telv", TelvMethods, nullptr, nullptr, s_moduleApiVersion);
}

PyObject* WriteToStdOut(PyObject* /*self*/, PyObject* args)
{
    return WriteArgument(args, xcout, /*flush=*/true);
}

PyObject* WriteToStdErr(PyObject* /*self*/, PyObject* args)
{
    return WriteArgument(args, s_errorString, /*flush=*/false);
}

PyObject* ExecutePythonExpression(const xstring& expression, xstring& errorString)
{
    InitPython();
    const PythonSignals signals;
    const xstring code = WithoutLeadingBlanks(expression);
    PyObject* const result = CheckNoNul(code)
                                 ? Python().PyRun_StringFlags(code.c_str(), Py_eval_input,
                                                              s_moduleDict, s_moduleDict, nullptr)
                                 : nullptr;
    if (result == nullptr)
        GetPythonError(errorString);
    return result;
}

void RunPython(const xstring& path, const xstring& pythonCode, const char* errorPos)
{
    LoadPython(errorPos);
    const PythonCodeScope scope;
    const RecursionLimitScope recursionLimit(errorPos);
    const PythonSignals signals;
    const PyObjectRef code(CheckNoNul(pythonCode)
                               ? Python().Py_CompileStringFlags(pythonCode.c_str(), path.c_str(),
                                                                Py_file_input, nullptr)
                               : nullptr);
    if (!code)
        ThrowPendingError("Python compilation error: ", errorPos);
    const PyObjectRef result(Python().PyEval_EvalCode(reinterpret_cast<PyCodeObject*>(code.m_pyObj),
                                                      s_moduleDict, s_moduleDict));
    if (!result)
        ThrowPendingError("Python error: ", errorPos);
}

void EvalPythonExpression(const xstring& pythonCode, xstring& result, const char* errorPos)
{
    LoadPython(errorPos);
    const PythonCodeScope scope;
    const RecursionLimitScope recursionLimit(errorPos);
    xstring errorString;
    const PyObjectRef value(ExecutePythonExpression(pythonCode, errorString));
    if (!value)
        ThrowPythonError("Python error: ", errorString, errorPos);
    StringStream os(4096);
    WritePythonObject(os, value.m_pyObj, errorPos);
    os.GetString(result, /*all=*/true);
}

} // namespace telv

#endif
