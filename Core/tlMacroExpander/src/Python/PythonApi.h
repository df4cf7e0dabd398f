// SPDX-License-Identifier: MIT
// The functions and objects of Python's library that the bridge uses, found when it is loaded.
//
// Nothing is linked: the bridge is compiled against Python's headers, which give the types, and
// the addresses come from the loader on first use. So a process that runs no Python does not map
// the library, and a package does not depend on it. Empty in a build without Python.
#pragma once

#ifdef TELV_PYTHON_ENABLED

#include <Python.h>
#include <pythread.h>

// One list, because a function must be declared and found under the same name.
// clang-format off
#define TELV_PYTHON_SYMBOLS(X)                                                                      \
    X(PyArg_ParseTuple)             X(PyCFunction_NewEx)            X(PyCode_Addr2Line)             \
    X(PyCode_Type)                                                                                  \
    X(PyDict_New)                   X(PyDict_Next)                  X(PyDict_SetItem)               \
    X(PyDict_Size)                  X(PyErr_Clear)                  X(PyErr_Display)                \
    X(PyErr_Fetch)                  X(PyErr_NoMemory)               X(PyErr_NormalizeException)     \
    X(PyErr_Restore)                                                                                \
    X(PyErr_Occurred)               X(PyErr_SetFromErrno)           X(PyErr_SetString)              \
    X(PyEval_EvalCode)              X(PyExc_IOError)                                                \
    X(PyExc_TypeError)              X(PyFile_SetEncoding)           X(PyFloat_AsDouble)             \
    X(PyFloat_Type)                                                                                 \
    X(PyImport_AddModule)           X(PyImport_ImportModule)        X(PyInt_AsLong)                 \
    X(PyInt_FromLong)               X(PyInterpreterState_ThreadHead)X(PyList_GetItem)               \
    X(PyList_Insert)                X(PyList_SetSlice)              X(PyList_Size)                  \
    X(PyModule_AddObject)           X(PyModule_GetDict)             X(PyModule_New)                 \
    X(PyObject_CallFunctionObjArgs) X(PyObject_CallObject)          X(PyObject_GetAttrString)       \
    X(PyObject_SetAttrString)       X(PyRun_StringFlags)            X(PyString_AsStringAndSize)     \
    X(PyString_FromStringAndSize)   X(PyString_InternFromString)    X(PySys_GetObject)              \
    X(PySys_SetObject)              X(PyThreadState_Clear)          X(PyThreadState_Delete)         \
    X(PyThreadState_Get)            X(PyThreadState_New)            X(PyThreadState_Next)           \
    X(PyThreadState_Swap)           X(PyThread_set_stacksize)       X(PyTraceBack_Type)             \
    X(PyTuple_GetItem)              X(PyTuple_New)                                                  \
    X(PyType_IsSubtype)             X(Py_CompileStringFlags)        X(Py_DontWriteBytecodeFlag)     \
    X(Py_FileSystemDefaultEncoding) X(Py_Finalize)                  X(Py_GetRecursionLimit)         \
    X(Py_GetVersion)                X(Py_IgnoreEnvironmentFlag)     X(Py_InitModule4_64)            \
    X(Py_InitializeEx)              X(Py_NoSiteFlag)                X(Py_NoUserSiteDirectory)       \
    X(Py_SetProgramName)            X(Py_SetPythonHome)             X(Py_SetRecursionLimit)         \
    X(_Py_NoneStruct)
// clang-format on

namespace telv
{

/// The address of each function or object, under its own name.
struct PythonApi
{
// NOLINTNEXTLINE(bugprone-macro-parentheses)
#define TELV_DECLARE_SYMBOL(name) decltype(&::name) name = nullptr;
    TELV_PYTHON_SYMBOLS(TELV_DECLARE_SYMBOL)
#undef TELV_DECLARE_SYMBOL
};

/// The addresses; all are null until `LoadPython` has succeeded.
const PythonApi& Python();

/// The prefix below which the loaded library's modules lie, for the life of the process; null until
/// `LoadPython` has succeeded. Python wants it without `const`.
char* PythonHome();

} // namespace telv

#endif
