// SPDX-License-Identifier: MIT
// What all Python code shares, its streams, and what a script can do to them.
#if TELV_HAS_PYTHON

#include "PythonBridgeSupport.h"

namespace telv::python
{

namespace
{

// What all code shares.

TEST_F(PythonBridge, AllCodeSharesOneDictionary)
{
    ASSERT_EQ(Execute("v = 5\ndef f(x):\n  return x + v\n"), "");
    EXPECT_EQ(Eval("f(2)"), "7");
    EXPECT_EQ(Execute("v += f(1)\n"), "");
    EXPECT_EQ(Eval("v"), "11");
    EXPECT_EQ(Eval("globals() is locals()"), "1");
}

TEST_F(PythonBridge, ModuleIsNamedTestAndHasTheBuiltIns)
{
    ExpectValues({
        {"__name__", "test"},
        {"__builtins__ is __import__('__builtin__')", "1"},
        {"len('abc')", "3"},
    });
}

TEST_F(PythonBridge, BootstrapRunsInMain)
{
    ExpectValues({
        {"__import__('__main__').TelvCodeConsole.__class__.__name__", "InteractiveConsole"},
        {"__import__('sys').stdout.__class__.__name__", "myStdOut"},
        {"__import__('sys').stderr.__class__.__name__", "myStdErr"},
        {"__import__('sys').stdout.__module__", "__main__"},
        {"'TelvCodeConsole' in globals()", "0"},
        {"'site' in __import__('sys').modules", "1"},
    });
}

TEST_F(PythonBridge, StartsOnFirstUseAndOnce)
{
    EXPECT_FALSE(s_haveInitialisedPython);
    EXPECT_EQ(s_module, nullptr);
    EXPECT_EQ(Eval("1"), "1");
    EXPECT_TRUE(s_haveInitialisedPython);
    const PyObject* const module = s_module;
    EXPECT_NE(module, nullptr);
    InitPython();
    EXPECT_EQ(s_module, module);
    EXPECT_EQ(Execute("v = 1\n"), "");
    InitPython();
    EXPECT_EQ(Eval("v"), "1");
}

TEST_F(PythonBridge, EndAndStartGiveAFreshInterpreter)
{
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(Eval("'v' in globals()"), "0");
        EXPECT_EQ(Eval("hasattr(__import__('sys'), 'mark')"), "0");
        EXPECT_EQ(Execute("import sys\nv = 1\nsys.mark = 1\n"), "");
        UninitPython();
        EXPECT_FALSE(s_haveInitialisedPython);
        EXPECT_EQ(s_module, nullptr);
        EXPECT_EQ(s_moduleDict, nullptr);
    }
}

/// These stand in Python's library, not in the interpreter that is ended.
TEST_F(PythonBridge, AFreshInterpreterHasItsFirstSettings)
{
    const std::string settings = "[sys.getrecursionlimit(), sys.getcheckinterval(), "
                                 "gc.isenabled(), gc.get_debug(), list(gc.get_threshold())]";
    ASSERT_EQ(Execute("import gc, sys\nsys.setrecursionlimit(60)\nsys.setcheckinterval(7)\n"
                      "gc.disable()\ngc.set_debug(gc.DEBUG_SAVEALL)\ngc.set_threshold(5, 6, 7)\n"),
              "");
    ASSERT_EQ(Eval(settings), "[60,7,0,32,[5,6,7]]");
    UninitPython();
    ASSERT_EQ(Execute("import gc, sys\n"), "");
    EXPECT_EQ(Eval(settings), "[1000,100,1,0,[700,10,10]]");
}

TEST_F(PythonBridge, EndWithoutStartDoesNothing)
{
    UninitPython();
    UninitPython();
    EXPECT_EQ(Eval("1"), "1");
}

TEST_F(PythonBridge, EmptyBlockDoesNotStartPython)
{
    EXPECT_EQ(Expand("a\n@runpython{}\nb"), "a\nb");
    EXPECT_FALSE(s_haveInitialisedPython);
}

/// A sink in memory that counts how often it was flushed.
class CountingSink final : public IndentingStream
{
public:
    void Flush() override { ++m_flushes; }

    std::string m_text;
    int m_flushes = 0;

protected:
    void Write(const char* text, ssize_t length) override
    {
        m_text.append(text, static_cast<size_t>(length));
    }
    char LastCharacter() const override { return m_text.empty() ? '\n' : m_text.back(); }
};

/// A sink that can't take anything.
class ThrowingSink final : public IndentingStream
{
public:
    void Flush() override {}

protected:
    void Write(const char*, ssize_t) override { throw std::runtime_error("no room"); }
    char LastCharacter() const override { return '\n'; }
};

/// Points the standard output elsewhere until the end of the scope.
class OutputScope
{
public:
    explicit OutputScope(IndentingStream& sink) : m_previous(xcout.m_os) { xcout.m_os = &sink; }
    ~OutputScope() { xcout.m_os = m_previous; }
    OutputScope(const OutputScope&) = delete;
    OutputScope& operator=(const OutputScope&) = delete;

private:
    IndentingStream* m_previous;
};

// The streams.

TEST_F(PythonBridge, PrintsGoToTheStandardOutputAndAreFlushed)
{
    CountingSink sink;
    const OutputScope scope(sink);
    EXPECT_EQ(Execute("import telv\nassert telv.WriteToStdOut('a\\xff') is None\n"), "");
    EXPECT_EQ(sink.m_text, "a\xff");
    EXPECT_EQ(sink.m_flushes, 1);
    EXPECT_EQ(Execute("print 'b', 1\n"), "");
    EXPECT_EQ(sink.m_text, "a\xff"
                           "b 1\n");
}

TEST_F(PythonBridge, ErrorsGoToTheErrorString)
{
    CountingSink sink;
    const OutputScope scope(sink);
    s_errorString.Clear();
    EXPECT_EQ(Execute("import sys, telv\n"
                      "assert telv.WriteToStdErr('a') is None\n"
                      "sys.stderr.write('b')\n"
                      "print >>sys.stderr, 'c'\n"),
              "");
    EXPECT_EQ(Str(s_errorString.GetString()), "abc\n");
    EXPECT_EQ(sink.m_text, "");
}

TEST_F(PythonBridge, ModuleHasTwoFunctions)
{
    ExpectValues({
        {"__import__('telv').WriteToStdOut.__doc__", "Write to stdout"},
        {"__import__('telv').WriteToStdErr.__doc__", "Write to stderr"},
        {"[n for n in dir(__import__('telv')) if n[0] != '_']", "[WriteToStdErr,WriteToStdOut]"},
    });
}

TEST_F(PythonBridge, WriteFunctionsTakeOneString)
{
    ASSERT_EQ(Execute("import telv\n"), "");
    for (const std::string name : {"telv.WriteToStdOut", "telv.WriteToStdErr"})
        ExpectValues({
            {name + "()", Raised("TypeError: function takes exactly 1 argument (0 given)")},
            {name + "(1)", Raised("TypeError: argument 1 must be string, not int")},
            {name + "('a', 'b')", Raised("TypeError: function takes exactly 1 argument (2 given)")},
            {name + "('a\\0b')",
             Raised("TypeError: argument 1 must be string without null bytes, not str")},
        });
}

TEST_F(PythonBridge, OutputThatFailsIsAnErrorOfPython)
{
    ThrowingSink sink;
    const OutputScope scope(sink);
    EXPECT_EQ(Execute("import telv\ntelv.WriteToStdOut('a')\n"), RaisedByRun(2, "MemoryError"));
    EXPECT_EQ(Execute("try:\n  print 1\nexcept MemoryError:\n  pass\n"), "");
}

TEST_F(PythonBridge, ErrorsAreReportedWithoutTheScriptsStreams)
{
    const std::string message = Raised("NameError: name 'nothere' is not defined");
    const std::vector<std::string> scripts = {
        "del sys.stderr\n",
        "sys.stderr = None\n",
        "sys.stderr = 1\n",
        "del sys.stdout, sys.stderr\n",
        "class E:\n  def write(self, s): raise SystemExit\nsys.stderr = sys.stdout = E()\n",
        "sys.stderr.__class__.write = None\n",
        "del telv.WriteToStdErr\n",
        "sys.modules.clear()\n",
    };
    for (const std::string& script : scripts)
    {
        EXPECT_EQ(Execute("import sys, telv\n" + script), "") << script;
        EXPECT_EQ(Eval("nothere"), message) << script;
        EXPECT_EQ(Eval("nothere"), message) << script;
        UninitPython();
    }
}

TEST_F(PythonBridge, ReplacedErrorStreamIsKept)
{
    ASSERT_EQ(Execute("import sys, StringIO\nsys.stderr = mine = StringIO.StringIO()\n"), "");
    EXPECT_EQ(Eval("nothere"), Raised("NameError: name 'nothere' is not defined"));
    EXPECT_EQ(Execute("sys.stderr.write('x')\nassert sys.stderr is mine\n"), "");
    EXPECT_EQ(Eval("mine.getvalue()"), "x");
}

TEST_F(PythonBridge, ExceptionHookOfTheScript)
{
    const std::string message = Raised("NameError: name 'nothere' is not defined");
    const std::vector<Row> rows = {
        {"lambda t, v, tb: sys.stderr.write('mine: %s' % v)",
         "error: Python error: mine: name 'nothere' is not defined"},
        {"lambda t, v, tb: None", message},
        {"lambda t, v, tb: sys.exit(0)", message},
        {"lambda t, v, tb: (sys.stderr.write('half'), 1/0)", message},
        {"None", message},
    };
    ASSERT_EQ(Execute("import sys\n"), "");
    for (const Row& row : rows)
    {
        EXPECT_EQ(Execute("sys.excepthook = " + row.source + "\n"), "") << row.source;
        EXPECT_EQ(Eval("nothere"), row.expected) << row.source;
    }
    EXPECT_EQ(Execute("del sys.excepthook\n"), "");
    EXPECT_EQ(Eval("nothere"), message);
}

} // namespace

} // namespace telv::python

#endif
