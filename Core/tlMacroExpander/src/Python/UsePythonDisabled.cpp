// SPDX-License-Identifier: MIT
// The bridge in a build without Python: everything that would need it says so.
#ifndef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/UsePythonInside.h"

namespace telv
{

StringStream s_errorString(4096);
bool s_haveInitialisedPython = false;
PyObject* s_module = nullptr;
PyObject* s_moduleDict = nullptr;

// Nothing here makes an object, so there is none to release.
PyObjectRef::~PyObjectRef() = default;

void CheckPythonAllowed(const char* pos)
{
    throw LexScannerException("Python is disabled", pos);
}

void LoadPython(const char* pos)
{
    CheckPythonAllowed(pos);
}

void InitPython()
{
    CheckPythonAllowed(nullptr);
}

void UninitPython() {}

void FinishPython(const char* /*errorPos*/) {}

void InitTelvModule()
{
    CheckPythonAllowed(nullptr);
}

PyObject* WriteToStdOut(PyObject* /*self*/, PyObject* /*args*/)
{
    return nullptr;
}

PyObject* WriteToStdErr(PyObject* /*self*/, PyObject* /*args*/)
{
    return nullptr;
}

void GetPythonError(xstring& errorString)
{
    errorString.clear();
}

PyObject* ExecutePythonExpression(const xstring& /*expression*/, xstring& errorString)
{
    errorString = "Python is disabled";
    return nullptr;
}

void RunPython(const xstring& /*path*/, const xstring& /*pythonCode*/, const char* errorPos)
{
    CheckPythonAllowed(errorPos);
}

void RunPythonOfFile(const xstring& /*path*/, const CodeLines& /*lines*/,
                     const xstring& /*pythonCode*/, const char* errorPos)
{
    CheckPythonAllowed(errorPos);
}

void EvalPythonExpression(const xstring& /*pythonCode*/, xstring& /*result*/, const char* errorPos)
{
    CheckPythonAllowed(errorPos);
}

void WritePythonObject(xostream& /*os*/, PyObject* /*p*/, const char* errorPos)
{
    CheckPythonAllowed(errorPos);
}

} // namespace telv

#endif
