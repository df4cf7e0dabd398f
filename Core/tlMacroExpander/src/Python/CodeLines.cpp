// SPDX-License-Identifier: MIT
// The constant is a string: a mark that no text begins with, then numbers.
#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Python/CodeLines.h"
#include "tlMacroExpander/src/Python/PythonApi.h"
#include <algorithm>
#include <cstring>
#include <frameobject.h>
#include <string>
#include <string_view>

namespace telv
{

namespace
{

constexpr std::string_view s_mark("\0telv.lines\0", 12);

PyObject* NewReference(PyObject* p)
{
    Py_XINCREF(p);
    return p;
}

/// The line of the file, for one of the code, counted from 1.
int LineAt(const int* lines, size_t count, ssize_t line)
{
    return lines[std::clamp<ssize_t>(line - 1, 0, static_cast<ssize_t>(count) - 1)];
}

void AppendNumber(std::string& bytes, int number)
{
    bytes.append(reinterpret_cast<const char*>(&number), sizeof(number));
}

PyObject* NewLinesConstant(const CodeLines& lines)
{
    std::string bytes(s_mark);
    AppendNumber(bytes, static_cast<int>(lines.m_before));
    for (const int line : lines.m_lines)
        AppendNumber(bytes, line);
    return Python().PyString_FromStringAndSize(bytes.data(), static_cast<Py_ssize_t>(bytes.size()));
}

bool AddConstant(PyObject* object, PyObject* constant)
{
    if (Py_TYPE(object) != Python().PyCode_Type)
        return true;
    auto& code = *reinterpret_cast<PyCodeObject*>(object);
    const Py_ssize_t count = Py_SIZE(code.co_consts);
    PyObject* const constants = Python().PyTuple_New(count + 1);
    if (constants == nullptr)
        return false;
    for (Py_ssize_t i = 0; i < count; ++i)
        PyTuple_SET_ITEM(constants, i, NewReference(PyTuple_GET_ITEM(code.co_consts, i)));
    PyTuple_SET_ITEM(constants, count, NewReference(constant));
    const PyObjectRef before(code.co_consts);
    code.co_consts = constants;
    for (Py_ssize_t i = 0; i < count; ++i)
        if (!AddConstant(PyTuple_GET_ITEM(constants, i), constant))
            return false;
    return true;
}

/// What code carries; empty for none.
std::vector<int> AttachedLines(const PyCodeObject& code)
{
    const Py_ssize_t count = Py_SIZE(code.co_consts);
    if (count == 0)
        return {};
    PyObject* const last = PyTuple_GET_ITEM(code.co_consts, count - 1);
    if (!PyString_Check(last))
        return {};
    const std::string_view bytes(PyString_AS_STRING(last), static_cast<size_t>(Py_SIZE(last)));
    if (!bytes.starts_with(s_mark))
        return {};
    std::vector<int> numbers((bytes.size() - s_mark.size()) / sizeof(int));
    std::memcpy(numbers.data(), bytes.data() + s_mark.size(), numbers.size() * sizeof(int));
    return numbers;
}

/// The line of `text` with this number, with its end.
SubString LineOf(SubString text, int number)
{
    const auto endOfLine = [&](const char* p)
    {
        const char* const feed = std::find(p, text.end(), '\n');
        return feed == text.end() ? feed : feed + 1;
    };
    const char* begin = text.begin();
    for (int line = 1; line < number; ++line)
        begin = endOfLine(begin);
    return SubString(begin, endOfLine(begin));
}

void SetAttribute(PyObject* object, const char* name, PyObject* newValue)
{
    const PyObjectRef value(newValue);
    if (value)
        Python().PyObject_SetAttrString(object, name, value.m_pyObj);
    Python().PyErr_Clear();
}

} // namespace

void AttachLines(PyObject* code, const CodeLines& lines)
{
    const PyObjectRef constant(NewLinesConstant(lines));
    if (!constant || !AddConstant(code, constant.m_pyObj))
        Python().PyErr_Clear();
}

void UseAttachedLines(PyObject* traceback)
{
    if (traceback == nullptr || Py_TYPE(traceback) != Python().PyTraceBack_Type)
        return;
    for (auto* entry = reinterpret_cast<PyTracebackObject*>(traceback); entry != nullptr;
         entry = entry->tb_next)
    {
        PyCodeObject* const code = entry->tb_frame->f_code;
        const std::vector<int> numbers = AttachedLines(*code);
        if (numbers.size() > 1)
            entry->tb_lineno =
                LineAt(numbers.data() + 1, numbers.size() - 1,
                       Python().PyCode_Addr2Line(code, entry->tb_lasti) - numbers[0]);
    }
}

void MoveCompileError(const CodeLines& lines)
{
    PyObject* type = nullptr;
    PyObject* value = nullptr;
    PyObject* traceback = nullptr;
    Python().PyErr_Fetch(&type, &value, &traceback);
    Python().PyErr_NormalizeException(&type, &value, &traceback);
    const PyObjectRef number(value == nullptr ? nullptr
                                              : Python().PyObject_GetAttrString(value, "lineno"));
    const long line = number ? Python().PyInt_AsLong(number.m_pyObj) : -1;
    Python().PyErr_Clear();
    if (line > 0)
    {
        const int moved = LineAt(lines.m_lines.data(), lines.m_lines.size(), line);
        SetAttribute(value, "lineno", Python().PyInt_FromLong(moved));
        // The parser quotes the code, with a column; what finds errors later quotes the file.
        const PyObjectRef column(Python().PyObject_GetAttrString(value, "offset"));
        const SubString text = LineOf(lines.m_file, moved);
        if (column && column.m_pyObj == Python()._Py_NoneStruct)
            SetAttribute(value, "text",
                         Python().PyString_FromStringAndSize(text.begin(), text.size()));
        Python().PyErr_Clear();
    }
    Python().PyErr_Restore(type, value, traceback);
}

} // namespace telv

#endif
