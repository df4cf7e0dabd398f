// SPDX-License-Identifier: MIT
// --python-path: where modules are looked for, in what order, and from where names are meant.
#include "ToolTest.h"

#if TELV_HAS_PYTHON

namespace telv::test
{

class PythonPathTest : public ToolTest
{
protected:
    void SetUp() override
    {
        Write("one/names.py", "x = 'one'\n");
        Write("one/first.py", "y = 'first'\n");
        Write("two/names.py", "x = 'two'\n");
        Write("two/second.py", "z = 'second'\n");
        Write("main.tl", "@runpython{import names}@defpython p = {names.x}p");
    }
};

TEST_F(PythonPathTest, TheFirstDirectoryThatHasTheModuleCounts)
{
    EXPECT_EQ(Expand({"--python-path", "one", "--python-path", "two", "main.tl"}), "one");
    EXPECT_EQ(Expand({"--python-path", "two", "--python-path", "one", "main.tl"}), "two");
    Write("main.tl", "@runpython{import names, first, second}"
                     "@defpython p = {names.x + first.y + second.z}p");
    EXPECT_EQ(Expand({"--python-path", "two", "--python-path", "one", "main.tl"}),
              "twofirstsecond");
}

TEST_F(PythonPathTest, ItStandsBeforePythonsOwnModules)
{
    Write("one/calendar.py", "x = 'own'\n");
    Write("main.tl", "@runpython{import calendar}@defpython p = {calendar.x}p");
    EXPECT_EQ(Expand({"--python-path", "one", "main.tl"}), "own");
    EXPECT_EQ(Run({"main.tl"}).status, 1);
}

TEST_F(PythonPathTest, NamesAreMeantFromWhereTheToolWasStarted)
{
    Write("sub/main.tl", "@runpython{import os; os.chdir('/'); import names}"
                         "@defpython p = {names.x}p");
    EXPECT_EQ(Expand({"--python-path", "one", "sub/main.tl"}), "one");
    EXPECT_EQ(Expand({"--python-path", "sub/../two", "sub/main.tl"}), "two");
    EXPECT_EQ(Expand({"--python-path", Path("two"), "sub/main.tl"}), "two");
}

TEST_F(PythonPathTest, TheDirectoryOfTheMainFileIsNotOnIt)
{
    Write("sub/beside.py", "x = 'beside'\n");
    Write("sub/main.tl", "@runpython{import beside}");
    const ProgramResult result = Run({"sub/main.tl"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("ImportError: No module named beside\n"), std::string::npos);
    EXPECT_EQ(Expand({"--python-path", "sub", "sub/main.tl"}), "");
}

// As Python itself passes over what is not there.
TEST_F(PythonPathTest, AMissingDirectoryIsPassedOver)
{
    EXPECT_EQ(Expand({"--python-path", "none", "--python-path", "one", "main.tl"}), "one");
    const ProgramResult result = Run({"--python-path", "none", "main.tl"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("ImportError: No module named names\n"), std::string::npos);
    // Without Python in the text it says nothing at all.
    EXPECT_EQ(Expand({"--python-path", "none"}, "text"), "text");
}

TEST_F(PythonPathTest, EachFileOfABatchHasIt)
{
    Write("a.tl", "@runpython{import os, sys, names; sys.path.insert(0, '/mine'); os.chdir('/')}"
                  "@defpython p = {names.x}p");
    Write("b.tl", "@runpython{import sys, second}"
                  "@defpython p = {sys.path.count('/mine')}"
                  "@defpython q = {sum(1 for d in sys.path if d.endswith(('one', 'two')))}"
                  "@defpython r = {second.z}p q r");
    for (const char* const jobs : {"1", "2"})
    {
        const std::string folder = std::string("out") + jobs;
        Expand({"--out-dir", folder, "-j", jobs, "--python-path", "one", "--python-path", "two",
                "a.tl", "b.tl"});
        EXPECT_EQ(Read(folder + "/a"), "one");
        EXPECT_EQ(Read(folder + "/b"), "0 2 second");
    }
}

TEST_F(PythonPathTest, AProjectHasIt)
{
    Write("p", "@runpython{import names}@defpython quoted = {repr(names.x).replace(\"'\", '\"')}\n"
               "$A = quoted\n");
    const std::string json = Expand({"project", "--python-path", "two", "p"});
    EXPECT_NE(json.find("{\"name\":\"A\",\"value\":\"two\"}"), std::string::npos) << json;
}

TEST_F(PythonPathTest, NothingIsWrittenBesideTheModules)
{
    Expand({"--python-path", "one", "main.tl"});
    EXPECT_EQ(Read("one/names.pyc"), "(none)");
}

// Nor do the variables of the locale decide what a terminal's encoding is called.
TEST_F(PythonPathTest, TheEncodingOfATerminalIsNotTheLocales)
{
    Write("main.tl", "@runpython{\nimport sys\nprint(sys.stdin.encoding, sys.__stdout__.encoding, "
                     "sys.__stderr__.encoding)\n}\n");
    for (const std::string locale : {"C", "C.UTF-8"})
    {
        const ProgramResult shown = RunShell("export TLEXPAND LC_ALL=" + locale +
                                             "; script -qec '\"$TLEXPAND\" main.tl' /dev/null "
                                             "</dev/null");
        EXPECT_NE(shown.out.find("('UTF-8', 'UTF-8', 'UTF-8')"), std::string::npos) << shown.out;
    }
}

} // namespace telv::test

#endif
