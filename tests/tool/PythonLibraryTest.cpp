// SPDX-License-Identifier: MIT
// The library of Python that the environment names: that one or an error, with the reason.
#include "ToolTest.h"

#if TELV_HAS_PYTHON

#include "tlMacroExpander/src/UsePython.h"

namespace telv::test
{
namespace
{

/// The bytes of the library that is installed.
std::string InstalledLibrary()
{
    InitPython();
    UninitPython();
    const std::string maps = ReadFile("/proc/self/maps").value_or("");
    const size_t name = maps.find("libpython2.7");
    const size_t begin = maps.rfind(' ', name) + 1;
    return ReadFile(maps.substr(begin, maps.find('\n', name) - begin)).value_or("");
}

class PythonLibraryTest : public ToolTest
{
protected:
    /// Runs Python code with this library, which must fail for this reason.
    void ExpectUnavailable(const std::string& library, const std::string& reason)
    {
        Write("main.tl", "@runpython{print 1}\n");
        const ProgramResult result = RunWith(library);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "main.tl(1) : error : Python 2.7 is not available: " + reason +
                                  "\n    in @runpython()\nprint 1\n 1 | @runpython{print 1}\n"
                                  "   |  ^\n");
    }

    ProgramResult RunWith(const std::string& library)
    {
        return RunShell("TELV_PYTHON_LIBRARY='" + library + "' \"$TLEXPAND\" main.tl");
    }

    std::string RealPath(const std::string& name) const
    {
        return std::filesystem::canonical(Path(name)).string();
    }
};

TEST_F(PythonLibraryTest, AMissingLibraryIsNotReplacedByAnother)
{
    ExpectUnavailable("/nonexistent/libpython2.7.so.1.0",
                      "/nonexistent/libpython2.7.so.1.0: cannot open shared object file: No such "
                      "file or directory");
}

TEST_F(PythonLibraryTest, WhatIsNoLibrary)
{
    Write("libtext.so", "no library at all, but long enough for the header of one, or so it seems");
    ExpectUnavailable("./libtext.so", "./libtext.so: invalid ELF header");
}

TEST_F(PythonLibraryTest, ALibraryWithoutPython)
{
    Write("main.tl", "@runpython{print 1}\n");
    const ProgramResult result = RunWith("libm.so.6");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("libm.so.6: undefined symbol: PyArg_ParseTuple\n"), std::string::npos)
        << result.err;
}

TEST_F(PythonLibraryTest, ALibraryOfAnotherVersion)
{
    // The same library, but for what it says of itself.
    std::string bytes = InstalledLibrary();
    for (size_t at = 0; (at = bytes.find("2.7.", at)) != std::string::npos;)
        bytes.replace(at, 4, "2.6.");
    Write("lib/libpython2.6.so", bytes);
    Write("main.tl", "@runpython{print 1}\n");
    const ProgramResult result = RunWith("lib/libpython2.6.so");
    const std::string start =
        "main.tl(1) : error : Python 2.7 is not available: " + RealPath("lib/libpython2.6.so") +
        ": its version is 2.6.";
    EXPECT_EQ(result.err.substr(0, start.size()), start);
    EXPECT_EQ(result.status, 1);
}

TEST_F(PythonLibraryTest, ALibraryWhoseModulesDoNotStart)
{
    Write("lib/libpython2.7.so.1.0", InstalledLibrary());
    Write("lib/python2.7/os.py", "");
    Write("main.tl", "@runpython{print 1}\n");
    const ProgramResult result = RunWith("lib/libpython2.7.so.1.0");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.substr(0, result.err.find('(')), "main.tl");
    EXPECT_NE(result.err.find("bootStrapRanSuccessfully"), std::string::npos) << result.err;
}

TEST_F(PythonLibraryTest, ALibraryThatIsMovedTakesTheModulesOfTheBuild)
{
    Write("moved/libpython2.7.so.1.0", InstalledLibrary());
    Write("main.tl", "@runpython{import os}\n@defpython p = {os.path.basename('a/b')}\np");
    const ProgramResult result = RunWith("moved/libpython2.7.so.1.0");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "b");
}

TEST_F(PythonLibraryTest, AnEmptyNameIsNone)
{
    Write("main.tl", "@defpython p = {6 * 7}\np");
    const ProgramResult result = RunWith("");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "42");
}

TEST_F(PythonLibraryTest, TheErrorCanBeSwallowed)
{
    Write("main.tl", "@assertfails(@runpython{print 1})text");
    const ProgramResult result = RunWith("/nonexistent");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "text");
}

} // namespace
} // namespace telv::test

#endif
