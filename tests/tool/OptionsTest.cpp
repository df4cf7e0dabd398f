// SPDX-License-Identifier: MIT
// The command line: what it accepts, what it refuses, and in which words.
#include "ToolTest.h"

namespace telv::test
{

using OptionsTest = ToolTest;

TEST_F(OptionsTest, ReadsTheFileOrStandardInput)
{
    Write("a.tl", "a @(1+1)\n");
    EXPECT_EQ(Expand({"a.tl"}), "a 2\n");
    EXPECT_EQ(Expand({}, "b @(1+1)"), "b 2");
    EXPECT_EQ(Expand({"-"}, "c @(1+1)"), "c 2");
}

TEST_F(OptionsTest, MayStandAfterTheFileUntilTwoDashes)
{
    Write("-x", "x\n");
    Write("a.tl", "m\n");
    EXPECT_EQ(Expand({"a.tl", "-E", "@def m = {y}"}), "y\n");
    EXPECT_EQ(Expand({"--", "-x"}), "x\n");
    EXPECT_EQ(RunShell("POSIXLY_CORRECT=1 $TLEXPAND a.tl -E '@def m = {z}'").out, "z\n");
}

TEST_F(OptionsTest, RefusesWhatMakesNoSense)
{
    struct Row
    {
        std::vector<std::string> m_arguments;
        std::string m_message;
    };
    const Row rows[] = {
        {{"a", "b"}, "more than one file: 'a' and 'b'"},
        {{""}, "the name of the file is empty"},
        {{"-o"}, "option '-o' needs a value"},
        {{"--map"}, "option '--map' needs a value"},
        {{"-q"}, "unknown option or needless value: '-q'"},
        {{"--nonsense"}, "unknown option or needless value: '--nonsense'"},
        {{"--line-directive-s"}, "unknown option or needless value: '--line-directive-s'"},
        {{"--source-mop=x"}, "unknown option or needless value: '--source-mop'"},
        {{"--no-python=1"}, "unknown option or needless value: '--no-python'"},
        {{"-D", "A"}, "bad value 'A' for -D: NAME=VALUE is wanted"},
        {{"-D", "1=2"}, "bad value '1=2' for -D: the name before '=' must be an identifier"},
        {{"-D", "=2"}, "bad value '=2' for -D: the name before '=' must be an identifier"},
        {{"--src-indent", "-1"},
         "bad value '-1' for --src-indent: a number of columns from 0 to 1000000 is wanted"},
        {{"--dst-indent", "1000001"},
         "bad value '1000001' for --dst-indent: a number of columns from 0 to 1000000 is wanted"},
        {{"--dst-indent", "99999999999999999999"},
         "bad value '99999999999999999999' for --dst-indent: a number of columns from 0 to 1000000 "
         "is wanted"},
        {{"--src-indent", "4x"},
         "bad value '4x' for --src-indent: a number of columns from 0 to 1000000 is wanted"},
        {{"--src-indent", ""},
         "bad value '' for --src-indent: a number of columns from 0 to 1000000 is wanted"},
        {{"--max-depth", "-5"}, "bad value '-5' for --max-depth: a number of 0 or more is wanted"},
        {{"--max-steps", "1K"}, "bad value '1K' for --max-steps: a number of 0 or more is wanted"},
        {{"--max-output", "1T"},
         "bad value '1T' for --max-output: a number of bytes is wanted, or of K, M or G"},
        {{"--max-output", "9223372036854775807G"},
         "bad value '9223372036854775807G' for --max-output: a number of bytes is wanted, or of K, "
         "M or G"},
        {{"--color", "blue"}, "bad value 'blue' for --color: auto, always or never is wanted"},
        {{"-o", ""}, "bad value '' for -o: the name of a file is wanted"},
        {{"--map="}, "bad value '' for --map: the name of a file is wanted"},
        {{"--depfile", ""}, "bad value '' for --depfile: the name of a file is wanted"},
        {{"--map", "-"}, "the expansion and the map can't both go to standard output"},
        {{"-o", "-", "--map", "-"}, "the expansion and the map can't both go to standard output"},
        {{"-o", "x", "--map", "-", "--depfile", "-"},
         "the map and the dependency file can't both go to standard output"},
        {{"-o", "x", "--map", "-", "--source-map", "-"},
         "the map and the source map can't both go to standard output"},
        {{"--map-runs"}, "--map-runs needs --map"},
        {{"--source-map-contents"}, "--source-map-contents needs --source-map"},
        {{"--line-format", "# %n"},
         "bad value '# %n' for --line-format: behind '%' stands 'l', the line, 'f', the file, or "
         "'%'"},
        {{"--line-format", "100%"},
         "bad value '100%' for --line-format: behind '%' stands 'l', the line, 'f', the file, or "
         "'%'"},
        {{"--line-format", "a\nb"}, "bad value 'a\nb' for --line-format: one line is wanted"},
        {{"where"}, "the map is missing"},
        {{"where", "x.map"}, "either OUTPUT:LINE[:COLUMN] or --source FILE:LINE is wanted"},
        {{"where", "x.map", "x:1", "--source", "y:1"},
         "either OUTPUT:LINE[:COLUMN] or --source FILE:LINE is wanted"},
        {{"where", "x.map", "x"}, "bad place 'x': FILE:LINE or FILE:LINE:COLUMN is wanted"},
        {{"where", "x.map", "x:0"}, "bad place 'x:0': FILE:LINE or FILE:LINE:COLUMN is wanted"},
        {{"where", "x.map", "x:1", "y:1"}, "one argument too many: 'y:1'"},
        {{"-o", "-", "--depfile", "x"},
         "--depfile needs -o: a dependency file says what the output depends on"},
        {{"--depfile", "x"},
         "--depfile needs -o: a dependency file says what the output depends on"},
        {{"-o", "x", "--depend", "y"}, "--depend needs --depfile"},
        {{"-o", "x", "--depfile-target", "y"}, "--depfile-target needs --depfile"},
        {{"-o", "x", "--depfile", "d", "--depend", ""},
         "bad value '' for --depend: the name of a file is wanted"},
        {{"-o", "x", "--depfile", "d", "--depfile-target="},
         "bad value '' for --depfile-target: the name of a file is wanted"},
        {{"project", "-o", "x", "y"}, "unknown option or needless value: '-o'"},
        {{"explain", "-j", "2", "y"}, "unknown option or needless value: '-j'"},
        {{"explain", "--max-memory", "x", "y"},
         "bad value 'x' for --max-memory: a number of bytes is wanted, or of K, M or G"},
        {{"project", "--setting", "a b", "y"},
         "bad value 'a b' for --setting: an identifier is wanted"},
    };
    for (const Row& row : rows)
        ExpectFailure(Run(row.m_arguments), 2, "tlexpand: " + row.m_message + s_hint);
}

TEST_F(OptionsTest, TellsVersionAndUsage)
{
    EXPECT_EQ(Expand({"--version"}), "tlexpand 1.0.0\n");
    EXPECT_EQ(Expand({"--help"}).substr(0, 26), "Usage: tlexpand [OPTIONS] ");
    EXPECT_EQ(Expand({"project", "--version"}), "tlexpand 1.0.0\n");
    EXPECT_EQ(Expand({"-V"}), "tlexpand 1.0.0\n");
    EXPECT_EQ(Expand({"-h"}), Expand({"--help"}));
    EXPECT_EQ(Expand({"project", "-V"}), "tlexpand 1.0.0\n");
    EXPECT_EQ(Expand({"project", "-h"}), Expand({"project", "--help"}));
    EXPECT_EQ(Expand({"--map", "-", "--depfile", "x", "--version"}), "tlexpand 1.0.0\n");
    EXPECT_EQ(Expand({"project", "--help"}).substr(0, 31), "Usage: tlexpand project [OPTION");
}

TEST_F(OptionsTest, ShiftsIndentation)
{
    EXPECT_EQ(Expand({"--src-indent", "2", "--dst-indent", "4"}, "a\n    b\n"), "    a\n      b\n");
}

TEST_F(OptionsTest, LimitsSayWhatRanOutAndAreNotSwallowed)
{
    const std::string depth = "@assertfails(@scope{@scope{x}})\n";
    ExpectFailure(Run({"--max-depth", "2"}, depth), 1,
                  "<stdin>(1) : error : Expansion nested too deeply\n"
                  " 1 | @assertfails(@scope{@scope{x}})\n"
                  "   |                     ^\n");
    const ProgramResult steps = Run({"--max-steps", "100"}, "@while(true){}");
    EXPECT_EQ(steps.status, 1);
    EXPECT_EQ(steps.err.substr(0, 46), "<stdin>(1) : error : Too many expansion steps\n");
    const ProgramResult output = Run({"--max-output", "1K"}, "@while(true){x}");
    EXPECT_EQ(output.status, 1);
    EXPECT_EQ(output.err.substr(0, 39), "<stdin>(1) : error : Output too large\n ");
    EXPECT_EQ(Expand({"--max-output", "3"}, "abc"), "abc");
}

TEST_F(OptionsTest, RefusesPythonWhenAsked)
{
    ExpectFailure(Run({"--no-python"}, "a\n  @runpython{print 1}\n"), 1,
                  "<stdin>(2) : error : Python is disabled\n"
                  " 2 |   @runpython{print 1}\n"
                  "   |    ^\n");
}

} // namespace telv::test
