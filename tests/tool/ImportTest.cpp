// SPDX-License-Identifier: MIT
// Imports: where files are looked for, how often they are read, and what stays of the directives.
#include "ToolTest.h"

#include <sys/stat.h>

namespace telv::test
{

using ImportTest = ToolTest;

TEST_F(ImportTest, LooksInTheDirectoryOfTheImportingFileFirst)
{
    Write("sub/main.tl", "@import \"lib.tl\"\nm");
    Write("sub/lib.tl", "@import \"deep/x.tl\"\n@def m = {beside}\n");
    Write("sub/deep/x.tl", "@import \"y.tl\"\n");
    Write("sub/deep/y.tl", "");
    Write("lib.tl", "@def m = {current}\n");
    EXPECT_EQ(Expand({"sub/main.tl"}), "beside");
    EXPECT_EQ(Expand({}, "@import \"lib.tl\"\nm"), "current");
    EXPECT_EQ(Expand({}, "@import \"sub/lib.tl\"\nm"), "beside");
}

TEST_F(ImportTest, ThenInRegisteredDirectoriesThenInThoseOfTheCommandLine)
{
    Write("main.tl", "@import \"x.tl\"\nm");
    Write("registers.tl", "@importpath \"r\"\n@import \"x.tl\"\nm");
    Write("r/x.tl", "@def m = {registered}\n");
    Write("i1/x.tl", "@def m = {first}\n");
    Write("i2/x.tl", "@def m = {second}\n");
    EXPECT_EQ(Expand({"main.tl", "-I", "i1", "-I", "i2"}), "first");
    EXPECT_EQ(Expand({"main.tl", "-I", "none", "-I", "i2"}), "second");
    EXPECT_EQ(Expand({"registers.tl", "-I", "i1"}), "registered");
}

TEST_F(ImportTest, AnImportPathIsRelativeToItsFileAndHoldsForTheRun)
{
    Write("main.tl", "@import \"sub/paths.tl\"\n@import \"x.tl\"\nm");
    Write("sub/paths.tl", "@importpath \"lib\"\n");
    Write("sub/lib/x.tl", "@def m = {@fail(\"here\")}\n");
    ExpectFailure(Run({"main.tl"}), 1,
                  "sub/lib/x.tl(1) : error : here\n    invoking macro m\n"
                  " 1 | @def m = {@fail(\"here\")}\n"
                  "   |                ^\n"
                  "called from main.tl(3)\n");
}

TEST_F(ImportTest, TakesAnAbsoluteNameAsItIs)
{
    Write("x.tl", "@def m = {x}\n");
    EXPECT_EQ(Expand({}, "@import \"" + Path("x.tl") + "\"\nm"), "x");
    Write("sub/y.tl", "@def m = {y}\n");
    EXPECT_EQ(Expand({}, "@importpath \"" + Path("sub") + "\"\n@import \"y.tl\"\nm"), "y");
}

TEST_F(ImportTest, ReplacesDollarMacrosInNames)
{
    Write("sub/x.tl", "@def m = {x}\n");
    EXPECT_EQ(Expand({"-D", "DIR=sub"}, "@import \"$(DIR)/x.tl\"\nm"), "x");
    EXPECT_EQ(Expand({"-D", "DIR=sub"}, "@importpath \"$(DIR)\"\n@import \"x.tl\"\nm"), "x");
}

TEST_F(ImportTest, NamesAreJoinedAndNormalised)
{
    Write("sub/main.tl", "@import \"./a/../x.tl\"\n");
    Write("sub/x.tl", "@fail(\"f\")");
    ExpectFailure(Run({"./sub/main.tl"}), 1,
                  "sub/x.tl(1) : error : f\n"
                  " 1 | @fail(\"f\")\n"
                  "   |      ^\n"
                  "imported from ./sub/main.tl(1)\n");
}

TEST_F(ImportTest, ReadsAFileOnceWhateverItsName)
{
    Write("x.tl", "@println(read)\n@def m = {x}\n");
    std::filesystem::create_symlink("x.tl", Path("link.tl"));
    Write("other.tl", "@import \"link.tl\"\n");
    const ProgramResult result = Run(
        {}, "@import \"x.tl\"\n@import \"./x.tl\"\n@import \"link.tl\"\n@import \"other.tl\"\nm");
    EXPECT_EQ(result.out, "x");
    EXPECT_EQ(result.err, "read\n");
}

TEST_F(ImportTest, OnlyTheImporterSeesTheDefinitions)
{
    Write("a.tl", "@def m = {a}\n");
    Write("b.tl", "[m]@def n = {b}\n@print(m)");
    const ProgramResult result = Run({}, "@import \"a.tl\"\n@import \"b.tl\"\nm n");
    EXPECT_EQ(result.out, "a b");
    EXPECT_EQ(result.err, "m");
}

TEST_F(ImportTest, TwoImportsThatDisagreeAreAmbiguous)
{
    Write("a.tl", "@def m = {a}\n");
    Write("b.tl", "@def m = {b}\n");
    ExpectFailure(Run({}, "@import \"a.tl\"\n@import \"b.tl\"\n m"), 1,
                  "<stdin>(3) : error : Ambiguous macro name : m\n"
                  " 3 |  m\n"
                  "   |   ^\n");
}

TEST_F(ImportTest, RefusesCycles)
{
    Write("main.tl", "@import \"b.tl\"\n");
    Write("b.tl", "@import \"c.tl\"\n");
    Write("c.tl", "\n @import \"b.tl\"\n");
    ExpectFailure(Run({"main.tl"}), 1,
                  "c.tl(2) : error : Import cycle: b.tl -> c.tl -> b.tl\n"
                  " 2 |  @import \"b.tl\"\n"
                  "   |          ^\n"
                  "imported from b.tl(1)\n"
                  "imported from main.tl(1)\n");
    Write("self.tl", "@import \"self.tl\"\n");
    ExpectFailure(Run({"self.tl"}), 1,
                  "self.tl(1) : error : Import cycle: self.tl -> self.tl\n"
                  " 1 | @import \"self.tl\"\n"
                  "   |         ^\n");
}

TEST_F(ImportTest, RefusesWhatIsNoReadableFile)
{
    std::filesystem::create_directory(Path("dir"));
    mkfifo(Path("pipe").c_str(), 0600);
    for (const std::string name : {"none.tl", "dir", "pipe", "/dev/zero", ""})
        ExpectFailure(Run({}, "@import \"" + name + "\"\n"), 1,
                      "<stdin>(1) : error : Can't import file: " + name + "\n" + " 1 | @import \"" +
                          name + "\"\n" + "   |         ^\n");
}

TEST_F(ImportTest, RefusesANameWithANul)
{
    Write("li", "@def m = {x}\n");
    const ProgramResult result = Run({}, "@import \"li\\0b.tl\"\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.substr(0, 47),
              std::string("<stdin>(1) : error : Can't import file: li\0b.tl", 47));
}

TEST_F(ImportTest, TheTextOfTheDirectiveGoes)
{
    Write("x.tl", "@def m = {x}\n");
    struct Row
    {
        std::string m_source;
        std::string m_output;
    };
    const Row rows[] = {
        {"a\n@import \"x.tl\"\nb\n", "a\nb\n"},
        {"a\n \t@import \"x.tl\" \t\nb\n", "a\nb\n"},
        {"a\r\n@import \"x.tl\"\r\nb\r\n", "a\r\nb\r\n"},
        {"@import \"x.tl\"", ""},
        {"a\n@import \"x.tl\"", "a\n"},
        {"a @import \"x.tl\" b\n", "a  b\n"},
        {"@import \"x.tl\" @import \"x.tl\"\nb", "b"},
        {"@import \"x.tl\" m @import \"x.tl\"\nb", " x \nb"},
        {"@import (\"x\" + \".tl\")\nb", "b"},
        {"  @import (\"x\" + \".tl\") m\nb", " x\nb"},
        {"@ /* c */ import\n \"x.tl\"\nb", "b"},
        {"@importpath \"d\"\nb", "b"},
        {"a\n  @importpath \"d\" \nb", "a\nb"},
        {"a @importpath \"d\"\nb", "a\nb"},
        {"@importpath \"d\" @import \"x.tl\"\n\nb", "\nb"},
        {"\n@import \"x.tl\"\n\nb", "\n\nb"},
        {"@quote(@import \"x.tl\")\n@import \"x.tl\"\nb", "@import \"x.tl\"\nb"},
        {"@import \"x.tl\" // why\nb", " // why\nb"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Expand({}, row.m_source), row.m_output) << row.m_source;
}

TEST_F(ImportTest, TheTextGoesFromIndentedOutputToo)
{
    Write("x.tl", "");
    EXPECT_EQ(Expand({"--dst-indent", "2"}, "a\n@import \"x.tl\"\nb\n"), "  a\n  b\n");
    EXPECT_EQ(Expand({"--dst-indent", "2"}, "a\n@import (\"x.tl\")\n@importpath \"d\"\nb\n"),
              "  a\n  b\n");
    EXPECT_EQ(Expand({"--dst-indent", "2"}, "@import\n\"x.tl\" b\n"), "   b\n");
}

TEST_F(ImportTest, TheTextStaysWhenAsked)
{
    Write("x.tl", "");
    EXPECT_EQ(Expand({"--keep-imports"}, "@import \"x.tl\"\n@import (\"x\"+\".tl\")\n"
                                         "@importpath \"d\"\n"),
              "@import \"x.tl\"\n@import \"x.tl\"\n\n");
}

TEST_F(ImportTest, AMacroMayBeInvokedWhereItsFileWasImported)
{
    Write("lib.tl", "@def pair(a,b) = {<a,b>}\n");
    Write("top.tl", "@import \"lib.tl\"\n@def use(a) = {pair(a)}\n");
    ExpectFailure(Run({}, "@import \"top.tl\"\nuse(1)\n"), 1,
                  "top.tl(2) : error : Insufficient arguments provided for macro pair(a,b)\n"
                  "    invoking macro use(a) with a=1\n"
                  " 2 | @def use(a) = {pair(a)}\n"
                  "   |                      ^\n"
                  "called from <stdin>(2)\n");
}

// n paths and n imports are n^2 directories to look into, n files in a chain n^2 files to see.
TEST_F(ImportTest, WhatImportsRepeatCountsAsSteps)
{
    constexpr int n = 30;
    std::string paths;
    std::string imports;
    for (int i = 0; i < n; ++i)
    {
        paths += "@importpath \"p" + std::to_string(i) + "\"\n";
        imports += "@import \"f" + std::to_string(i) + ".tl\"\n";
        Write("lib/f" + std::to_string(i) + ".tl", "");
        Write("c" + std::to_string(i) + ".tl",
              i + 1 < n ? "@import \"c" + std::to_string(i + 1) + ".tl\"" : "");
    }
    const auto stepsSuffice = [&](int steps, const std::string& source)
    {
        const ProgramResult result =
            Run({"-I", "lib", "--max-steps", std::to_string(steps)}, source);
        EXPECT_EQ(result.err.find("Too many expansion steps") == std::string::npos,
                  result.status == 0)
            << result.err;
        return result.status == 0;
    };
    EXPECT_FALSE(stepsSuffice(n * n, paths + imports));
    EXPECT_TRUE(stepsSuffice(n * n + 3 * n, paths + imports));
    EXPECT_TRUE(stepsSuffice(4 * n, imports));
    EXPECT_FALSE(stepsSuffice(n * (n - 1) / 2 - n, "@import \"c0.tl\""));
    EXPECT_TRUE(stepsSuffice(n * (n - 1) / 2 + 2 * n, "@import \"c0.tl\""));
}

} // namespace telv::test
