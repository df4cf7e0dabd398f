// SPDX-License-Identifier: MIT
// The functions of the module are put behind others that are no Python code either, so that nobody
// sees them in a traceback.
#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Python/PythonApi.h"
// Python's header wants to be the first to include the system's.
#include "tlMacroExpander/src/Python/SignalModule.h"
#include "tlMacroExpander/src/UsePython.h"
#include <algorithm>
#include <string_view>

namespace telv
{

namespace
{

/// Calls the function that this one stands for, its `self`.
PyObject* ChangeSignal(PyObject* self, PyObject* args)
{
    PythonSignals::NoteChange();
    return Python().PyObject_CallObject(self, args);
}

PyMethodDef s_changingFunctions[] = {
    {"signal", ChangeSignal, METH_VARARGS, nullptr},
    {"siginterrupt", ChangeSignal, METH_VARARGS, nullptr},
};

/// Where the file of a module ends that is the library's and leaves signals alone.
bool IsTrusted(std::string_view file)
{
    constexpr std::string_view ownDirectory = "/lib-dynload/";
    constexpr std::string_view untrusted[] = {"_ctypes", "_curses", "_tkinter", "readline"};
    if (!file.ends_with(".so"))
        return true;
    const size_t place = file.rfind(ownDirectory);
    if (place == std::string_view::npos)
        return false;
    const std::string_view name = file.substr(place + ownDirectory.size());
    return std::ranges::none_of(untrusted,
                                [&](std::string_view start) { return name.starts_with(start); });
}

bool IsTrustedModule(PyObject* module)
{
    const PyObjectRef file(Python().PyObject_GetAttrString(module, "__file__"));
    char* bytes = nullptr;
    Py_ssize_t size = 0;
    const bool isKnown = file && PyString_Check(file.m_pyObj) &&
                         Python().PyString_AsStringAndSize(file.m_pyObj, &bytes, &size) == 0;
    Python().PyErr_Clear();
    return !isKnown || IsTrusted({bytes, static_cast<size_t>(size)});
}

bool AreAllTrusted(PyObject* modules)
{
    Py_ssize_t place = 0;
    PyObject* name = nullptr;
    PyObject* module = nullptr;
    while (Python().PyDict_Next(modules, &place, &name, &module) != 0)
        if (!IsTrustedModule(module))
            return false;
    return true;
}

// Guarded by Python's lock.
Py_ssize_t s_modules = -1; ///< In number, when they were looked at.
bool s_areTrusted = false;

} // namespace

void WatchSignalModule()
{
    s_modules = -1;
    const PyObjectRef module(Python().PyImport_ImportModule("signal"));
    for (PyMethodDef& function : s_changingFunctions)
    {
        if (!module)
            break;
        const PyObjectRef original(
            Python().PyObject_GetAttrString(module.m_pyObj, function.ml_name));
        const PyObjectRef watched(
            original ? Python().PyCFunction_NewEx(&function, original.m_pyObj, nullptr) : nullptr);
        if (watched)
            Python().PyObject_SetAttrString(module.m_pyObj, function.ml_name, watched.m_pyObj);
    }
    Python().PyErr_Clear();
}

PythonSignals::EWhen WhenSignalsChange()
{
    PyObject* const modules = Python().PySys_GetObject(const_cast<char*>("modules"));
    if (modules == nullptr || !PyDict_Check(modules))
        return PythonSignals::AT_ONCE;
    if (const Py_ssize_t count = Python().PyDict_Size(modules); count != s_modules)
    {
        s_areTrusted = AreAllTrusted(modules);
        s_modules = count;
    }
    return s_areTrusted ? PythonSignals::BEFORE_A_CHANGE : PythonSignals::AT_ONCE;
}

} // namespace telv

#endif
