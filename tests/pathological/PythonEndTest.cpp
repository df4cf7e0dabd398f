// SPDX-License-Identifier: MIT
// The end of a run that used Python, and what the environment may not decide.
#include "HostileTest.h"

#if TELV_HAS_PYTHON

#include <filesystem>

namespace telv::test
{
namespace
{

using PythonEndTest = HostileTest;

TEST_F(PythonEndTest, WhatWasLeftOpenIsWritten)
{
    Expect("a");
    Expect("b");
    Expect("c.gz");
    const std::string source = "@runpython\n{\nimport io, gzip\n"
                               "a = io.open('a', 'wb'); a.write(b'first')\n"
                               "b = io.open('b', 'w'); b.write(u'second')\n"
                               "c = gzip.open('c.gz', 'wb'); c.write('third')\n}\ntext\n";
    ExpectText(Expand(source), "text\n");
    EXPECT_EQ(Read("a"), "first");
    EXPECT_EQ(Read("b"), "second");
    ExpectText(Expand("@defpython p = {__import__('gzip').open('c.gz').read()}p"), "third");
}

TEST_F(PythonEndTest, FunctionsOfTheEndRunBeforeOutputsTakeTheirPlaces)
{
    Write("out.txt", "earlier");
    const std::string define = "@runpython\n{\nimport atexit, sys\ndef end():\n"
                               "  print 'end:', open('out.txt').read()\n  ";
    const std::string finish = "\natexit.register(end)\n}\ntext\n";
    const ProgramResult fine = Expand(define + "pass" + finish, {"-o", "out.txt"});
    EXPECT_EQ(fine.status, 0) << Describe(fine);
    EXPECT_EQ(fine.out, "end: earlier\n");
    EXPECT_EQ(Read("out.txt"), "text\n");
    for (const char* const code : {"raise ValueError('late')", "sys.exit(0)"})
    {
        Write("out.txt", "earlier");
        const ProgramResult failed = Expand(define + code + finish, {"-o", "out.txt"});
        EXPECT_EQ(failed.status, 1) << Describe(failed);
        const std::string start = "main.tl(1) : error : Python error: Traceback";
        EXPECT_EQ(failed.err.substr(0, start.size()), start);
        EXPECT_EQ(Read("out.txt"), "earlier");
    }
}

TEST_F(PythonEndTest, AFileThatCannotBeWrittenIsAnErrorOfTheRun)
{
    for (const char* const open :
         {"import io; a = io.open('/dev/full', 'wb')", "a = open('/dev/full', 'wb')",
          "import gzip; a = gzip.open('/dev/full', 'wb')",
          "import os; a = os.fdopen(os.open('/dev/full', os.O_WRONLY), 'wb')"})
    {
        SCOPED_TRACE(open);
        Write("out.txt", "earlier");
        const ProgramResult result =
            Expand("@runpython{" + std::string(open) + "; a.write(b'x')}\ntext", {"-o", "out.txt"});
        EXPECT_EQ(result.status, 1);
        EXPECT_NE(result.err.find("No space left on device"), std::string::npos) << result.err;
        EXPECT_EQ(Read("out.txt"), "earlier");
    }
}

TEST_F(PythonEndTest, ThreadsAreWaitedFor)
{
    Expect("a");
    ExpectText(
        Expand("@runpython\n{\nimport threading, time\ndef f():\n  time.sleep(0.05)\n"
               "  open('a', 'w').write('late')\nthreading.Thread(target=f).start()\n}\ntext"),
        "text");
    EXPECT_EQ(Read("a"), "late");
    ExpectText(Expand("@runpython\n{\nimport threading, time\n"
                      "t = threading.Thread(target=time.sleep, args=(1000,))\nt.daemon = True\n"
                      "t.start()\n}\ntext"),
               "text");
}

TEST_F(PythonEndTest, TheEnvironmentDecidesNothing)
{
    const std::string trap = "open('trapped', 'w').write(__file__)\n";
    for (const char* const base : {"base", "home/.local"})
    {
        const std::string site = std::string(base) + "/lib/python2.7/site-packages/";
        std::filesystem::create_directories(Path(site));
        WriteFile(Path(site + "usercustomize.py"), trap);
        WriteFile(Path(site + "sitecustomize.py"), trap);
        WriteFile(Path(site + "x.pth"), "import sys; open('trapped', 'w')\n");
    }
    std::filesystem::create_directories(Path("modules"));
    WriteFile(Path("modules/sitecustomize.py"), trap);
    WriteFile(Path("start.py"), trap);
    for (const char* const name : {"base", "home", "modules", "start.py"})
        Expect(name);
    const std::string show =
        "@runpython\n{\nimport sys, site\n"
        "print sys.path, sys.executable, sys.prefix, sys.getfilesystemencoding(), sys.flags\n"
        "print site.ENABLE_USER_SITE, hash('text')\n}\ntext";
    const ProgramResult plain = Expand(show);
    LimitedOptions options;
    options.environment = {"HOME=" + Path("home"),
                           "PYTHONUSERBASE=" + Path("base"),
                           "PYTHONPATH=" + Path("modules"),
                           "PYTHONHOME=" + Path("modules"),
                           "PYTHONSTARTUP=" + Path("start.py"),
                           "PYTHONIOENCODING=latin-1",
                           "PYTHONHASHSEED=7",
                           "PYTHONOPTIMIZE=2",
                           "PYTHONVERBOSE=1",
                           "PYTHONINSPECT=1",
                           "PYTHONUNBUFFERED=1",
                           "PYTHONCASEOK=1",
                           "PATH=" + Path("modules"),
                           "LC_ALL=C.UTF-8",
                           "LANG=de_DE.UTF-8"};
    const ProgramResult hostile = Expand(show, {}, options);
    EXPECT_EQ(plain.status, 0);
    EXPECT_EQ(hostile.err, plain.err);
    EXPECT_EQ(hostile.out, "text");
    EXPECT_NE(plain.err.find("\nFalse "), std::string::npos) << plain.err;
}

TEST_F(PythonEndTest, ModulesOfAGivenDirectory)
{
    std::filesystem::create_directories(Path("py"));
    WriteFile(Path("py/names.py"), "x = 'from py'\n");
    Expect("py");
    ExpectText(Expand("@runpython{import os; os.chdir('/'); import names}\n"
                      "@defpython p = {names.x}p",
                      {"--python-path", "none", "--python-path", "py"}),
               "from py");
    EXPECT_FALSE(std::filesystem::exists(Path("py/names.pyc")));
    ExpectError(Expand("@runpython{import names}"), "main.tl(1) : error : Python error: ");
}

TEST_F(PythonEndTest, TracebacksQuoteTheSource)
{
    ExpectError(Expand("text\n@runpython\n{\n    x = 1\n\n    1/0 # here\n}\n"),
                "main.tl(2) : error : Python error: Traceback (most recent call last):\n"
                "  File \"main.tl\", line 6, in <module>\n    1/0 # here\n"
                "ZeroDivisionError: integer division or modulo by zero\n\n"
                "    in @runpython()\nx = 1\n\n1/0 # here\n");
    Write("lib.tl", "\n\n@runpython\n{\ndef f():\n    raise ValueError(1)\n}\n");
    const ProgramResult later = Expand("@import \"lib.tl\"\n@runpython{f()}");
    EXPECT_NE(later.err.find("  File \"main.tl\", line 2, in <module>\n    @runpython{f()}\n"
                             "  File \"lib.tl\", line 6, in f\n    raise ValueError(1)\n"),
              std::string::npos)
        << later.err;
    const ProgramResult syntax = Expand("\n\n@runpython\n{\n  x = = 1\n}\n");
    EXPECT_NE(syntax.err.find("  File \"main.tl\", line 5\n"), std::string::npos) << syntax.err;
    const ProgramResult made = Expand("@[@quote(@runpython{1/0})]");
    EXPECT_NE(made.err.find("  File \"<expanded text>\", line 1, in <module>\n"), std::string::npos)
        << made.err;
}

} // namespace
} // namespace telv::test

#endif
