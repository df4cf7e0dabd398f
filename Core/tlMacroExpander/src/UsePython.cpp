// SPDX-License-Identifier: MIT
// The embedded interpreter: its start and end, the module through which its streams reach us, and
// running code in the one dictionary that all code shares.
//
// Python's environment variables are ignored and its modules come from beside the library, so that
// the same text gives the same result everywhere. No C++ exception passes through Python's frames.
#ifdef TELV_PYTHON_ENABLED

#define TELV_SOURCE_PATH "Core/tlMacroExpander/src/UsePython"

#include "tlMacroExpander/src/Python/CodeLines.h"
#include "tlMacroExpander/src/Python/PythonApi.h"
// Python's header wants to be the first to include the system's.
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Python/PythonLock.h"
#include "tlMacroExpander/src/Python/PythonSignals.h"
#include "tlMacroExpander/src/Python/PythonStack.h"
#include "tlMacroExpander/src/Python/RepeatedExpression.h"
#include "tlMacroExpander/src/Python/SignalModule.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include "tlMacroExpander/src/UsePython.h"
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

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

/// Lowers Python's recursion limit, until the end of the scope, to what fits on its stack.
class RecursionLimitScope
{
public:
    RecursionLimitScope()
        : m_previous(Python().Py_GetRecursionLimit()),
          m_limit(std::min(m_previous, RecursionThatFits()))
    {
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

PyObject* NewNone()
{
    PyObject* const none = Python()._Py_NoneStruct;
    Py_INCREF(none);
    return none;
}

/// Receives the text of a result. Its size is looked at as it comes: lists that share others can
/// stand for more text than there is room for.
class ResultStream final : public IndentingStream
{
public:
    explicit ResultStream(xstring& text) : m_text(text) {}

    void Flush() override {}

private:
    void Write(const char* text, ssize_t length) override
    {
        ExpansionLevel::CheckSize(m_text.size() + length);
        m_text += SubString(text, text + length);
    }
    char LastCharacter() const override { return m_text.empty() ? '\n' : m_text.back(); }

    xstring& m_text;
};

/// Writes a result, which is an output, to `text`.
void WriteResult(PyObject* value, xstring& text, const char* errorPos)
{
    ResultStream stream(text);
    xostream os(&stream);
    try
    {
        WritePythonObject(os, value, errorPos);
    }
    catch (LexScannerException& e)
    {
        e.m_pos = errorPos;
        throw;
    }
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

/// @throws ExpansionLimitException  Code has printed too much.
void CheckPrinted(const char* errorPos)
{
    if (const RunState* const state = RunState::Current();
        state != nullptr && state->m_printsTooMuch)
        ExpansionLevel::ThrowOutputTooLarge(errorPos);
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

/// True when `code` can be given to Python as a C string; else its usual error is pending.
bool CheckNoNul(SubString code)
{
    if (code.empty() || std::memchr(code.begin(), 0, static_cast<size_t>(code.size())) == nullptr)
        return true;
    Python().PyErr_SetString(*Python().PyExc_TypeError,
                             "compile() expected string without null bytes");
    return false;
}

/// Moves the lines of compiled code, and of the functions in it, down.
void CountLinesFrom(PyObject* object, ssize_t linesBefore)
{
    if (Py_TYPE(object) != Python().PyCode_Type)
        return;
    auto& code = *reinterpret_cast<PyCodeObject*>(object);
    code.co_firstlineno += static_cast<int>(linesBefore);
    for (Py_ssize_t i = 0; i < Py_SIZE(code.co_consts); ++i)
        CountLinesFrom(PyTuple_GET_ITEM(code.co_consts, i), linesBefore);
}

/// Releases the shared module and ends the interpreter, on its stack. When threads of Python code
/// are left, the interpreter stays for them: they hold what it would free.
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

/// Puts the directories of the run before Python's own, in the place of those of the run before.
void ApplyModulePath(const ExpansionRun* run)
{
    static const std::vector<std::string> s_none;
    const std::vector<std::string>& wanted = run == nullptr ? s_none : run->m_pythonPath;
    PyObject* const path = Python().PySys_GetObject(const_cast<char*>("path"));
    if (wanted == s_modulePath || path == nullptr || !PyList_Check(path))
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

/// Starts the interpreter, on its stack. One that its threads have kept is used again.
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

/// Does what is left to do at the end of a program; false with the text of the first error.
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

/// Compiles statements that come from these lines of a file; null with an error set.
///
/// Only an error needs the lines (it quotes one of the file); else it is enough to count on.
PyObject* Compile(const xstring& path, const CodeLines& lines, const xstring& code)
{
    if (!CheckNoNul(code))
        return nullptr;
    const auto compile = [&](const xstring& text)
    { return Python().Py_CompileStringFlags(text.c_str(), path.c_str(), Py_file_input, nullptr); };
    PyObject* const compiled = compile(code);
    if (compiled != nullptr)
        CountLinesFrom(compiled, lines.m_before);
    if (!lines.m_lines.empty())
    {
        if (compiled != nullptr)
            AttachLines(compiled, lines);
        else
            MoveCompileError(lines);
        return compiled;
    }
    if (compiled != nullptr || lines.m_before == 0)
        return compiled;
    Python().PyErr_Clear();
    xstring text(lines.m_before, '\n');
    text += code;
    return compile(text);
}

/// The value of an expression, or null with `errorString` set.
PyObject* Evaluate(const xstring& expression, xstring& errorString)
{
    const PythonSignals signals(WhenSignalsChange());
    const xstring code = WithoutLeadingBlanks(expression);
    PyObject* result = EvaluateRepeated(code, s_moduleDict);
    if (result == nullptr && Python().PyErr_Occurred() == nullptr && CheckNoNul(code))
        result = Python().PyRun_StringFlags(code.c_str(), Py_eval_input, s_moduleDict, s_moduleDict,
                                            nullptr);
    if (result == nullptr)
        GetPythonError(errorString);
    return result;
}

/// Calls `work`, which is to run `code`, with everything that code needs.
/// @throws ExpansionLimitException  There is no stack that is large enough.
void RunCode(const xstring& code, const char* errorPos, const std::function<void()>& work)
{
    LoadPython(errorPos);
    const PythonCodeScope scope;
    const PythonLock lock;
    if (PythonStackSize() == 0 || !CodeFits(code.size()))
        ThrowNestedTooDeeply(errorPos);
    InitPython();
    CallOnPythonStack(
        [&]
        {
            const RecursionLimitScope recursionLimit;
            ApplyModulePath(ExpansionRun::Current());
            const PythonSignals signals(WhenSignalsChange());
            work();
        });
    CheckPrinted(errorPos);
}

} // namespace

PyObjectRef::~PyObjectRef()
{
    if (m_pyObj == nullptr)
        return;
    const PythonLock lock;
    CallOnPythonStack([this] { Py_DECREF(m_pyObj); }); // may run code
}

void CheckPythonAllowed(const char* pos)
{
    const ExpansionRun* const run = ExpansionRun::Current();
    if (run != nullptr && !run->m_pythonAllowed)
        throw LexScannerException("Python is disabled", pos);
}

void InitPython()
{
    LoadPython(nullptr);
    const PythonLock lock;
    if (s_haveInitialisedPython)
        return;
    if (PythonStackSize() == 0)
        ThrowNestedTooDeeply(nullptr);
    CallOnPythonStack(StartPython);
}

void UninitPython()
{
    const PythonLock lock;
    if (!s_haveInitialisedPython && s_module == nullptr)
        return;
    CallOnPythonStack(
        []
        {
            const PythonSignals signals;
            xstring ignored;
            if (s_haveInitialisedPython)
                FinishCode(ignored);
            EndPython();
        });
}

void FinishPython(const char* errorPos)
{
    if (!s_haveInitialisedPython)
        return;
    const PythonCodeScope scope;
    const PythonLock lock;
    xstring errorString;
    bool succeeded = true;
    CallOnPythonStack(
        [&]
        {
            const PythonSignals signals;
            succeeded = FinishCode(errorString);
            EndPython();
        });
    if (!succeeded)
        ThrowPythonError("Python error: ", errorString, errorPos);
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

PyObject* ExecutePythonExpression(const xstring& expression, xstring& errorString)
{
    InitPython();
    const PythonLock lock;
    PyObject* result = nullptr;
    CallOnPythonStack([&] { result = Evaluate(expression, errorString); });
    return result;
}

void RunPython(const xstring& path, const xstring& pythonCode, const char* errorPos)
{
    RunPythonOfFile(path, CodeLines(), pythonCode, errorPos);
}

void RunPythonOfFile(const xstring& path, const CodeLines& lines, const xstring& pythonCode,
                     const char* errorPos)
{
    RunCode(pythonCode, errorPos,
            [&]
            {
                const PyObjectRef code(Compile(path, lines, pythonCode));
                if (!code)
                    ThrowPendingError("Python compilation error: ", errorPos);
                const PyObjectRef result(Python().PyEval_EvalCode(
                    reinterpret_cast<PyCodeObject*>(code.m_pyObj), s_moduleDict, s_moduleDict));
                if (!result)
                    ThrowPendingError("Python error: ", errorPos);
            });
}

void EvalPythonExpression(const xstring& pythonCode, xstring& result, const char* errorPos)
{
    RunCode(pythonCode, errorPos,
            [&]
            {
                xstring errorString;
                const PyObjectRef value(Evaluate(pythonCode, errorString));
                if (!value)
                    ThrowPythonError("Python error: ", errorString, errorPos);
                xstring text;
                WriteResult(value.m_pyObj, text, errorPos);
                result.swap(text);
            });
}

} // namespace telv

#endif
