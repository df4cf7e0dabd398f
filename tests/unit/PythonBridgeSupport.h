// SPDX-License-Identifier: MIT
// What the tests of the Python bridge share: running code and expressions, and the text of the
// errors that Python prints.
#pragma once

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/UsePython.h"
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace telv::python
{

inline std::string Str(SubString s)
{
    return s.empty() ? std::string() : std::string(s.begin(), s.end());
}

/// Expands `source` in a frame of its own: the text, or the description of the error.
inline std::string Expand(const std::string& source)
{
    FileScopeVarFrame frame;
    xstring text;
    try
    {
        MacroExpand(nullptr, &frame, SubString(source.data(), source.data() + source.size()), 0, 0,
                    text);
        return Str(text);
    }
    catch (const LexScannerException& e)
    {
        return "error: " + Str(e.m_description);
    }
}

inline xstring XStr(const std::string& s)
{
    return xstring(SubString(s.data(), s.data() + s.size()));
}

inline constexpr char s_errorPosition[] = "position";

/// The value of an expression as text, or the description of the error.
inline std::string Eval(const std::string& expression)
{
    xstring result;
    try
    {
        EvalPythonExpression(XStr(expression), result, s_errorPosition);
        return Str(result);
    }
    catch (const LexScannerException& e)
    {
        return "error: " + Str(e.m_description);
    }
}

/// Runs statements: empty, or the description of the error.
inline std::string Execute(const std::string& code)
{
    try
    {
        RunPython("nowhere.py", XStr(code), s_errorPosition);
        return "";
    }
    catch (const LexScannerException& e)
    {
        return Str(e.m_description);
    }
}

/// The message of an exception that left the first line of an expression.
inline std::string Raised(const std::string& lastLines)
{
    return "error: Python error: Traceback (most recent call last):\n"
           "  File \"<string>\", line 1, in <module>\n" +
           lastLines + "\n";
}

/// The same for line `line` of statements.
inline std::string RaisedByRun(int line, const std::string& lastLines)
{
    return "Python error: Traceback (most recent call last):\n"
           "  File \"nowhere.py\", line " +
           std::to_string(line) + ", in <module>\n" + lastLines + "\n";
}

struct Row
{
    std::string source;
    std::string expected;
};

inline void ExpectValues(const std::vector<Row>& rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(Eval(row.source), row.expected) << row.source;
}

/// Each test has an interpreter of its own.
class PythonBridge : public testing::Test
{
protected:
    ~PythonBridge() override { UninitPython(); }
};

} // namespace telv::python
