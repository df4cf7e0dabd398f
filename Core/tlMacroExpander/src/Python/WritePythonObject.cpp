// SPDX-License-Identifier: MIT
// Python values as text.
//
// Lists are walked with a stack of their own on the heap, so any depth of nesting is written, and
// the lists in progress are remembered, so that one that contains itself is found. Only what the
// objects store is read: no method of a subclass runs, hence nothing changes during the walk.
#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Hints/Hints.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/Python/PythonApi.h"
#include "tlMacroExpander/src/UsePython.h"
#include <cstring>
#include <unordered_set>
#include <vector>

namespace telv
{

namespace
{

[[noreturn]] void ThrowNotConvertible(PyObject* p, const char* errorPos)
{
    if (PyList_Check(p))
        NoteHint({"the list holds itself"});
    else if (std::strcmp(Py_TYPE(p)->tp_name, "unicode") == 0)
        NoteHint({"the value is of type 'unicode'; .encode('utf8') makes a str of it"});
    else
        NoteHint({"the value is of type '", Py_TYPE(p)->tp_name,
                  "'; an int, a float, a str or a list of these is wanted, such as str(...)"});
    throw LexScannerException("Can't convert python result", errorPos);
}

/// Writes one value with the lists inside it.
class PythonValueWriter
{
public:
    PythonValueWriter(xostream& os, const char* errorPos) : m_os(os), m_errorPos(errorPos) {}

    void Write(PyObject* p)
    {
        Begin(p);
        while (!m_lists.empty())
            Continue();
    }

private:
    /// A list whose first `m_next` items are written. Borrowed: the outermost list owns the rest.
    struct ListInProgress
    {
        PyObject* m_list;
        Py_ssize_t m_next;
    };

    /// Writes a simple value, or the beginning of a list.
    void Begin(PyObject* p)
    {
        if (PyInt_Check(p))
            m_os << Python().PyInt_AsLong(p);
        else if (Python().PyType_IsSubtype(Py_TYPE(p), Python().PyFloat_Type) != 0)
            m_os << Python().PyFloat_AsDouble(p);
        else if (PyString_Check(p))
            WriteBytes(p);
        else if (PyList_Check(p))
            BeginList(p);
        else
            ThrowNotConvertible(p, m_errorPos);
    }

    void WriteBytes(PyObject* p)
    {
        char* bytes = nullptr;
        Py_ssize_t size = 0;
        Python().PyString_AsStringAndSize(p, &bytes, &size);
        m_os << SubString(bytes, bytes + size);
    }

    void BeginList(PyObject* p)
    {
        if (!m_inProgress.insert(p).second)
            ThrowNotConvertible(p, m_errorPos);
        m_lists.push_back({p, 0});
        m_os << '[';
    }

    /// Goes on with the innermost list: begins its next item or ends it.
    void Continue()
    {
        ListInProgress& innermost = m_lists.back();
        PyObject* const list = innermost.m_list;
        const Py_ssize_t i = innermost.m_next;
        if (i < Python().PyList_Size(list))
        {
            ++innermost.m_next;
            if (i > 0)
                m_os << ',';
            Begin(Python().PyList_GetItem(list, i));
            return;
        }
        m_os << ']';
        m_inProgress.erase(list);
        m_lists.pop_back();
    }

    xostream& m_os;
    const char* m_errorPos;
    std::vector<ListInProgress> m_lists; ///< Outermost first.
    std::unordered_set<PyObject*> m_inProgress;
};

} // namespace

void WritePythonObject(xostream& os, PyObject* p, const char* errorPos)
{
    PythonValueWriter(os, errorPos).Write(p);
}

} // namespace telv

#endif
