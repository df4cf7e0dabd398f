// SPDX-License-Identifier: MIT
// --check: the output is compared, and nothing is written.
#include "ToolTest.h"

#include <sys/stat.h>

namespace telv::test
{

using CheckTest = ToolTest;

TEST_F(CheckTest, AnOutputThatIsRightIsSilent)
{
    Write("main.tl", "@import \"lib.tl\"\nx\n");
    Write("lib.tl", "@def x = {text}");
    Expand({"-o", "out", "main.tl"});
    EXPECT_EQ(Expand({"--check", "-o", "out", "main.tl"}), "");
    EXPECT_EQ(Expand({"-o", "out", "main.tl", "--check"}), "");
}

TEST_F(CheckTest, TheDifferenceIsPrintedAndNothingIsWritten)
{
    Write("main.tl", "1\n2\n3\n4\n5\n6\n7\n8\n9\nten\n");
    Write("out", "1\n2\n3\n4\n5\nsix\n7\n8\n9\nten");
    const ProgramResult result = Run({"--check", "-o", "out", "main.tl"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out,
              "--- out\n+++ out\t(expanded)\n@@ -3,8 +3,8 @@\n 3\n 4\n 5\n-six\n+6\n 7\n 8\n 9\n"
              "-ten\n\\ No newline at end of file\n+ten\n");
    EXPECT_EQ(Read("out"), "1\n2\n3\n4\n5\nsix\n7\n8\n9\nten");
    EXPECT_EQ(Names(), " main.tl out");
}

TEST_F(CheckTest, ChangesFarApartStandInHunksOfTheirOwn)
{
    std::string there;
    std::string made;
    for (int i = 1; i <= 20; ++i)
    {
        there += std::to_string(i) + "\n";
        made += i == 2 ? "" : std::to_string(i) + "\n";
        if (i == 17)
            made += "new\n";
    }
    Write("main.tl", made);
    Write("out", there);
    EXPECT_EQ(Run({"--check", "-o", "out", "main.tl"}).out,
              "--- out\n+++ out\t(expanded)\n@@ -1,5 +1,4 @@\n 1\n-2\n 3\n 4\n 5\n"
              "@@ -15,6 +14,7 @@\n 15\n 16\n 17\n+new\n 18\n 19\n 20\n");
}

TEST_F(CheckTest, AnOutputThatIsNotThereIsAllNew)
{
    Write("main.tl", "one\ntwo\n");
    const ProgramResult result = Run({"--check", "-o", "out", "main.tl"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "--- /dev/null\n+++ out\t(expanded)\n@@ -0,0 +1,2 @@\n+one\n+two\n");
    EXPECT_EQ(Names(), " main.tl");
}

TEST_F(CheckTest, NorIsItWhenItsDirectoryIsNotThere)
{
    Write("main.tl", "one\n");
    const ProgramResult result = Run({"--check", "-o", "none/out", "main.tl"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "--- /dev/null\n+++ none/out\t(expanded)\n@@ -0,0 +1 @@\n+one\n");
    EXPECT_EQ(Names(), " main.tl");
}

TEST_F(CheckTest, ADirectoryCannotBeRead)
{
    Write("main.tl", "one\n");
    Write("folder/file", "");
    ExpectFailure(Run({"--check", "-o", "folder", "main.tl"}), 2,
                  "tlexpand: can't read 'folder': Is a directory\n");
    ExpectFailure(Run({"--check", "-o", "none/", "main.tl"}), 2,
                  "tlexpand: can't read 'none/': Is a directory\n");
    ExpectFailure(Run({"--check", "-o", "main.tl/out", "main.tl"}), 2,
                  "tlexpand: can't read 'main.tl/out': Not a directory\n");
}

TEST_F(CheckTest, AnEmptyOutputThatIsNotThereIsNamed)
{
    Write("main.tl", "");
    ExpectFailure(Run({"--check", "-o", "out", "main.tl"}), 1,
                  "tlexpand: 'out' is not there; its text would be empty\n");
    Write("out", "");
    EXPECT_EQ(Expand({"--check", "-o", "out", "main.tl"}), "");
}

TEST_F(CheckTest, TheFileBehindALinkIsNamed)
{
    Write("main.tl", "new\n");
    Write("sub/file", "old\n");
    std::filesystem::create_symlink("file", Path("sub/link"));
    std::filesystem::create_symlink("sub/link", Path("out"));
    const ProgramResult result = Run({"--check", "-o", "out", "main.tl"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "--- sub/file\n+++ sub/file\t(expanded)\n@@ -1 +1 @@\n-old\n+new\n");
    EXPECT_EQ(RunShell("$TLEXPAND --check -o out main.tl | patch -p0").status, 0);
    EXPECT_EQ(Read("sub/file"), "new\n");
    EXPECT_EQ(Expand({"--check", "-o", "out", "main.tl"}), "");
}

TEST_F(CheckTest, AnEmptyExpansionTakesAllLines)
{
    Write("main.tl", "");
    Write("out", "one\n");
    EXPECT_EQ(Run({"--check", "-o", "out", "main.tl"}).out,
              "--- out\n+++ out\t(expanded)\n@@ -1 +0,0 @@\n-one\n");
}

TEST_F(CheckTest, PatchMakesTheOutput)
{
    std::string text;
    for (int i = 0; i < 200; ++i)
        text += "line " + std::to_string(i * i % 17) + "\n";
    Write("out", text);
    Write("main.tl", "first\n" + text.substr(300, 700) + "between\n" + text.substr(200) + "last");
    const ProgramResult result = RunShell("$TLEXPAND --check -o out main.tl > difference\n"
                                          "patch -s out difference && cmp out main.tl");
    EXPECT_EQ(result.status, 0) << result.out << result.err;
}

TEST_F(CheckTest, ATerminalIsNotSentTheCharactersOfAFile)
{
    Write("main.tl", "// \x1b[2J\t\xe2\x80\xae.\n");
    Write("out", "old\n");
    const std::string command = "\"$TLEXPAND\" --check -o out main.tl";
    const ProgramResult piped = RunShell(command + "| cat");
    EXPECT_NE(piped.out.find("\n+// \x1b[2J\t\xe2\x80\xae.\n"), std::string::npos) << piped.out;
    const ProgramResult shown =
        RunShell("export TLEXPAND; script -qec '" + command + "' /dev/null </dev/null");
    EXPECT_EQ(shown.status, 1);
    EXPECT_NE(shown.out.find("\r\n+// \\x1b[2J\t\\xe2\\x80\\xae.\r\n"), std::string::npos)
        << shown.out;
}

TEST_F(CheckTest, ANameThatPatchWouldMisreadIsQuoted)
{
    Write("main.tl", "1\n");
    for (const auto& [name, quoted] : {std::pair<std::string, std::string>{"a b", "\"a b\""},
                                       {"a\tb", "\"a\\tb\""},
                                       {"a\"\\\n\x1b", "\"a\\\"\\\\\\n\\033\""},
                                       {"\xc3\xa4", "\xc3\xa4"}})
    {
        Write(name, "2\n");
        EXPECT_EQ(Run({"--check", "-o", name, "main.tl"}).out,
                  "--- " + quoted + "\n+++ " + quoted + "\t(expanded)\n@@ -1 +1 @@\n-2\n+1\n");
    }
    for (const std::string name : {"a b", "a\tb", "\xc3\xa4"})
    {
        const ProgramResult result =
            RunShell("$TLEXPAND --check -o '" + name + "' main.tl > difference\n" +
                     "patch -s -p0 < difference");
        EXPECT_EQ(result.status, 0) << result.out << result.err;
        EXPECT_EQ(Read(name), "1\n");
    }
}

TEST_F(CheckTest, WhatTheTextPrintsIsNotPartOfTheDifference)
{
    Write("main.tl", "@println(seen)x\n");
    Write("out", "y\n");
    const ProgramResult result = Run({"--check", "-o", "out", "main.tl"});
    EXPECT_EQ(result.err, "seen\n");
    EXPECT_EQ(result.out, "--- out\n+++ out\t(expanded)\n@@ -1 +1 @@\n-y\n+x\n");
}

TEST_F(CheckTest, ErrorsAreThoseOfAnExpansion)
{
    Write("main.tl", "@fail(stop)");
    Write("out", "y\n");
    const ProgramResult result = Run({"--check", "-o", "out", "main.tl"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, "");
    EXPECT_NE(result.err.find("main.tl(1) : error : "), std::string::npos);
    EXPECT_EQ(Read("out"), "y\n");
}

TEST_F(CheckTest, OnlyARegularFileIsCompared)
{
    Write("main.tl", "@println(seen)x\n");
    ASSERT_EQ(mkfifo(Path("pipe").c_str(), 0600), 0);
    ExpectFailure(RunShell("timeout 20 $TLEXPAND --check -o pipe main.tl"), 2,
                  "tlexpand: can't compare 'pipe' with the expansion: it is no regular file\n");
    ExpectFailure(
        Run({"--check", "-o", "/dev/null", "main.tl"}), 2,
        "tlexpand: can't compare '/dev/null' with the expansion: it is no regular file\n");
}

TEST_F(CheckTest, NeedsAnOutputAndNoOther)
{
    ExpectFailure(Run({"--check"}, "x"), 2,
                  "tlexpand: --check needs -o: the file that is compared with the expansion" +
                      s_hint);
    ExpectFailure(
        Run({"--check", "-o", "out", "--map", "map"}, "x"), 2,
        "tlexpand: --check writes nothing: leave out --map, --source-map, --depfile and --trace" +
            s_hint);
}

} // namespace telv::test
