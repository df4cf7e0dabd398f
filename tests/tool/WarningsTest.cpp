// SPDX-License-Identifier: MIT
// --warn and --werror: what is chosen, where it goes, and what a warning does to a run. What each
// warning says, and of what it is silent, is in tests/cases/warnings.
#include "ToolTest.h"

namespace telv::test
{

namespace
{

class WarningsTest : public ToolTest
{
protected:
    /// Text that each kind of warning has something to say of.
    static constexpr const char* s_text = "@def host = {h}\n"
                                          "@def never = {n}\n"
                                          "@scope\n{\n  a\n  bc}\n"
                                          "@forr http://host/\n"
                                          "hots() \n"
                                          "@def block =\n{\n\tx\n\ty\n}\n"
                                          "\tblock\n";

    /// The names at the ends of the warnings, each behind a blank.
    static std::string NamesIn(const std::string& err)
    {
        std::string names;
        for (size_t end = err.find("]\n"); end != std::string::npos; end = err.find("]\n", end + 1))
        {
            const size_t begin = err.rfind('[', end) + 1;
            names += " " + err.substr(begin, end - begin);
        }
        return names;
    }

    std::string NamesOf(const std::vector<std::string>& arguments) const
    {
        const ProgramResult result = Run(arguments, s_text);
        EXPECT_EQ(result.status, 0);
        return NamesIn(result.err);
    }
};

} // namespace

TEST_F(WarningsTest, ListChoosesThem)
{
    EXPECT_EQ(NamesOf({}), " dropped-text");
    EXPECT_EQ(NamesOf({"--warn", "none"}), "");
    EXPECT_EQ(NamesOf({"--warn=unused,hidden-name"}), " hidden-name unused unused");
    EXPECT_EQ(NamesOf({"--warn", "unknown-name"}), " unknown-name");
    EXPECT_EQ(NamesOf({"--warn", "unknown-directive"}), " unknown-directive");
    EXPECT_EQ(NamesOf({"--warn", "tabs"}), " tabs");
    EXPECT_EQ(NamesOf({"--warn", "all"}),
              " dropped-text unknown-directive hidden-name unknown-name tabs unused unused");
    EXPECT_EQ(NamesOf({"--warn", "all,none,tabs"}), " tabs");
    EXPECT_EQ(NamesOf({"--warn", "all", "--warn", "tabs"}), " tabs");
}

TEST_F(WarningsTest, UnknownNameIsAUsageError)
{
    const std::string wanted = "all, none or names out of dropped-text, unknown-directive, "
                               "unknown-name, hidden-name, unused, tabs are wanted\n"
                               "Try 'tlexpand --help' for more information.\n";
    ExpectFailure(Run({"--warn", "tab"}), 2, "tlexpand: bad value 'tab' for --warn: " + wanted);
    ExpectFailure(Run({"--warn", ""}), 2, "tlexpand: bad value '' for --warn: " + wanted);
}

TEST_F(WarningsTest, OutputIsTheSame)
{
    EXPECT_EQ(Run({"--warn", "all"}, s_text).out, Run({"--warn", "none"}, s_text).out);
}

TEST_F(WarningsTest, OutputsAreNotWrittenWhenTheyAreErrors)
{
    Write("out", "before");
    const std::vector<std::string> arguments = {"--werror", "-o", "out", "--map", "map"};
    ProgramResult result = Run(arguments, s_text);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(NamesIn(result.err), " dropped-text");
    EXPECT_TRUE(result.err.ends_with("tlexpand: 1 warning is an error because of --werror\n"));
    EXPECT_EQ(Read("out"), "before");
    EXPECT_EQ(Names(), " out");
    result = Run({"--werror", "--warn", "tabs,dropped-text"}, s_text);
    EXPECT_TRUE(result.err.ends_with("tlexpand: 2 warnings are errors because of --werror\n"));
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(Run(arguments, "good").status, 0);
    EXPECT_EQ(Read("out"), "good");
    EXPECT_EQ(Run({"--werror", "--warn", "none"}, s_text).status, 0);
}

TEST_F(WarningsTest, EachPlaceIsNamedOnce)
{
    EXPECT_EQ(Run({"--warn", "all"}, "@def a = {@zzz}@for(i in [1, 2, 3]) {a a}a").err,
              "<stdin>(1) : warning : '@zzz' is no directive and stays in the text "
              "[unknown-directive]\n"
              " 1 | @def a = {@zzz}@for(i in [1, 2, 3]) {a a}a\n"
              "   |           ^\n"
              "called from <stdin>(1)\n"
              "in round 1 of the loop at <stdin>(1)\n");
}

TEST_F(WarningsTest, ImportsAndTheCommandLineAreNamed)
{
    Write("main.tl", "@import \"lib.tl\"\n");
    Write("lib.tl", "@zzz\n@def a = {1}\n");
    EXPECT_EQ(Run({"--warn", "unknown-directive", "-E", "@yyy", "main.tl"}).err,
              "<command line>(1) : warning : '@yyy' is no directive and stays in the text "
              "[unknown-directive]\n"
              " 1 | @yyy\n"
              "   | ^\n"
              "lib.tl(1) : warning : '@zzz' is no directive and stays in the text "
              "[unknown-directive]\n"
              " 1 | @zzz\n"
              "   | ^\n"
              "imported from main.tl(1)\n");
}

TEST_F(WarningsTest, TextThatIsMadeHasThePlaceOfItsMaker)
{
    EXPECT_EQ(Run({"--warn", "all"}, "x\n@[@@zz@@z @(\"@\")yy]\n").err,
              "<stdin>(2) : warning : '@yy' is no directive and stays in the text "
              "[unknown-directive]\n"
              " 2 | @[@@zz@@z @(\"@\")yy]\n"
              "   | ^\n");
}

TEST_F(WarningsTest, TheyStandBehindWhatWasPrintedBefore)
{
    const std::string err = Run({"--warn", "all"}, "@println(first)@zzz@println(last)").err;
    EXPECT_TRUE(err.starts_with("first\n<stdin>(1) : warning"));
    EXPECT_TRUE(err.ends_with("^\nlast\n"));
}

TEST_F(WarningsTest, ColourIsLikeThatOfErrors)
{
    const std::string err = Run({"--warn", "all", "--color", "always"}, "@zzz").err;
    EXPECT_TRUE(err.starts_with("\x1b[1m<stdin>(1) : \x1b[35mwarning\x1b[0m\x1b[1m : '@zzz'"));
    EXPECT_NE(err.find("[unknown-directive]\x1b[0m\n"), std::string::npos);
}

TEST_F(WarningsTest, LenientTextIsWatchedToo)
{
    EXPECT_EQ(NamesIn(Run({"--lenient", "--warn", "all"},
                          "@def name = {n}name it's\nit's name that's 0..1 1em\n")
                          .err),
              " hidden-name");
}

// What a file brings are its definitions and those of its imports; others may use them.
TEST_F(WarningsTest, ImportsThatShareFilesAreJudgedEachWithItsOwn)
{
    Write("low.tl", "@def low = {1}\n");
    Write("left.tl", "@import \"low.tl\"\n@def left = {low}\n");
    Write("right.tl", "@import \"low.tl\"\n@def right = {2}\n");
    const auto unused = [&](const std::string& text)
    {
        const ProgramResult result = Run({"--warn=unused"}, text);
        std::string lines;
        const std::string before = "<stdin>(";
        for (size_t at = 0; (at = result.err.find(before, at)) != std::string::npos; ++at)
            lines += result.err[at + before.size()];
        return lines;
    };
    // Only `left` uses `low`.
    EXPECT_EQ(unused("@import \"left.tl\"\n"), "1");
    EXPECT_EQ(unused("@import \"right.tl\"\n"), "1");
    EXPECT_EQ(unused("@import \"left.tl\"\n@import \"right.tl\"\n"), "1");
    EXPECT_EQ(unused("@import \"low.tl\"\n@import \"left.tl\"\n"), "2");
    EXPECT_EQ(unused("@import \"right.tl\"\n@import \"right.tl\"\n"), "12");
    EXPECT_EQ(unused("@import \"right.tl\"\n@import \"left.tl\"\nright"), "2");
    EXPECT_EQ(unused("@import \"right.tl\"\n@import \"left.tl\"\nlow"), "");
}

} // namespace telv::test
