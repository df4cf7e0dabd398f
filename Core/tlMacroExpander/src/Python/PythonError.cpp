// SPDX-License-Identifier: MIT
// The pending exception as Python prints it.
//
// Python's own way of printing ends the process when the exception is SystemExit, or when its hook
// raises one, and writes to whatever the script has made of sys.stderr. So the exception is taken
// out first and given to the hook and to Python's plain display, while sys.stderr is an object that
// no script has touched.
#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Python/CodeLines.h"
#include "tlMacroExpander/src/Python/PythonApi.h"
#include "tlMacroExpander/src/UsePython.h"

namespace telv
{

namespace
{

PyObject* NewReference(PyObject* p)
{
    Py_XINCREF(p);
    return p;
}

/// `write` of the stream that errors are printed to. Unlike the module's function it takes NULs: a
/// script's message may contain them and must not get lost.
PyObject* WriteErrorText(PyObject* /*self*/, PyObject* args)
{
    PyObject* const text = Python().PyTuple_GetItem(args, 0);
    char* bytes = nullptr;
    Py_ssize_t size = 0;
    if (text == nullptr || Python().PyString_AsStringAndSize(text, &bytes, &size) != 0)
        return nullptr;
    try
    {
        s_errorString << SubString(bytes, bytes + size);
    }
    catch (...)
    {
        return Python().PyErr_NoMemory();
    }
    return NewReference(Python()._Py_NoneStruct);
}

PyMethodDef s_writeMethod = {"write", WriteErrorText, METH_VARARGS, nullptr};

/// An object that Python can print to. A module is the simplest one that takes attributes.
PyObject* NewErrorStream()
{
    PyObjectRef stream(Python().PyModule_New("stderr"));
    const PyObjectRef write(Python().PyCFunction_NewEx(&s_writeMethod, nullptr, nullptr));
    if (!stream || !write ||
        Python().PyObject_SetAttrString(stream.m_pyObj, "write", write.m_pyObj) != 0)
        return nullptr;
    return NewReference(stream.m_pyObj);
}

/// Makes sys.stderr such a stream until the end of the scope. Leaves no error pending.
class ErrorStreamScope
{
public:
    ErrorStreamScope() : m_previous(NewReference(StdErr()))
    {
        const PyObjectRef stream(NewErrorStream());
        SetStdErr(stream.m_pyObj);
    }
    ~ErrorStreamScope() { SetStdErr(m_previous.m_pyObj); }
    ErrorStreamScope(const ErrorStreamScope&) = delete;
    ErrorStreamScope& operator=(const ErrorStreamScope&) = delete;

private:
    // Python's tables of names are not const.
    static PyObject* StdErr() { return Python().PySys_GetObject(const_cast<char*>("stderr")); }

    /// With null, there is none.
    static void SetStdErr(PyObject* stream)
    {
        Python().PySys_SetObject(const_cast<char*>("stderr"), stream);
        Python().PyErr_Clear();
    }

    PyObjectRef m_previous;
};

/// An exception that is no longer pending.
class TakenException
{
public:
    /// Takes the pending one; leaves none.
    TakenException()
    {
        Python().PyErr_Fetch(&m_type.m_pyObj, &m_value.m_pyObj, &m_traceback.m_pyObj);
        if (m_type)
            Python().PyErr_NormalizeException(&m_type.m_pyObj, &m_value.m_pyObj,
                                              &m_traceback.m_pyObj);
        UseAttachedLines(m_traceback.m_pyObj);
    }

    bool IsThere() const { return static_cast<bool>(m_type); }

    /// Prints it by the hook that a script may have set; a hook that fails has printed nothing.
    void PrintByHook() const
    {
        const PyObjectRef hook(
            NewReference(Python().PySys_GetObject(const_cast<char*>("excepthook"))));
        if (!hook)
            return;
        const ErrorStreamScope stream;
        const PyObjectRef result(Python().PyObject_CallFunctionObjArgs(
            hook.m_pyObj, m_type.m_pyObj, OrNone(m_value), OrNone(m_traceback), nullptr));
        if (!result)
            s_errorString.Clear();
        Python().PyErr_Clear();
    }

    void Display() const
    {
        const ErrorStreamScope stream;
        Python().PyErr_Display(m_type.m_pyObj, OrNone(m_value), m_traceback.m_pyObj);
        Python().PyErr_Clear();
    }

private:
    static PyObject* OrNone(const PyObjectRef& object)
    {
        return object ? object.m_pyObj : Python()._Py_NoneStruct;
    }

    PyObjectRef m_type;
    PyObjectRef m_value;
    PyObjectRef m_traceback;
};

} // namespace

void GetPythonError(xstring& errorString)
{
    s_errorString.Clear();
    if (!s_haveInitialisedPython)
    {
        errorString.clear();
        return;
    }
    const TakenException exception;
    if (exception.IsThere())
        exception.PrintByHook();
    if (exception.IsThere() && s_errorString.size() == 0)
        exception.Display();
    // Before the exception goes: releasing its objects may run code that prints.
    s_errorString.GetString(errorString, /*all=*/true);
}

} // namespace telv

#endif
