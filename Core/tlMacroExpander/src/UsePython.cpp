// SPDX-License-Identifier: MIT
// Running code in the one dictionary that all code shares: statements, expressions, results.
#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Python/CodeLines.h"
#include "tlMacroExpander/src/Python/PythonApi.h"
// Python's header wants to be the first to include the system's.
#include "tlMacroExpander/ExpansionRun.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Python/Interpreter.h"
#include "tlMacroExpander/src/Python/PythonLock.h"
#include "tlMacroExpander/src/Python/PythonSignals.h"
#include "tlMacroExpander/src/Python/PythonStack.h"
#include "tlMacroExpander/src/Python/PythonStreams.h"
#include "tlMacroExpander/src/Python/RepeatedExpression.h"
#include "tlMacroExpander/src/Python/SignalModule.h"
#include "tlMacroExpander/src/Run/ExpansionLevel.h"
#include "tlMacroExpander/src/Run/StackGuard.h"
#include "tlMacroExpander/src/UsePythonInside.h"
#include <cstring>
#include <exception>
#include <functional>

namespace telv
{

namespace
{

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
SubString WithoutLeadingBlanks(SubString code)
{
    while (!code.empty() && (code[0] == ' ' || code[0] == '\t'))
        ++code.m_p1;
    return code;
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
    const SubString code = WithoutLeadingBlanks(expression);
    PyObject* result = EvaluateRepeated(code, s_moduleDict);
    if (result == nullptr && Python().PyErr_Occurred() == nullptr && CheckNoNul(code))
        result = Python().PyRun_StringFlags(xstring(code).c_str(), Py_eval_input, s_moduleDict,
                                            s_moduleDict, nullptr);
    if (result == nullptr)
        GetPythonError(errorString);
    return result;
}

/// Calls `work`, which is to run `code`, with everything that code needs.
/// @throws ExpansionLimitException  There is no stack that is large enough.
template <class Work>
void RunCode(const xstring& code, const char* errorPos, const Work& work)
{
    LoadPython(errorPos);
    const PythonCodeScope scope;
    const PythonLock lock;
    if (PythonStackSize() == 0 || !CodeFits(code.size()))
        ThrowNestedTooDeeply(errorPos);
    InitPython();
    const auto prepareAndWork = [&]
    {
        const RecursionLimitScope recursionLimit;
        ApplyModulePath(ExpansionRun::Current());
        const PythonSignals signals(WhenSignalsChange());
        work();
    };
    CallOnPythonStack(std::cref(prepareAndWork)); // by reference: without an allocation
    CheckPrinted(errorPos);
}

} // namespace

PyObjectRef::~PyObjectRef()
{
    if (m_pyObj == nullptr)
        return;
    const auto release = [this] { Py_DECREF(m_pyObj); }; // may run code
    if (IsOnPythonStack())
    {
        release();
        return;
    }
    const PythonLock lock;
    CallOnPythonStack(release);
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

PyObject* ExecutePythonExpression(const xstring& expression, xstring& errorString)
{
    InitPython();
    const PythonLock lock;
    PyObject* result = nullptr;
    CallOnPythonStack(
        [&]
        {
            const PythonSignals signals(WhenSignalsChange());
            result = Evaluate(expression, errorString);
        });
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
