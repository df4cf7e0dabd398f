// SPDX-License-Identifier: MIT
// Project files.
#include "ToolTest.h"

namespace telv::test
{

using ProjectTest = ToolTest;

TEST_F(ProjectTest, PrintsWhatWasRead)
{
    Write("app.mpfw", "@importpath \"lib\"\n@import \"common.mpfw\"\n$output = \"build/app\"\n");
    Write("common.mpfw", "$ROOT = \"/usr\"\n");
    EXPECT_EQ(Expand({"project", "--path-setting", "output", "app.mpfw"}),
              "{\"version\":1,\"files\":[\"app.mpfw\",\"common.mpfw\"],"
              "\"macros\":[{\"name\":\"ROOT\",\"value\":\"/usr\"}],\n"
              " \"importPaths\":[\"lib\"],\"settings\":{\"output\":\"build/app\"}}\n");
}

TEST_F(ProjectTest, ItsFileMayBeAPipe)
{
    Write("common.mpfw", "$B = \"2\"\n");
    for (int i = 0; i < 20; ++i)
    {
        const ProgramResult result =
            RunShell("rm -f pipe; mkfifo pipe\ntimeout 20 \"$TLEXPAND\" project pipe &\n"
                     "echo '$A = \"1\" @import \"common.mpfw\"' > pipe; wait $!");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.out,
                  "{\"version\":1,\"files\":[\"pipe\",\"common.mpfw\"],\"macros\":["
                  "{\"name\":\"A\",\"value\":\"1\"},{\"name\":\"B\",\"value\":\"2\"}],\n"
                  " \"importPaths\":[],\"settings\":{}}\n");
        EXPECT_EQ(result.err, "");
    }
}

TEST_F(ProjectTest, AnEmptyProjectIsOne)
{
    Write("e", "");
    EXPECT_EQ(Expand({"project", "e"}), "{\"version\":1,\"files\":[\"e\"],\"macros\":[],\n"
                                        " \"importPaths\":[],\"settings\":{}}\n");
}

TEST_F(ProjectTest, ASettingInARowOfDefinitionsIsASetting)
{
    Write("p",
          "$A = \"1\" $s = \"$(A)\" $B = \"$(A)2\" $C = path \"x/./$(B)/\" $D = (\"a\" + \"b\")\n");
    EXPECT_EQ(Expand({"project", "--setting", "s", "p"}),
              "{\"version\":1,\"files\":[\"p\"],"
              "\"macros\":[{\"name\":\"A\",\"value\":\"1\"},{\"name\":\"B\",\"value\":\"12\"},"
              "{\"name\":\"C\",\"value\":\"x/12\"},{\"name\":\"D\",\"value\":\"ab\"}],\n"
              " \"importPaths\":[],\"settings\":{\"s\":\"$(A)\"}}\n");
}

TEST_F(ProjectTest, AnImportThatFailsDoesNotStopTheReading)
{
    Write("e1", "$a = 1\n");
    Write("e2", "@import \"missing\"\n@(1 / 0)\n");
    Write("p", "@import \"none\"\n@import \"e1\"\n@import \"e2\"\n$s = 2\n");
    ExpectFailure(Run({"project", "p"}), 1,
                  "p(1) : error : Couldn't open file none\n"
                  " 1 | @import \"none\"\n"
                  "   |         ^\n"
                  "e2(1) : error : Couldn't open file missing\n"
                  " 1 | @import \"missing\"\n"
                  "   |         ^\n"
                  "imported from p(3)\n"
                  "e2(2) : error : Division by zero error\n"
                  "    in @(1 / 0)\n"
                  " 2 | @(1 / 0)\n"
                  "   | ^\n"
                  "imported from p(3)\n"
                  "e1(1) : error : Expected quoted string when read 1\n"
                  " 1 | $a = 1\n"
                  "   |      ^\n"
                  "imported from p(2)\n"
                  "p(4) : error : Expected quoted string when read 2\n"
                  " 4 | $s = 2\n"
                  "   |      ^\n");
    Write("cy1", "@import \"cy2\"\n");
    Write("cy2", "@import \"cy1\"\n@import \"e1\"\n");
    ExpectFailure(Run({"project", "cy1"}), 1,
                  "cy2(1) : error : Import cycle: cy1 -> cy2 -> cy1\n"
                  " 1 | @import \"cy1\"\n"
                  "   |         ^\n"
                  "imported from cy1(1)\n"
                  "e1(1) : error : Expected quoted string when read 1\n"
                  " 1 | $a = 1\n"
                  "   |      ^\n"
                  "imported from cy2(2)\n"
                  "imported from cy1(1)\n");
}

TEST_F(ProjectTest, FilesThatNoStatementLeadsToAfterAnErrorAreRead)
{
    Write("e1", "$a = 1\n");
    Write("p", "@import \"e1\"\n@fail(\"stop\")\n");
    ExpectFailure(Run({"project", "p"}), 1,
                  "p(2) : error : stop\n"
                  " 2 | @fail(\"stop\")\n"
                  "   |      ^\n"
                  "e1(1) : error : Expected quoted string when read 1\n"
                  " 1 | $a = 1\n"
                  "   |      ^\n"
                  "imported from p(1)\n");
    Write("q", "$b =\n@import \"e1\"\n@import \"none\"\n");
    ExpectFailure(Run({"project", "q"}), 1,
                  "q(3) : error : Couldn't open file none\n"
                  " 3 | @import \"none\"\n"
                  "   |         ^\n"
                  "q(2) : error : Expected quoted string when read @\n"
                  " 2 | @import \"e1\"\n"
                  "   | ^\n"
                  "e1(1) : error : Expected quoted string when read 1\n"
                  " 1 | $a = 1\n"
                  "   |      ^\n"
                  "imported from q(2)\n");
}

TEST_F(ProjectTest, DefinitionsOfTheCommandLineComeFirst)
{
    Write("p", "$B = \"$(A)\"\n");
    EXPECT_EQ(Expand({"project", "-D", "A=1", "p"}),
              "{\"version\":1,\"files\":[\"p\"],"
              "\"macros\":[{\"name\":\"A\",\"value\":\"1\"},{\"name\":\"B\",\"value\":\"1\"}],\n"
              " \"importPaths\":[],\"settings\":{}}\n");
}

TEST_F(ProjectTest, FindsImportsBesideTheFileInImportPathsAndInTheDirectoriesGiven)
{
    Write("sub/p", "@import \"a\" @importpath \"paths\" @import \"b\" @import \"c\"\n");
    Write("sub/a", "$F = \"a\"\n");
    Write("paths/b", "$F = \"b\"\n");
    Write("given/c", "$F = \"c\"\n");
    EXPECT_EQ(Expand({"project", "-I", "given", "sub/p"}),
              "{\"version\":1,\"files\":[\"sub/p\",\"sub/a\",\"paths/b\",\"given/c\"],"
              "\"macros\":[{\"name\":\"F\",\"value\":\"a\"},{\"name\":\"F\",\"value\":\"b\"},"
              "{\"name\":\"F\",\"value\":\"c\"}],\n"
              " \"importPaths\":[\"paths\"],\"settings\":{}}\n");
}

TEST_F(ProjectTest, AFileIsReadOnce)
{
    Write("p", "@import \"a\" @import \"b\" @import \"./a\"\n");
    Write("a", "@import \"b\" $A = \"a\"\n");
    Write("b", "$B = \"b\"\n");
    EXPECT_EQ(Expand({"project", "p"}),
              "{\"version\":1,\"files\":[\"p\",\"a\",\"b\"],"
              "\"macros\":[{\"name\":\"B\",\"value\":\"b\"},{\"name\":\"A\",\"value\":\"a\"}],\n"
              " \"importPaths\":[],\"settings\":{}}\n");
}

TEST_F(ProjectTest, AnErrorDoesNotStopTheReadingOfOtherFiles)
{
    Write("p", "@import \"a\"\n@import \"b\"\n$x = 1\n");
    Write("a", "\n@else\n");
    Write("b", "$B = \"b\"\nnonsense\n");
    ExpectFailure(Run({"project", "p"}), 1,
                  "a(2) : error : @else with no matching @if directive\n"
                  " 2 | @else\n"
                  "   |  ^\n"
                  "imported from p(1)\n"
                  "b(2) : error : Syntax error: nonsense\n"
                  " 2 | nonsense\n"
                  "   | ^\n"
                  "imported from p(2)\n"
                  "p(3) : error : Expected quoted string when read 1\n"
                  " 3 | $x = 1\n"
                  "   |      ^\n");
}

// The same notes and hints as in any other text.
TEST_F(ProjectTest, ErrorsAreReportedAsThoseOfAnExpansion)
{
    const char* const texts[] = {
        "$A = \"1\"\n@if(true\n$B = \"2\"\n",                            // opened at
        "$A = \"1\"\n/* never closed\n",                                 // the same
        "@let int count = {1}\n@if(coutn > 0){$A = \"1\"}\n",            // did you mean
        "@def f(x) = {$A = \"@(x / 0)\"@(x / 0)}\n@def g = {f(1)}\ng\n", // called from
        "@for(i in [1, 2]){@if(i == 2){@fail(\"two\")}}\n",              // in round
        "@let string s = {hello}\n",
        "@for((a, b) in [(1, 2), (3)]){}\n",
    };
    for (const char* const text : texts)
    {
        Write("p", text);
        const ProgramResult expanded = Run({"p"});
        EXPECT_NE(expanded.err, "") << text;
        ExpectFailure(Run({"project", "p"}), 1, expanded.err);
    }
}

TEST_F(ProjectTest, EachErrorHasItsOwnNotes)
{
    Write("p", "@import \"a\"\n@import \"b\"\n@import \"c\"\n");
    Write("a", "@let string s = {hello}\n");
    Write("b", "@def f = {@(1 / 0)}\nf\n");
    Write("c", "@if(true\n");
    ExpectFailure(Run({"project", "p"}), 1,
                  "a(1) : error : Unexpected hello after EOS in expression\n"
                  "    expression: hello\n"
                  " 1 | @let string s = {hello}\n"
                  "   | ^\n"
                  "imported from p(1)\n"
                  "hint: a string is written in quotes: \"hello\"\n"
                  "b(1) : error : Division by zero error\n"
                  "    in @(1 / 0)\n"
                  "    invoking macro f\n"
                  " 1 | @def f = {@(1 / 0)}\n"
                  "   |           ^\n"
                  "called from b(2)\n"
                  "imported from p(2)\n"
                  "c(2) : error : Met EOS while reading bracketted section\n"
                  " 2 | \n"
                  "   | ^\n"
                  "imported from p(3)\n"
                  "opened at c(1)\n"
                  " 1 | @if(true\n"
                  "   |    ^\n");
}

TEST_F(ProjectTest, PathSettingsAreStrict)
{
    Write("p", "$s = \"a/b/\"\n");
    ExpectFailure(Run({"project", "--path-setting", "s", "p"}), 1,
                  "p(1) : error : Path can't end with a trailing slash : a/b/\n"
                  " 1 | $s = \"a/b/\"\n"
                  "   |      ^\n");
}

TEST_F(ProjectTest, ReportsCyclesAndMissingFilesAtTheDirective)
{
    Write("p", "@import \"a\"\n");
    Write("a", "@import \"p\"\n");
    ExpectFailure(Run({"project", "p"}), 1,
                  "a(1) : error : Import cycle: p -> a -> p\n"
                  " 1 | @import \"p\"\n"
                  "   |         ^\n"
                  "imported from p(1)\n");
    Write("q", "@import \"none\"\n");
    ExpectFailure(Run({"project", "q"}), 1,
                  "q(1) : error : Couldn't open file none\n"
                  " 1 | @import \"none\"\n"
                  "   |         ^\n");
    ExpectFailure(Run({"project", "none"}), 2,
                  "tlexpand: can't read 'none': No such file or directory\n");
}

TEST_F(ProjectTest, AnErrorAtTheEndOfAFileStandsThere)
{
    Write("p", "$x = ");
    ExpectFailure(Run({"project", "p"}), 1,
                  "p(1) : error : Expected quoted string when read EOS\n"
                  " 1 | $x = \n"
                  "   |      ^\n");
}

TEST_F(ProjectTest, ReadsStandardInput)
{
    Write("sub/common", "$A = \"1\"\n");
    const std::string text = "@import \"sub/common\"\n$B = \"$(A)2\"\n";
    EXPECT_EQ(Run({"project", "-"}, text).out,
              "{\"version\":1,\"files\":[\"<stdin>\",\"sub/common\"],"
              "\"macros\":[{\"name\":\"A\",\"value\":\"1\"},{\"name\":\"B\",\"value\":\"12\"}],\n"
              " \"importPaths\":[],\"settings\":{}}\n");
    ExpectFailure(Run({"project", "-"}, text + "nonsense"), 1,
                  "<stdin>(3) : error : Syntax error: nonsense\n"
                  " 3 | nonsense\n"
                  "   | ^\n");
    EXPECT_EQ(Run({"project", "-"}).status, 0);
    const ProgramResult closed = RunShell("$TLEXPAND project - <&-");
    EXPECT_EQ(closed.status, 2);
    EXPECT_EQ(closed.err, "tlexpand: can't read '<stdin>': Bad file descriptor\n");
}

TEST_F(ProjectTest, ReadingGoesOnAfterAFailedImport)
{
    Write("p", "@import \"a\"\n@import \"b\"\n");
    Write("a", "@import \"none\"\n$A = \"a\"\n");
    Write("b", "nonsense\n");
    // Nothing is printed of a project that is not whole.
    ExpectFailure(Run({"project", "p"}), 1,
                  "a(1) : error : Couldn't open file none\n"
                  " 1 | @import \"none\"\n"
                  "   |         ^\n"
                  "imported from p(1)\n"
                  "b(1) : error : Syntax error: nonsense\n"
                  " 1 | nonsense\n"
                  "   | ^\n"
                  "imported from p(2)\n");
}

TEST_F(ProjectTest, AFileOfThatNameIsReachedWithItsDirectory)
{
    Write("project", "x");
    EXPECT_EQ(Expand({"./project"}), "x");
}

} // namespace telv::test
