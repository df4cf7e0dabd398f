// SPDX-License-Identifier: MIT
// Python code that tries to end the process, to break the bridge, or to leave another process to
// finish the run: an error or the right result.
#include "HostileTest.h"
#include "support/CommaLocale.h"

#if TELV_HAS_PYTHON

#include <chrono>
#include <csignal>
#include <thread>

namespace telv::test
{
namespace
{

class PythonTest : public HostileTest
{
protected:
    ProgramResult RunPython(const std::string& code, std::vector<std::string> arguments = {})
    {
        return Expand("@runpython\n{\n" + code + "}\nafter\n", std::move(arguments));
    }
};

TEST_F(PythonTest, AttemptsToEndTheProcessAreErrors)
{
    const char* const rows[][2] = {
        {"import sys\nsys.exit(0)\n", "SystemExit: 0"},
        {"import sys\nsys.exit('bye')\n", "SystemExit: bye"},
        {"raise SystemExit\n", "SystemExit"},
        {"raise KeyboardInterrupt\n", "KeyboardInterrupt"},
        {"quit()\n", "SystemExit"},
        {"raise ValueError(unichr(228) + unichr(20000))\n", "ValueError"},
        {"class E(Exception):\n  def __str__(self): raise E()\nraise E()\n", "E"},
        {"1/0\n", "ZeroDivisionError"},
    };
    for (const auto& row : rows)
    {
        const ProgramResult result = RunPython(row[0]);
        ExpectError(result, "main.tl(1) : error : Python error: ");
        EXPECT_NE(result.err.find(row[1]), std::string::npos) << result.err;
    }
    ExpectError(Expand("@defpython p = {__import__('sys').exit(0)}\np"),
                "main.tl(2) : error : Python error: ");
}

TEST_F(PythonTest, ResultsThatCannotBeWritten)
{
    for (const char* const expression : {"a", "b", "(1,)", "None", "u'x'", "{}", "10**30"})
    {
        const std::string source = "@runpython{a = []; a.append(a); b = [[a]]}\n@defpython p = {" +
                                   std::string(expression) + "}\np\n";
        ExpectError(Expand(source), "main.tl(3) : error : Can't convert python result\n");
    }
}

TEST_F(PythonTest, DeepLists)
{
    const size_t n = 1'000'000;
    ExpectText(Expand("@runpython\n{\nd = 1\nfor i in range(1000000):\n  d = [d]\n}\n"
                      "@defpython p = {d}\np"),
               Repeat("[", n) + "1" + Repeat("]", n));
}

TEST_F(PythonTest, StreamsThatAreGone)
{
    const char* const rows[] = {
        "import sys\ndel sys.stdout\n",
        "import sys\ndel sys.stderr\n",
        "import sys\nsys.stdout = None\nsys.stderr = None\n",
        "import sys\nsys.stdout.close = 1\n",
        "import os\nos.close(0)\n",
    };
    for (const char* const row : rows)
        ExpectText(RunPython(row), "after\n");
    for (const char* const row : rows)
        ExpectError(RunPython(std::string(row) + "raise ValueError('late')\n"),
                    "main.tl(1) : error : Python error: ");
}

TEST_F(PythonTest, OtherDirectories)
{
    Write("lib.tl", "@def imported = {found}\n");
    Expect("out.txt");
    ExpectText(Expand("@runpython{import os; os.chdir('/')}\n@import \"lib.tl\"\nimported",
                      {"-o", "out.txt"}),
               "");
    EXPECT_EQ(Read("out.txt"), "found");
}

TEST_F(PythonTest, AForkedProcessDoesNotFinishTheRun)
{
    Expect("out.txt");
    ExpectText(Expand("@runpython{import os; child = os.fork()}\n@defpython p = {child == 0}\np",
                      {"-o", "out.txt"}),
               "");
    EXPECT_EQ(Read("out.txt"), "0");
    const ProgramResult result =
        Expand("@runpython\n{\nimport os\nif os.fork() != 0:\n  os.wait()\n}\ntext\n");
    ExpectText(result, "text\n");
}

/// By a function that tells no handler of forks, where there is one.
TEST_F(PythonTest, AProcessForkedInSilenceDoesNotFinishTheRun)
{
    ExpectText(Expand("@runpython\n{\nimport os\ntry:\n  import ctypes\n"
                      "  fork = getattr(ctypes.CDLL(None), '_Fork', os.fork)\n"
                      "except ImportError:\n  fork = os.fork\n"
                      "child = fork()\nif child: os.waitpid(child, 0)\n}\ntext\n"),
               "text\n");
}

TEST_F(PythonTest, PrintsOfAnyBytes)
{
    const ProgramResult result = RunPython("print unichr(228).encode('utf8'), 'a\\tb'\n");
    EXPECT_EQ(result.err, "\xc3\xa4 a\tb\n");
    EXPECT_EQ(result.out, "after\n");
    EXPECT_EQ(RunPython("print 'a\\0b'\n").signal, 0);
    EXPECT_EQ(RunPython("print unichr(228)\n").signal, 0);
}

TEST_F(PythonTest, ErrorsThatWereSwallowedLeaveNothing)
{
    ExpectText(Expand("@assertfails(@runpython{raise ValueError('x')})\n"
                      "@assertfails(@runpython{syntax error})\n"
                      "@runpython{x = 1}\n@defpython p = {x}\np"),
               "1");
}

// The address sanitizer can't follow an exception through more than 64 MiB of stack.
#if !defined(TELV_ADDRESS_SANITIZER)

TEST_F(PythonTest, RecursionOfMacros)
{
    ExpectError(Expand("@defpython p(a) = {p(a)}\np(1)"),
                "main.tl(1) : error : Expansion nested too deeply\n");
}

#endif

#if !defined(TELV_ADDRESS_SANITIZER)

TEST_F(PythonTest, MemoryThatRunsOutInWritesIsAnErrorOfPython)
{
    LimitedOptions options;
    options.addressSpace = 1UL << 30;
    const std::string write = "sys.stderr.write(text)\n";
    const std::string code = "import sys\ntext = 'x' * (50 << 20)\n";
    const ProgramResult written =
        Expand("@runpython\n{\n" + code + "while True: " + write + "}\n", {}, options);
    ExpectError(written, "main.tl(1) : error : Python error: Traceback");
    EXPECT_NE(written.err.find("\nMemoryError\n"), std::string::npos);
    // A report that does not fit is replaced by the plain one.
    const ProgramResult reported =
        Expand("@runpython\n{\n" + code + "def hook(*a):\n  while True: " + write +
                   "sys.excepthook = hook\n1/0\n}\n",
               {}, options);
    ExpectError(reported, "main.tl(1) : error : Python error: Traceback");
    EXPECT_NE(reported.err.find("\nZeroDivisionError: "), std::string::npos);
}

#endif

TEST_F(PythonTest, RecursionOfFunctions)
{
    ExpectError(RunPython("def f(): f()\nf()\n"), "main.tl(1) : error : Python error: ");
}

TEST_F(PythonTest, NoPythonHoldsEverywhere)
{
    Write("lib.tl", "@def imported = {@runpython{x}}\n@defpython direct = {1}\n");
    Write("lib2.tl", "@runpython{x}\n");
    const char* const rows[] = {
        "@runpython{x}",
        "@defpython p = {1}\np",
        "@scope{@runpython{x}}",
        "@[@quote(@runpython{x})]",
        "@for(x in [1]){@runpython{x}}",
        "@import \"lib.tl\"\nimported",
        "@import \"lib.tl\"\ndirect",
        "@import \"lib2.tl\"",
        "@def m(a) = {a}\nm(@runpython{x})",
        "@str(@runpython{x})",
        "@def m(int i) = {i}\nm(@runpython{1})",
    };
    for (const char* const row : rows)
    {
        const ProgramResult result = Expand(row, {"--no-python"});
        EXPECT_EQ(result.status, 1) << row;
        EXPECT_NE(result.err.find(" : error : Python is disabled\n"), std::string::npos)
            << result.err;
    }
    const ProgramResult result = Expand("x", {"--no-python", "-E", "@runpython{x}"});
    ExpectError(result, "<command line>(1) : error : Python is disabled\n");
}

TEST_F(PythonTest, SignalsEndPythonToo)
{
    for (const char* const code : {"while True: pass\n", "import time\ntime.sleep(1000)\n"})
        for (const int signal : {SIGINT, SIGTERM})
        {
            Write("main.tl", "@runpython\n{\nprint 'ready'\n" + std::string(code) + "}\n");
            LimitedProgram program(CommandLine({"main.tl"}), InDirectory({}));
            for (int i = 0; i < 4000 && program.ErrorSoFar() != "ready\n"; ++i)
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            program.Send(signal);
            EXPECT_EQ(program.Finish().signal, signal);
        }
}

TEST_F(PythonTest, SignalsWorkAsBeforeAfterPython)
{
    Write("main.tl", "@runpython{x = 1}@println(ready)@while(true){}");
    LimitedProgram program(CommandLine({"main.tl"}), InDirectory({}));
    for (int i = 0; i < 4000 && program.ErrorSoFar() != "ready\n"; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    program.Send(SIGINT);
    EXPECT_EQ(program.Finish().signal, SIGINT);
}

TEST_F(PythonTest, ALocaleThatCodeSetsHasNoEffect)
{
    const CommaLocale locale;
    LimitedOptions options;
    options.environment = {"LOCPATH=" + locale.Directory()};
    const std::string set = "@runpython\n{\nimport locale\n"
                            "locale.setlocale(locale.LC_ALL, 'comma')\n"
                            "print locale.localeconv()['decimal_point']\n}\n";
    const ProgramResult result =
        Expand(set + "@defpython p = {2.5}\n@(1.5 + 1) @(0.25) p @(p * 2) @(1e-7)", {}, options);
    EXPECT_EQ(result.err, ",\n");
    EXPECT_EQ(result.out, "2.5 0.25 2.5 5 1e-07");
}

TEST_F(PythonTest, ModulesOfTheCurrentDirectoryAreNotTaken)
{
    Write("code.py", "raise ValueError('taken')\n");
    Write("string.py", "raise ValueError('taken')\n");
    ExpectText(RunPython("import string\n"), "after\n");
}

} // namespace
} // namespace telv::test

#endif
