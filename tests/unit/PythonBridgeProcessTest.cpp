// SPDX-License-Identifier: MIT
// What a script can do to the process: signals, the places of modules, the stack.
#if TELV_HAS_PYTHON

#include "PythonBridgeSupport.h"
#include "support/Files.h"
#include "support/TempDir.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <pthread.h>

namespace telv::python
{

namespace
{

TEST_F(PythonBridge, RunIsToldWhenPythonCodeBeginsAndEnds)
{
    const std::vector<Row> rows = {
        {"@runpython{x = 1}", "begin end "},
        {"@runpython{}", ""},
        {"@runpython{1/0}", "begin failed "},
        {"@runpython{1 +}", "begin failed "},
        {"@assertfails(@runpython{1/0})", "begin failed "},
        {"@defpython p = {1}\n@assertfails(p @fail(\"no\"))", "begin end "},
        {"@defpython p = {None}\np", "begin failed "},
        {"@defpython p(int a) = {a}\np(1) p(2)", "begin end begin end "},
        {"@runpython{@fail(\"no\")}", ""},
    };
    for (const Row& row : rows)
    {
        ExpansionRun run;
        std::string calls;
        run.m_pythonBegins = [&] { calls += "begin "; };
        run.m_pythonEnded = [&](bool succeeded) { calls += succeeded ? "end " : "failed "; };
        const ExpansionRunScope scope(run);
        Expand(row.source);
        EXPECT_EQ(calls, row.expected) << row.source;
    }
}

TEST_F(PythonBridge, RunIsToldAfterTheObjectsAreReleased)
{
    ASSERT_EQ(Execute("ended = []\nclass C(str):\n  def __del__(self): ended.append(1)\n"), "");
    ExpansionRun run;
    std::string released;
    run.m_pythonEnded = [&](bool)
    {
        if (!released.empty())
            return;
        released = "?";
        released = Eval("len(ended)");
    };
    const ExpansionRunScope scope(run);
    EXPECT_EQ(Eval("C('x')"), "x");
    EXPECT_EQ(released, "1");
}

TEST_F(PythonBridge, SignalsStayTheProcesss)
{
    constexpr std::array<int, 4> signals = {SIGINT, SIGTERM, SIGPIPE, SIGXFSZ};
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
    EXPECT_EQ(Execute("for s in (2, 13, 15, 25): signal.signal(s, lambda *a: None)\n"), "");
    expectDefaults("handlers of a script");
    EXPECT_EQ(Eval("[signal.signal(s, signal.SIG_IGN) and 0 for s in (2, 13, 15, 25)]"),
              "[0,0,0,0]");
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

} // namespace

} // namespace telv::python

#endif
