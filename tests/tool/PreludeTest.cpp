// SPDX-License-Identifier: MIT
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

// Whatever kind of definition a file replaces, its importers and the command line's other files do
// not notice.
TEST_F(PreludeTest, AFileMayMakeSomethingElseOfADefinition)
{
    Write("lib.tl", "@let _A_ := {lib}\n@def + m(a) = {<a>}\n@def inLib = {_A_}\n@print(m(_A_))");
    const ProgramResult result = Run({"-E", "@def m = {1}", "-D", "A=1"},
                                     "@import \"lib.tl\"\nm _A_ inLib @let _A_ := {main}\n_A_");
    EXPECT_EQ(result.err, "<lib>");
    EXPECT_EQ(result.out, "1 1 1main");
}

TEST_F(PreludeTest, ADefinitionIsTheNameThatWasProbablyMeant)
{
    ExpectFailure(Run({"-D", "LENGTH=1", "-E", "@def width = {1}"}, "@(widht)"), 1,
                  "<stdin>(1) : error : Unexpected widht after ( in expression\n"
                  "    in @(widht)\n"
                  " 1 | @(widht)\n"
                  "   | ^\n"
                  "hint: 'widht' names nothing here; did you mean 'width'?\n");
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

TEST_F(PreludeTest, TextsAreToldApartByNumber)
{
    ExpectFailure(Run({"-E", "@def a = {1}", "-D", "x=y", "-E", "\n@fail(\"no\")"}, "x"), 1,
                  "<command line 2>(2) : error : no\n"
                  " 2 | @fail(\"no\")\n"
                  "   |      ^\n");
    const ProgramResult map = Run({"-E", "", "-E", "", "-E", "", "--map", "map"}, "x");
    EXPECT_EQ(map.status, 0);
    EXPECT_NE(Read("map").find("[\"<stdin>\",\"<command line>\",\"<command line 2>\","
                               "\"<command line 3>\"]"),
              std::string::npos);
}

TEST_F(PreludeTest, AnImportedFileSeesTheTextsBeforeTheOneThatImportsIt)
{
    Write("lib.tl", "@def m = {lib}\n@def both = {m n v}\n@let v = v + 1\n@print(m n)");
    const std::vector<std::string> arguments = {
        "-E", "@def m = {1}",          "-E", "@let int v = 1",
        "-E", "@def n = {2}",          "-E", "@def n = {3}\n@import \"lib.tl\"\nm@def own = {m n}",
        "-E", "@def last = {both own}"};
    const ProgramResult result = Run(arguments, "m n v both own last");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "lib 2");
    EXPECT_EQ(result.out, "1 3 2 1 3 2 1 3 1 3 2 1 3");
}

} // namespace telv::test
