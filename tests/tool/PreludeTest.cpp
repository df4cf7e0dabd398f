// -D and -E: definitions that every file sees.
#include "ToolTest.h"

namespace telv::test
{

using PreludeTest = ToolTest;

TEST_F(PreludeTest, DollarMacrosAreSeenInEveryFile)
{
    Write("lib.tl", "@def inLib = {\"$(ROOT)\" _ROOT_}\n@print(_ROOT_)");
    const ProgramResult result =
        Run({"-D", "ROOT=/usr"}, "@import \"lib.tl\"\ninLib \"$(ROOT)/x\" _ROOT_\n");
    EXPECT_EQ(result.out, "\"/usr\" /usr \"/usr/x\" /usr\n");
    EXPECT_EQ(result.err, "/usr");
}

TEST_F(PreludeTest, TheLastDefinitionOfAMacroCounts)
{
    EXPECT_EQ(Expand({"-D", "A=1", "-D", "A=2"}, "_A_"), "2");
    EXPECT_EQ(Expand({"-D", "A=1", "-E", "@$A = \"2\""}, "_A_ \"$(A)\""), "2 \"2\"");
    EXPECT_EQ(Expand({"-E", "@$A = \"2\"", "-D", "A=1"}, "_A_ \"$(A)\""), "1 \"1\"");
    EXPECT_EQ(Expand({"-E", "@def m = {1}", "-E", "@def m = {2}"}, "m"), "2");
}

TEST_F(PreludeTest, ValuesMayBeEmptyOrHoldEquals)
{
    EXPECT_EQ(Expand({"-D", "A=", "-DB=x=y"}, "[_A_][_B_]"), "[][x=y]");
}

TEST_F(PreludeTest, TextsSeeWhatCameBeforeThem)
{
    EXPECT_EQ(Expand({"-D", "A=1", "-E", "@let string n = \"<$(A)>\"", "-o", "-"}, "n"), "<1>");
    EXPECT_EQ(Expand({"-E", "@def a = {1}", "-E", "@let int b = a + 1"}, "b"), "2");
}

TEST_F(PreludeTest, TheOutputOfATextIsDropped)
{
    EXPECT_EQ(Expand({"-E", "dropped @def m = {x}"}, "m"), "x");
}

TEST_F(PreludeTest, TextsMayImport)
{
    Write("lib.tl", "@def m = {x}\n");
    EXPECT_EQ(Expand({"-E", "@import \"lib.tl\""}, "m"), "x");
    Write("other.tl", "@def n = {m}\n");
    EXPECT_EQ(Expand({"-E", "@import \"lib.tl\""}, "@import \"other.tl\"\nn m"), "x x");
}

TEST_F(PreludeTest, AFilesOwnDefinitionHidesIt)
{
    EXPECT_EQ(Expand({"-E", "@def m = {1}", "-D", "A=1"}, "@def m = {2}\n@$A = \"2\"\nm _A_"),
              "\n2 2");
}

TEST_F(PreludeTest, ADefinitionInAnImportIsNotAmbiguous)
{
    Write("lib.tl", "@def m = {2}\n@$A = \"2\"@def inLib = {m}\n");
    EXPECT_EQ(Expand({"-E", "@def m = {1}", "-D", "A=1"}, "@import \"lib.tl\"\nm _A_ \"$(A)\""),
              "1 1 \"1\"");
}

TEST_F(PreludeTest, VariablesAreShared)
{
    Write("lib.tl", "@let n = n + 1\n");
    EXPECT_EQ(Expand({"-E", "@let int n = 1"}, "@import \"lib.tl\"\n@let n = n + 1\nn"), "3");
}

TEST_F(PreludeTest, ErrorsAreLocatedInTheText)
{
    ExpectFailure(Run({"-E", "a\n@fail(\"no\")"}, "x"), 1,
                  "<command line>(2) : error : no\n"
                  " 2 | @fail(\"no\")\n"
                  "   |      ^\n");
    Write("lib.tl", "@fail(\"no\")");
    ExpectFailure(Run({"-E", "@import \"lib.tl\""}, "x"), 1,
                  "lib.tl(1) : error : no\n"
                  " 1 | @fail(\"no\")\n"
                  "   |      ^\n"
                  "imported from <command line>(1)\n");
}

} // namespace telv::test
