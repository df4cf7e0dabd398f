// SPDX-License-Identifier: MIT
// Expressions that are evaluated again and again with other numbers and strings in them: what the
// body of a Python macro expands to.
//
// Compiling one takes far longer than evaluating it. So whole numbers and plain strings are taken
// out, and what is left is compiled once, with names in their places: `3 * len("ab")` is a `3` and
// an `"ab"` in `a * len(b)`. Only expressions whose value cannot depend on that are treated so:
// none with scopes of their own, none that compare identities or look at their names.
#pragma once

#ifdef TELV_PYTHON_ENABLED

#include "tlMacroExpander/src/UsePython.h"
#include <span>
#include <string_view>

namespace telv
{

/// An expression in two parts. Views it.
class ExpressionShape
{
public:
    /// A number or a string, as it was written.
    struct Value
    {
        SubString m_text; ///< Without quotes.
        bool m_isString;
    };

    explicit ExpressionShape(SubString expression);

    /// False: the expression has to be compiled as it is.
    explicit operator bool() const { return m_isKnown; }
    /// What is left, with names in the places of the values.
    std::string_view Text() const { return {m_text, m_textSize}; }
    std::span<const Value> Values() const { return {m_values, m_numValues}; }

    static constexpr size_t s_mostValues = 16;

private:
    static constexpr ssize_t s_longest = 400;
    static constexpr size_t s_longestName = 8; ///< In the place of a value, with a blank.

    bool Read();
    bool ReadNumber();
    bool ReadString();
    bool ReadWord();
    bool AddValue(SubString text, bool isString);
    void Append(std::string_view text);

    SubString m_rest;
    bool m_isAfterName = false;
    bool m_isKnown;
    size_t m_textSize = 0;
    size_t m_numValues = 0;
    Value m_values[s_mostValues];
    char m_text[s_longest + s_mostValues * s_longestName];
};

/// Evaluates `expression` in `dict` with what was compiled for one of the same shape before. Null
/// with no error set when it has to be compiled as it is.
PyObject* EvaluateRepeated(SubString expression, PyObject* dict);

/// The interpreter ends.
void ForgetExpressions();

} // namespace telv

#endif
