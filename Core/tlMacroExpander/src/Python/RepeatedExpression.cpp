// SPDX-License-Identifier: MIT
// Taking expressions apart, and the compiled ones.
#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/Python/PythonApi.h"
// Python's header wants to be the first to include the system's.
#include "tlMacroExpander/src/Python/RepeatedExpression.h"
#include <algorithm>
#include <charconv>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace telv
{

namespace
{

constexpr const char* s_names[ExpressionShape::s_mostValues] = {
    "_telv0", "_telv1", "_telv2",  "_telv3",  "_telv4",  "_telv5",  "_telv6",  "_telv7",
    "_telv8", "_telv9", "_telv10", "_telv11", "_telv12", "_telv13", "_telv14", "_telv15"};

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool IsLetter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

/// Words with which names in the place of values could make a difference: scopes, comparison of
/// identities, functions that see the names.
bool IsSensitive(std::string_view word)
{
    static constexpr std::string_view s_words[] = {"lambda", "for",  "is",      "eval",  "execfile",
                                                   "locals", "vars", "dir",     "input", "yield",
                                                   "id",     "exec", "compile", "print"};
    return word.starts_with("_telv") || std::ranges::find(s_words, word) != std::end(s_words);
}

std::string_view ToView(SubString text)
{
    return {text.begin(), static_cast<size_t>(text.size())};
}

} // namespace

ExpressionShape::ExpressionShape(SubString expression) : m_rest(expression)
{
    m_isKnown = expression.size() <= s_longest;
    while (m_isKnown && m_rest)
        m_isKnown = Read();
}

bool ExpressionShape::Read()
{
    const char c = *m_rest;
    if (IsDigit(c))
        return ReadNumber();
    if (c == '"' || c == '\'')
        return ReadString();
    if (IsLetter(c))
        return ReadWord();
    constexpr std::string_view operators = "+-*/%<>=!&|^~()[]{},.: ";
    if (operators.find(c) == std::string_view::npos)
        return false;
    Append({&c, 1});
    m_isAfterName = false;
    ++m_rest.m_p1;
    return true;
}

bool ExpressionShape::ReadWord()
{
    const char* const end = std::find_if_not(m_rest.begin(), m_rest.end(),
                                             [](char c) { return IsLetter(c) || IsDigit(c); });
    const SubString word(m_rest.begin(), end);
    Append(ToView(word));
    m_rest.m_p1 = end;
    m_isAfterName = true;
    return !IsSensitive(ToView(word));
}

/// A whole number of decimal digits that stands for itself.
bool ExpressionShape::ReadNumber()
{
    constexpr ssize_t longest = 18; // fits
    const char* const end = std::find_if_not(m_rest.begin(), m_rest.end(), IsDigit);
    const SubString number(m_rest.begin(), end);
    const bool isOctal = number.size() > 1 && *number == '0';
    m_rest.m_p1 = end;
    const char* const next = std::find_if_not(end, m_rest.end(), [](char c) { return c == ' '; });
    const bool goesOn = (end != m_rest.end() && (IsLetter(*end) || *end == '"' || *end == '\'')) ||
                        (next != m_rest.end() && *next == '.');
    return !isOctal && !goesOn && number.size() <= longest && AddValue(number, /*isString=*/false);
}

/// A string whose characters stand for themselves.
bool ExpressionShape::ReadString()
{
    const char quote = *m_rest;
    const SubString inside(m_rest.begin() + 1, m_rest.end());
    const char* const end = std::find(inside.begin(), inside.end(), quote);
    const SubString text(inside.begin(), end);
    const bool isPlain = std::all_of(text.begin(), text.end(),
                                     [](char c) { return c >= ' ' && c < 0x7f && c != '\\'; });
    if (end == inside.end() || !isPlain || m_isAfterName ||
        (end + 1 != inside.end() && end[1] == quote))
        return false;
    m_rest.m_p1 = end + 1;
    return AddValue(text, /*isString=*/true);
}

/// A value in the place of a keyword or an attribute would be an error, a name would be none.
bool ExpressionShape::AddValue(SubString text, bool isString)
{
    const size_t last = Text().find_last_not_of(' ');
    if (last != std::string_view::npos && m_text[last] == '.')
        return false;
    const char* const next =
        std::find_if_not(m_rest.begin(), m_rest.end(), [](char c) { return c == ' '; });
    const bool isKeyword =
        next != m_rest.end() && *next == '=' && (next + 1 == m_rest.end() || next[1] != '=');
    if (isKeyword || m_numValues == s_mostValues)
        return false;
    Append(s_names[m_numValues]);
    Append(" ");
    m_values[m_numValues++] = {text, isString};
    m_isAfterName = false;
    return true;
}

void ExpressionShape::Append(std::string_view text)
{
    text.copy(m_text + m_textSize, text.size());
    m_textSize += text.size();
}

namespace
{

/// What is known of the expressions of one shape.
struct Compiled
{
    int m_uses = 0;
    PyObject* m_code = nullptr; ///< Null: not compiled yet, or it cannot be.
};

/// Looks a view up without making a string of it.
struct HashText
{
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

// Guarded by Python's lock.
std::unordered_map<std::string, Compiled, HashText, std::equal_to<>> s_compiled;
PyObject* s_keys[ExpressionShape::s_mostValues] = {};

/// What has been compiled for the shape; null when it is not met often enough.
PyObject* CodeOf(std::string_view shape)
{
    constexpr size_t mostShapes = 512;
    auto known = s_compiled.find(shape);
    if (known == s_compiled.end())
    {
        if (s_compiled.size() < mostShapes)
            s_compiled.emplace(shape, Compiled{1});
        return nullptr;
    }
    Compiled& compiled = known->second;
    if (compiled.m_uses == 1)
    {
        compiled.m_uses = 2;
        compiled.m_code = Python().Py_CompileStringFlags(known->first.c_str(), "<string>",
                                                         Py_eval_input, nullptr);
        Python().PyErr_Clear();
    }
    return compiled.m_code;
}

PyObject* NewValue(const ExpressionShape::Value& value)
{
    const SubString text = value.m_text;
    if (value.m_isString)
        return Python().PyString_FromStringAndSize(text.begin(), text.size());
    long number = 0;
    std::from_chars(text.begin(), text.end(), number);
    return Python().PyInt_FromLong(number);
}

bool AddValue(PyObject* values, size_t index, const ExpressionShape::Value& value)
{
    if (s_keys[index] == nullptr)
        s_keys[index] = Python().PyString_InternFromString(s_names[index]);
    const PyObjectRef object(NewValue(value));
    return s_keys[index] != nullptr && object &&
           Python().PyDict_SetItem(values, s_keys[index], object.m_pyObj) == 0;
}

} // namespace

PyObject* EvaluateRepeated(SubString expression, PyObject* dict)
{
    const ExpressionShape shape(expression);
    PyObject* const code = shape ? CodeOf(shape.Text()) : nullptr;
    if (code == nullptr)
        return nullptr;
    const PyObjectRef values(Python().PyDict_New());
    if (!values)
        return nullptr;
    for (size_t i = 0; i < shape.Values().size(); ++i)
        if (!AddValue(values.m_pyObj, i, shape.Values()[i]))
            return nullptr;
    return Python().PyEval_EvalCode(reinterpret_cast<PyCodeObject*>(code), dict, values.m_pyObj);
}

void ForgetExpressions()
{
    for (const auto& compiled : s_compiled)
        const PyObjectRef released(compiled.second.m_code);
    s_compiled.clear();
    for (PyObject*& key : s_keys)
        const PyObjectRef released(std::exchange(key, nullptr));
}

} // namespace telv

#endif
