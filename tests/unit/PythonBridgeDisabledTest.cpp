// SPDX-License-Identifier: MIT
// A build without Python: everything that would need it is an error.
#if !TELV_HAS_PYTHON

#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/UsePython.h"
#include <gtest/gtest.h>
#include <string>

namespace telv
{

namespace
{

std::string Str(SubString s)
{
    return s.empty() ? std::string() : std::string(s.begin(), s.end());
}

/// Expands `source` in a frame of its own: the text, or the description of the error.
std::string Expand(const std::string& source)
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

TEST(PythonDisabled, DirectivesAreErrors)
{
    EXPECT_EQ(Expand("@runpython{1}"), "error: Python is disabled");
    EXPECT_EQ(Expand("@runpython"), "error: Python is disabled");
    EXPECT_EQ(Expand("@defpython p = {1}\np"), "error: Python is disabled");
}

TEST(PythonDisabled, FunctionsAreErrors)
{
    xstring text("before");
    EXPECT_THROW(RunPython("a", "1\n", nullptr), LexScannerException);
    EXPECT_THROW(EvalPythonExpression("1", text, nullptr), LexScannerException);
    EXPECT_THROW(InitPython(), LexScannerException);
    EXPECT_EQ(Str(text), "before");
    EXPECT_EQ(ExecutePythonExpression("1", text), nullptr);
    EXPECT_EQ(Str(text), "Python is disabled");
    UninitPython();
    EXPECT_FALSE(s_haveInitialisedPython);
}

} // namespace

} // namespace telv

#endif
