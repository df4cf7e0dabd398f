// The Python bridge against the real interpreter: results as text, errors as Python prints them,
// the state that all code shares, the streams, and what a script can do to the process. Finding and
// loading the library happens once in a process, so each test of that runs in a fresh one.
#include "support/Files.h"
#include "support/TempDir.h"
#include "tlMacroExpander/LSVariable.h"
#include "tlMacroExpander/MacroExpand.h"
#include "tlMacroExpander/VarFrame.h"
#include "tlMacroExpander/src/LSToken.h"
#include "tlMacroExpander/src/UsePython.h"
#include <array>
#include <csignal>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <pthread.h>
#include <string>
#include <unistd.h>
#include <vector>

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

#if TELV_HAS_PYTHON

/// While it is set, the loader looks for Python's libraries where there are none.
bool s_librariesHidden = false;

} // namespace

} // namespace telv

/// Stands before the loader's own function for the whole program.
extern "C" __attribute__((visibility("default"))) void* dlopen(const char* name, int flags) noexcept
{
    using Open = void* (*)(const char*, int);
    static const auto next = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "dlopen"));
    if (!telv::s_librariesHidden || std::string(name).find("libpython") == std::string::npos)
        return next(name, flags);
    return next(("/hidden/" + std::filesystem::path(name).filename().string()).c_str(), flags);
}

namespace telv
{

namespace
{

xstring XStr(const std::string& s)
{
    return xstring(SubString(s.data(), s.data() + s.size()));
}

const char s_errorPosition[] = "position";

/// The value of an expression as text, or the description of the error.
std::string Eval(const std::string& expression)
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
std::string Execute(const std::string& code)
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
std::string Raised(const std::string& lastLines)
{
    return "error: Python error: Traceback (most recent call last):\n"
           "  File \"<string>\", line 1, in <module>\n" +
           lastLines + "\n";
}

/// The same for line `line` of statements.
std::string RaisedByRun(int line, const std::string& lastLines)
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

void ExpectValues(const std::vector<Row>& rows)
{
    for (const Row& row : rows)
        EXPECT_EQ(Eval(row.source), row.expected) << row.source;
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

/// Each test has an interpreter of its own.
class PythonBridge : public testing::Test
{
protected:
    ~PythonBridge() override { UninitPython(); }
};

/// These need a process in which nothing is loaded yet.
class PythonLoadingDeathTest : public testing::Test
{
protected:
    PythonLoadingDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

// Results.

TEST_F(PythonBridge, IntegersAreDecimal)
{
    ExpectValues({
        {"0", "0"},
        {"-5", "-5"},
        {"0x1f", "31"},
        {"9223372036854775807", "9223372036854775807"},
        {"-9223372036854775807 - 1", "-9223372036854775808"},
        {"True", "1"},
        {"False", "0"},
        {"3 > 4", "0"},
    });
}

TEST_F(PythonBridge, FloatsHaveTheFormOfTheStream)
{
    ExpectValues({
        {"2.5", "2.5"},
        {"2.0", "2"},
        {"0.1", "0.1"},
        {"1e16", "1e+16"},
        {"1e15", "1000000000000000"},
        {"0.00001", "1e-05"},
        {"-0.0", "-0"},
        {"float('inf')", "inf"},
        {"-float('nan')", "nan"},
    });
}

TEST_F(PythonBridge, StringsAreTheirBytes)
{
    ExpectValues({
        {"''", ""},
        {"'a\"b'", "a\"b"},
        {"'a\\tb\\n'", "a\tb\n"},
        {"'a\\0b'", std::string("a\0b", 3)},
        {"''.join(chr(c) for c in (0, 128, 255))", std::string("\0\x80\xff", 3)},
        {"'\xc3\xa9'", "\xc3\xa9"},
        {"['a\\0', 'b']", std::string("[a\0,b]", 6)},
    });
}

TEST_F(PythonBridge, ListsNest)
{
    ExpectValues({
        {"[]", "[]"},
        {"[1]", "[1]"},
        {"['a', 1]", "[a,1]"},
        {"[1, [2.5, [True]], 'x y']", "[1,[2.5,[1]],x y]"},
        {"[[], [[]]]", "[[],[[]]]"},
        {"[[1]] * 3", "[[1],[1],[1]]"},
    });
}

TEST_F(PythonBridge, SubclassesAreWrittenByWhatTheyStore)
{
    ASSERT_EQ(Execute("class N(int):\n"
                      "  def __int__(self): raise ValueError\n"
                      "  __index__ = __str__ = __repr__ = __int__\n"
                      "class F(float):\n"
                      "  def __float__(self): raise ValueError\n"
                      "class S(str):\n"
                      "  def __str__(self): raise ValueError\n"
                      "  def __len__(self): return 0\n"
                      "class L(list):\n"
                      "  def __iter__(self): raise ValueError\n"
                      "  def __len__(self): return 0\n"
                      "  def __getitem__(self, i): raise ValueError\n"),
              "");
    ExpectValues({
        {"N(5)", "5"},
        {"F(0.5)", "0.5"},
        {"S('s')", "s"},
        {"L([1, 2])", "[1,2]"},
        {"[N(5), S('s'), L([F(2)])]", "[5,s,[2]]"},
    });
}

TEST_F(PythonBridge, OtherResultsAreErrors)
{
    const std::vector<std::string> expressions = {
        "10 ** 20",  "5L",  "u'x'",      "(1, 2)",     "()",       "{'a': 1}",
        "None",      "len", "object()",  "set()",      "1j",       "buffer('a')",
        "xrange(3)", "int", "[1, (2,)]", "[[[None]]]", "iter([])", "bytearray('a')",
    };
    for (const std::string& expression : expressions)
        EXPECT_EQ(Eval(expression), "error: Can't convert python result") << expression;
}

TEST_F(PythonBridge, ListThatContainsItselfIsAnError)
{
    ASSERT_EQ(Execute("a = []\na.append(a)\nb = [1]\nc = [2, [b]]\nb.append(c)\n"), "");
    EXPECT_EQ(Eval("a"), "error: Can't convert python result");
    EXPECT_EQ(Eval("b"), "error: Can't convert python result");
    EXPECT_EQ(Eval("[0, a]"), "error: Can't convert python result");
}

TEST_F(PythonBridge, ListsMayNestAMillionDeep)
{
    ASSERT_EQ(Execute("a = []\nfor i in xrange(1000000 - 1): a = [a]\n"), "");
    const std::string text = Eval("a");
    EXPECT_EQ(text, std::string(1000000, '[') + std::string(1000000, ']'));
    EXPECT_EQ(Execute("del a"), "");
}

TEST_F(PythonBridge, ResultReplacesTheText)
{
    xstring result("before");
    EvalPythonExpression("1 + 1", result, s_errorPosition);
    EXPECT_EQ(Str(result), "2");
}

TEST_F(PythonBridge, ErrorLeavesTheResultAndHasThePosition)
{
    for (const char* expression : {"1/0", "1 +", "None", "[1, None]"})
    {
        xstring result("before");
        try
        {
            EvalPythonExpression(expression, result, s_errorPosition);
            FAIL() << expression;
        }
        catch (const LexScannerException& e)
        {
            EXPECT_EQ(e.m_pos, s_errorPosition) << expression;
        }
        EXPECT_EQ(Str(result), "before") << expression;
    }
}

TEST_F(PythonBridge, LeadingBlanksOfAnExpressionAreDropped)
{
    ExpectValues({{" \t 1 + 1", "2"}, {"\t'a'", "a"}, {"1 ", "1"}, {"1\n", "1"}});
}

// Errors.

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

// The process.

TEST_F(PythonBridge, SignalsStayTheProcesss)
{
    constexpr std::array<int, 3> signals = {SIGINT, SIGTERM, SIGPIPE};
    const auto expectDefaults = [&](const char* after)
    {
        for (const int signal : signals)
        {
            struct sigaction action;
            ASSERT_EQ(sigaction(signal, nullptr, &action), 0);
            EXPECT_EQ(action.sa_handler, SIG_DFL) << after << ", signal " << signal;
        }
    };
    for (const int signal : signals)
        ::signal(signal, SIG_DFL);
    InitPython();
    expectDefaults("start");
    EXPECT_EQ(Execute("import signal\n"), "");
    expectDefaults("import of signal");
    EXPECT_EQ(Execute("for s in (2, 13, 15): signal.signal(s, lambda *a: None)\n"), "");
    expectDefaults("handlers of a script");
    EXPECT_EQ(Eval("[signal.signal(s, signal.SIG_IGN) and 0 for s in (2, 13, 15)]"), "[0,0,0]");
    expectDefaults("handlers of an expression");
    UninitPython();
    expectDefaults("end");
}

TEST_F(PythonBridge, EndOfPythonLeavesTheHandlerOfTheProcess)
{
    const auto previous = ::signal(SIGINT, SIG_IGN);
    EXPECT_EQ(Execute("import subprocess\n"), "");
    UninitPython();
    EXPECT_EQ(::signal(SIGINT, previous), SIG_IGN);
}

TEST_F(PythonBridge, ModulesDoNotComeFromTheCurrentDirectoryOrTheEnvironment)
{
    const test::TempDir dir;
    test::WriteFile(dir.Path("telvprobe.py"), "x = 1\n");
    const std::filesystem::path previous = std::filesystem::current_path();
    std::filesystem::current_path(dir.Path(""));
    setenv("PYTHONPATH", dir.Path("").c_str(), 1);
    setenv("PYTHONHOME", dir.Path("").c_str(), 1);
    EXPECT_EQ(Eval("'' in __import__('sys').path"), "0");
    EXPECT_EQ(Execute("import telvprobe\n"),
              RaisedByRun(1, "ImportError: No module named telvprobe"));
    unsetenv("PYTHONPATH");
    unsetenv("PYTHONHOME");
    std::filesystem::current_path(previous);
}

TEST_F(PythonBridge, ExtensionModulesLoad)
{
    EXPECT_EQ(Execute("import datetime, math, re\n"), "");
    EXPECT_EQ(Eval("math.sqrt(16)"), "4");
    EXPECT_EQ(Eval("datetime.date(2000, 2, 29).isoformat()"), "2000-02-29");
}

TEST_F(PythonBridge, DeepRecursionIsAnError)
{
    ASSERT_EQ(Execute("def f(n): return f(n + 1)\n"), "");
    const std::string message = Eval("f(0)");
    EXPECT_EQ(message.substr(message.rfind("RuntimeError")),
              "RuntimeError: maximum recursion depth exceeded\n");
}

/// Runs `operation` on a thread of its own with `stackSize` bytes of stack.
template <class Operation>
void RunOnStack(size_t stackSize, Operation operation)
{
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, stackSize);
    pthread_t thread;
    const auto start = [](void* given) -> void*
    {
        (*static_cast<Operation*>(given))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, start, &operation), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST_F(PythonBridge, DeepRecursionInADeepExpansionIsAnErrorToo)
{
    RunOnStack(size_t(512) * 1024,
               []
               {
                   ASSERT_EQ(Execute("import sys\nerrors = 0\n"
                                     "def f(n):\n  return f(n + 1)\n"
                                     "def g():\n  global errors\n"
                                     "  try:\n    f(0)\n  except RuntimeError:\n    errors += 1\n"
                                     "  return 0\n"),
                             "");
                   const std::string message = Expand("@defpython p = {g()}@def m = {p m}m");
                   EXPECT_EQ(message.substr(0, message.find('\n')),
                             "error: Expansion nested too deeply");
                   EXPECT_EQ(Eval("errors > 5"), "1");
                   UninitPython();
               });
    EXPECT_EQ(Eval("__import__('sys').getrecursionlimit()"), "1000");
}

TEST_F(PythonBridge, RecursionLimitOfTheScriptStays)
{
    ASSERT_EQ(Execute("import sys\nsys.setrecursionlimit(500)\n"), "");
    EXPECT_EQ(Eval("sys.getrecursionlimit()"), "500");
    EXPECT_EQ(Eval("sys.getrecursionlimit()"), "500");
}

TEST_F(PythonBridge, NestedExpansionLeavesPythonItsStack)
{
    const std::string message =
        Expand("@runpython{x = 0}@def f = {@runpython{x = max([x, 1])} f}f");
    EXPECT_EQ(message.substr(0, 35), "error: Expansion nested too deeply\n");
}

// Loading. The child says on its standard error what happened, for the parent to compare.

[[noreturn]] void Report(const std::string& text)
{
    const std::string line = text + "\n";
    const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
    _exit(written < 0 ? 1 : 0);
}

bool IsMapped(const std::string& name)
{
    return test::ReadFile("/proc/self/maps").value_or("").find(name) != std::string::npos;
}

/// Hides the libraries of Python while `operation` runs.
template <class Operation>
std::string WithoutLibraries(Operation operation)
{
    s_librariesHidden = true;
    std::string result = operation();
    s_librariesHidden = false;
    return result;
}

TEST_F(PythonLoadingDeathTest, LibraryIsMappedOnFirstUse)
{
    const auto child = []
    {
        Expand("@defpython p = {1}\n@def m = {x}m @runpython{}");
        const bool before = IsMapped("libpython");
        Expand("@runpython{1}");
        const bool after = IsMapped("libpython");
        Report(std::string("mapped: ") + (before ? "1" : "0") + (after ? "1" : "0"));
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), "^mapped: 01\n$");
}

TEST_F(PythonLoadingDeathTest, MissingLibraryIsALocatedErrorEachTime)
{
    const auto child = []
    {
        unsetenv("TELV_PYTHON_LIBRARY");
        const std::string source = "@defpython p = {7}\np";
        const auto expand = [&] { return Expand(source); };
        const std::string first = WithoutLibraries(expand);
        const std::string second = WithoutLibraries(expand);
        Report((first == second ? "same " : "different ") + first + " then " + expand());
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0),
                "^same error: Python 2.7 is not available: /hidden/libpython2\\.7\\.so\\.1\\.0: "
                "cannot open shared object file: No such file or directory\n"
                "    invoking python macro p then 7\n$");
}

TEST_F(PythonLoadingDeathTest, MissingLibraryIsAnErrorOfTheFunctionsToo)
{
    const auto child = []
    {
        unsetenv("TELV_PYTHON_LIBRARY");
        const std::string run = WithoutLibraries([] { return Execute("1\n"); });
        const std::string eval = WithoutLibraries([] { return Eval("1"); });
        Report(("error: " + run) == eval ? eval.substr(0, 37) : "different");
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), "^error: Python 2.7 is not available: /\n$");
}

TEST_F(PythonLoadingDeathTest, ReasonIsThatOfTheLibraryAskedFor)
{
    const auto child = []
    {
        setenv("TELV_PYTHON_LIBRARY", "libm.so.6", 1);
        Report(WithoutLibraries([] { return Eval("1"); }));
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0),
                "^error: Python 2.7 is not available: [^\n]*libm\\.so\\.6: undefined symbol: "
                "PyArg_ParseTuple\n$");
}

TEST_F(PythonLoadingDeathTest, OtherPlacesAreTriedWhenTheFirstFails)
{
    const auto child = []
    {
        setenv("TELV_PYTHON_LIBRARY", "/nonexistent/libpython2.7.so.1.0", 1);
        Report(Eval("6 * 7"));
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), "^42\n$");
}

/// Where the library is found. The parent looks, which loads it; the child inherits the answer.
std::string InstalledLibrary()
{
    if (const char* const known = std::getenv("TELV_TEST_PYTHON_LIBRARY"))
        return known;
    InitPython();
    UninitPython();
    const std::string maps = test::ReadFile("/proc/self/maps").value_or("");
    const size_t name = maps.find("libpython2.7");
    const size_t begin = maps.rfind(' ', name) + 1;
    std::string path = maps.substr(begin, maps.find('\n', name) - begin);
    setenv("TELV_TEST_PYTHON_LIBRARY", path.c_str(), 1);
    return path;
}

TEST_F(PythonLoadingDeathTest, LibraryOfTheEnvironmentComesFirst)
{
    const std::string installed = InstalledLibrary();
    const auto child = [&]
    {
        const test::TempDir dir;
        const std::string copy = dir.Path("libcopied.so");
        std::filesystem::copy_file(installed, copy);
        setenv("TELV_PYTHON_LIBRARY", copy.c_str(), 1);
        const std::string value = Eval("__import__('os').path.basename('a/b')");
        const bool mapped = IsMapped(copy);
        std::filesystem::remove_all(dir.Path(""));
        Report(value + (mapped ? " mapped" : " not mapped"));
    };
    EXPECT_EXIT(child(), testing::ExitedWithCode(0), "^b mapped\n$");
}

#else

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

#endif

} // namespace

} // namespace telv
