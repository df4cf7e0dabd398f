// SPDX-License-Identifier: MIT
// A build without Python: everything that would need it is an error.
#if !TELV_HAS_PYTHON

#include "PythonBridgeSupport.h"

namespace telv
{

namespace
{

using python::Expand;
using python::Str;

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
