// SPDX-License-Identifier: MIT
// Python's environment variables are ignored and its modules come from beside the library, so that
// the same text gives the same result everywhere. No C++ exception passes through Python's frames.
#ifdef TELV_PYTHON_ENABLED

#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/UsePython"

#include "tlMacroExpander/src/Python/PythonApi.h"
// Python's header wants to be the first to include the system's.
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/Python/Interpreter.h"
#include "tlMacroExpander/src/Python/PythonLock.h"
#include "tlMacroExpander/src/Python/PythonSignals.h"
#include "tlMacroExpander/src/Python/PythonStack.h"
#include "tlMacroExpander/src/Python/RepeatedExpression.h"
#include "tlMacroExpander/src/Python/SignalModule.h"
#include "tlMacroExpander/src/UsePython.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace telv
{

bool s_haveInitialisedPython = false;
PyObject* s_module = nullptr;
PyObject* s_moduleDict = nullptr;

namespace
{

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

/// What an earlier interpreter of the process would leave to the next one, as Python starts with
/// it.
constexpr int s_recursionLimit = 1000;
constexpr const char* s_resetScript = R"(__import__('sys').setcheckinterval(100)
__import__('gc').enable()
__import__('gc').set_debug(0)
__import__('gc').set_threshold(700, 10, 10)
)";

/// What is left to do at the end of a program. Files that Python closes on its own at its end would
/// not tell about errors. Those of C, which others write to, are sent off after this.
constexpr const char* s_finishScript = R"(import gc, sys
errors = []
def attempt(call, kinds):
  try: call()
  except kinds: errors.append(sys.exc_info())
  except Exception: pass
def others(threading):
  return [t for t in threading.enumerate() if not t.daemon and
          t is not threading.currentThread() and
          not isinstance(t, threading._MainThread)]
threading = sys.modules.get('threading')
while threading and others(threading):
  for t in others(threading): t.join()
end = sys.__dict__.pop('exitfunc', None)
if end: attempt(end, BaseException)
if '_io' in sys.modules:
  base = sys.modules['_io']._IOBase
  files = [f for f in gc.get_objects() if base in getattr(type(f), '__mro__', ())]
  for f in files:
    if type(f).__module__ not in ('_io', 'io'): attempt(f.close, EnvironmentError)
  for f in files: attempt(f.flush, EnvironmentError)
  del files[:]
if errors:
  kind, value, trace = errors[0]
  raise kind, value, trace.tb_next
)";

/// The directories of the last run that stand in Python's module path.
std::vector<std::string> s_modulePath;
/// The interpreter was ended while threads of Python code were left.
bool s_interpreterStays = false;

/// Stacks of the threads that Python code starts; only what is used of one takes memory.
constexpr size_t s_threadStack = size_t(24) << 20;

/// The interpreter's program, of which modules tell where they are.
std::string s_programName;

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

/// The start has asked for the locale that the environment names, and a standard stream that is a
/// terminal has got its encoding.
void ResetTerminalEncodings()
{
    struct Stream
    {
        char m_name[7];
        int m_descriptor;
    };
    for (Stream stream :
         {Stream{"stdin", STDIN_FILENO}, {"stdout", STDOUT_FILENO}, {"stderr", STDERR_FILENO}})
        if (PyObject* const file = Python().PySys_GetObject(stream.m_name);
            file != nullptr && isatty(stream.m_descriptor) == 1)
            Python().PyFile_SetEncoding(file, "UTF-8");
}

/// Starts the interpreter without its module `site`: were that one broken, Python would end the
/// process. It is imported afterwards, as the start would have done, and may fail.
///
/// Nothing is taken from the environment or from the user's home, and nothing is left behind:
/// neither variables, nor a locale, nor the search path of programs, nor a site of the user decide
/// anything, and no compiled module is written beside its source.
void StartInterpreter()
{
    *Python().Py_IgnoreEnvironmentFlag = 1;
    *Python().Py_NoSiteFlag = 1;
    *Python().Py_NoUserSiteDirectory = 1;
    *Python().Py_DontWriteBytecodeFlag = 1;
    *Python().Py_FileSystemDefaultEncoding = "UTF-8";
    s_programName = std::string(PythonHome()) + "/bin/python2.7";
    Python().Py_SetProgramName(s_programName.data());
    Python().Py_SetPythonHome(PythonHome());
    Python().Py_SetRecursionLimit(s_recursionLimit);
    Python().Py_InitializeEx(/*initsigs=*/0);
    ResetTerminalEncodings();
    Python().PyThread_set_stacksize(s_threadStack);
    PythonLock::NoteStart();
    const PyObjectRef site(Python().PyImport_ImportModule("site"));
    Python().PyErr_Clear();
    RunSimpleString(s_resetScript);
}

void AddBuiltIns(PyObject* module)
{
    // The assertion's text is the name of the variable.
    // NOLINTNEXTLINE(readability-identifier-naming)
    PyObject* const builtin_module = Python().PyImport_AddModule("__builtin__");
    TELV_ASSERT(builtin_module);
    Py_INCREF(builtin_module);
    Python().PyModule_AddObject(module, "__builtins__", builtin_module);
}

/// Makes the module whose dictionary all code shares; it needs the built-in names.
void MakeSharedModule()
{
    s_module = Python().PyModule_New("test");
    TELV_ASSERT(s_module);
    AddBuiltIns(s_module);
    s_moduleDict = Python().PyModule_GetDict(s_module);
}

/// Where `directory` stands in Python's module path; -1 when it does not.
Py_ssize_t IndexInPath(PyObject* path, const std::string& directory)
{
    for (Py_ssize_t i = 0; i < Python().PyList_Size(path); ++i)
    {
        PyObject* const item = Python().PyList_GetItem(path, i);
        char* bytes = nullptr;
        Py_ssize_t size = 0;
        if (PyString_Check(item) && Python().PyString_AsStringAndSize(item, &bytes, &size) == 0 &&
            directory == std::string_view(bytes, static_cast<size_t>(size)))
            return i;
    }
    return -1;
}

} // namespace

void StartPython()
{
    const PythonSignals signals;
    s_haveInitialisedPython = true;
    try
    {
        if (!s_interpreterStays)
            StartInterpreter();
        s_interpreterStays = false;
        InitTelvModule();
        const bool bootStrapRanSuccessfully =
            RunSimpleString(s_bootstrapScript) && RunSimpleString(s_flushScript);
        TELV_ASSERT(bootStrapRanSuccessfully);
        WatchSignalModule();
        MakeSharedModule();
    }
    catch (...)
    {
        EndPython();
        throw;
    }
}

void EndPython()
{
    ForgetExpressions();
    {
        const PyObjectRef module(s_module);
        s_module = nullptr;
        s_moduleDict = nullptr;
    }
    if (!s_haveInitialisedPython)
        return;
    s_haveInitialisedPython = false;
    s_modulePath.clear();
    s_interpreterStays = !PythonLock::PrepareEnd();
    if (!s_interpreterStays)
        Python().Py_Finalize();
    std::fflush(nullptr); // what a file object of Python wrote and a program's end would send off
}

void ApplyModulePath(const ExpansionRun* run)
{
    static const std::vector<std::string> s_none;
    const std::vector<std::string>& wanted = run == nullptr ? s_none : run->m_pythonPath;
    if (wanted == s_modulePath)
        return;
    PyObject* const path = Python().PySys_GetObject(const_cast<char*>("path"));
    if (path == nullptr || !PyList_Check(path))
        return;
    for (const std::string& directory : s_modulePath)
        if (const Py_ssize_t i = IndexInPath(path, directory); i >= 0)
            Python().PyList_SetSlice(path, i, i + 1, nullptr);
    Py_ssize_t next = 0;
    for (const std::string& directory : wanted)
    {
        const PyObjectRef item(Python().PyString_FromStringAndSize(
            directory.data(), static_cast<Py_ssize_t>(directory.size())));
        Python().PyList_Insert(path, next++, item.m_pyObj);
    }
    s_modulePath = wanted;
}

bool FinishCode(xstring& errorString)
{
    const RecursionLimitScope recursionLimit;
    const PyObjectRef module(Python().PyModule_New("finish"));
    if (module)
        AddBuiltIns(module.m_pyObj);
    PyObject* const dict = module ? Python().PyModule_GetDict(module.m_pyObj) : nullptr;
    const PyObjectRef result(
        dict == nullptr
            ? nullptr
            : Python().PyRun_StringFlags(s_finishScript, Py_file_input, dict, dict, nullptr));
    bool succeeded = static_cast<bool>(result);
    if (succeeded && std::fflush(nullptr) != 0)
    {
        Python().PyErr_SetFromErrno(*Python().PyExc_IOError);
        succeeded = false;
    }
    if (!succeeded)
        GetPythonError(errorString);
    return succeeded;
}

RecursionLimitScope::RecursionLimitScope()
    : m_previous(Python().Py_GetRecursionLimit()),
      m_limit(std::min(m_previous, RecursionThatFits()))
{
    Python().Py_SetRecursionLimit(m_limit);
}

RecursionLimitScope::~RecursionLimitScope()
{
    if (Python().Py_GetRecursionLimit() == m_limit)
        Python().Py_SetRecursionLimit(m_previous);
}

} // namespace telv

#endif
