// SPDX-License-Identifier: MIT
// Errors of Python code: as Python prints them, never the end of the process, with nothing left
// pending and nothing left behind.
#if TELV_HAS_PYTHON

#include "PythonBridgeSupport.h"

namespace telv::python
{

namespace
{

TEST_F(PythonBridge, ExpressionErrors)
{
    ExpectValues({
        {"1/0", Raised("ZeroDivisionError: integer division or modulo by zero")},
        {"nothere", Raised("NameError: name 'nothere' is not defined")},
        {"int('x')", Raised("ValueError: invalid literal for int() with base 10: 'x'")},
        {"1 +", "error: Python error:   File \"<string>\", line 1\n"
                "    1 +\n"
                "      ^\n"
                "SyntaxError: unexpected EOF while parsing\n"},
        {"x = 1", "error: Python error:   File \"<string>\", line 1\n"
                  "    x = 1\n"
                  "      ^\n"
                  "SyntaxError: invalid syntax\n"},
        {"", "error: Python error:   File \"<string>\", line 0\n"
             "    \n"
             "    ^\n"
             "SyntaxError: unexpected EOF while parsing\n"},
    });
}

TEST_F(PythonBridge, StatementErrors)
{
    const std::vector<Row> rows = {
        {"x = 1\n1/0\n", RaisedByRun(2, "ZeroDivisionError: integer division or modulo by zero")},
        {"raise ValueError('bad')\n", RaisedByRun(1, "ValueError: bad")},
        {"raise ValueError\n", RaisedByRun(1, "ValueError")},
        {"x = = 1\n", "Python compilation error:   File \"nowhere.py\", line 1\n"
                      "    x = = 1\n"
                      "        ^\n"
                      "SyntaxError: invalid syntax\n"},
        {"if 1:\nx\n", "Python compilation error:   File \"nowhere.py\", line 2\n"
                       "    x\n"
                       "    ^\n"
                       "IndentationError: expected an indented block\n"},
        {"def f():\n  1/0\nf()\n",
         RaisedByRun(3, "  File \"nowhere.py\", line 2, in f\n"
                        "ZeroDivisionError: integer division or modulo by zero")},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Execute(row.source), row.expected) << row.source;
}

TEST_F(PythonBridge, StatementErrorsHaveThePosition)
{
    for (const char* code : {"1/0\n", "1 +\n"})
    {
        try
        {
            RunPython("nowhere.py", code, s_errorPosition);
            FAIL() << code;
        }
        catch (const LexScannerException& e)
        {
            EXPECT_EQ(e.m_pos, s_errorPosition) << code;
        }
    }
}

TEST_F(PythonBridge, NothingEndsTheProcess)
{
    const std::vector<Row> rows = {
        {"raise SystemExit\n", RaisedByRun(1, "SystemExit")},
        {"raise SystemExit(3)\n", RaisedByRun(1, "SystemExit: 3")},
        {"raise SystemExit('bye')\n", RaisedByRun(1, "SystemExit: bye")},
        {"import sys; sys.exit(0)\n", RaisedByRun(1, "SystemExit: 0")},
        {"raise KeyboardInterrupt\n", RaisedByRun(1, "KeyboardInterrupt")},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Execute(row.source), row.expected) << row.source;
    EXPECT_EQ(Eval("__import__('sys').exit(0)"), Raised("SystemExit: 0"));
    const std::string message = Execute("exit(1)\n");
    EXPECT_EQ(message.substr(message.rfind('\n', message.size() - 2)), "\nSystemExit: 1\n");
}

TEST_F(PythonBridge, CodeWithANulIsAnError)
{
    const std::string nul(1, '\0');
    EXPECT_EQ(
        Execute("x = 1\n" + nul + "1/0\n"),
        "Python compilation error: TypeError: compile() expected string without null bytes\n");
    EXPECT_EQ(Eval("1" + nul + " + 1"),
              "error: Python error: TypeError: compile() expected string without null bytes\n");
    EXPECT_EQ(Eval("'x' in globals()"), "0");
}

TEST_F(PythonBridge, ErrorTextsNeedNotBeAscii)
{
    const std::string message = Execute("raise ValueError('a\\0b\\xff')\n");
    EXPECT_EQ(message, RaisedByRun(1, std::string("ValueError: a\0b\xff", 16)));
    EXPECT_EQ(Execute("raise ValueError(u'\\u20ac')\n"),
              RaisedByRun(1, "ValueError: <exception str() failed>"));
}

TEST_F(PythonBridge, NoErrorStaysPending)
{
    xstring errorString;
    EXPECT_EQ(ExecutePythonExpression("1/0", errorString), nullptr);
    EXPECT_NE(Str(errorString), "");
    GetPythonError(errorString);
    EXPECT_EQ(Str(errorString), "");
    EXPECT_EQ(Execute("import sys\nassert sys.exc_info() == (None, None, None)\n"), "");
}

TEST_F(PythonBridge, HookThatWritesNoTextIsPassedOver)
{
    for (const char* const arguments : {"", "5", "None", "u'\\u20ac'"})
    {
        const std::string code = "import sys\ndef hook(*a):\n  sys.stderr.write('lost')\n"
                                 "  sys.stderr.write(" +
                                 std::string(arguments) + ")\nsys.excepthook = hook\n1/0\n";
        EXPECT_EQ(Execute(code),
                  RaisedByRun(6, "ZeroDivisionError: integer division or modulo by zero"))
            << arguments;
    }
}

TEST_F(PythonBridge, WithoutPythonThereIsNoError)
{
    UninitPython();
    xstring errorString("before");
    GetPythonError(errorString);
    EXPECT_EQ(Str(errorString), "");
    EXPECT_FALSE(s_haveInitialisedPython);
}

TEST_F(PythonBridge, EarlierStandardErrorIsNotInTheMessage)
{
    ASSERT_EQ(Execute("import sys\nsys.stderr.write('warn')\n"), "");
    EXPECT_EQ(Eval("nothere"), Raised("NameError: name 'nothere' is not defined"));
}

TEST_F(PythonBridge, ExecuteReturnsAnObject)
{
    xstring errorString("before");
    const PyObjectRef value(ExecutePythonExpression(" [1, 'a']", errorString));
    ASSERT_TRUE(static_cast<bool>(value));
    EXPECT_EQ(Str(errorString), "before");
    StringStream os(4096);
    WritePythonObject(os, value.m_pyObj, s_errorPosition);
    EXPECT_EQ(Str(os.GetString()), "[1,a]");
}

TEST(PythonReference, TestsWhetherThereIsAnObject)
{
    const PyObjectRef none;
    EXPECT_FALSE(static_cast<bool>(none));
    EXPECT_EQ(none.m_pyObj, nullptr);
}

TEST_F(PythonBridge, ReferenceReleasesItsObject)
{
    ASSERT_EQ(Execute("import sys\na = []\n"), "");
    const std::string before = Eval("sys.getrefcount(a)");
    {
        xstring errorString;
        const PyObjectRef value(ExecutePythonExpression("a", errorString));
        EXPECT_NE(Eval("sys.getrefcount(a)"), before);
    }
    EXPECT_EQ(Eval("sys.getrefcount(a)"), before);
}

TEST_F(PythonBridge, EvaluationsLeaveNothingBehind)
{
    ASSERT_EQ(Execute("import gc, sys\nold = object()\nold = []\n"), "");
    const auto count = []
    {
        Execute("gc.collect()\n");
        return std::stol(Eval("len(gc.get_objects())")) + std::stol(Eval("sys.getrefcount(None)")) +
               std::stol(Eval("sys.getrefcount(old)"));
    };
    const auto evaluateAll = []
    {
        Eval("[old, 1, 'a', 2.5]");
        Eval("1/0");
        Eval("1 +");
        Eval("None");
        Execute("sys.stderr.write('a')\nx = [1]\n");
        Execute("raise SystemExit\n");
        Execute("x = = 1\n");
    };
    evaluateAll();
    const long before = count();
    for (int i = 0; i < 10000 / 7; ++i)
        evaluateAll();
    EXPECT_NEAR(static_cast<double>(count()), static_cast<double>(before), 20);
}

} // namespace

} // namespace telv::python

#endif
