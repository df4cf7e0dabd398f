// SPDX-License-Identifier: MIT
// Many files in one run: each is expanded as by a run of its own.
#include "ToolTest.h"

namespace telv::test
{

using BatchTest = ToolTest;

TEST_F(BatchTest, OutputsLieBelowTheDirectoryWithoutTheSuffix)
{
    Write("a.txt.tl", "a @(1 + 1)");
    Write("sub/b.txt", "b");
    Write("sub/c.tl", "c");
    Expand({"--out-dir", "out", "a.txt.tl", "./sub/b.txt", Path("sub/c.tl")});
    EXPECT_EQ(Read("out/a.txt"), "a 2");
    EXPECT_EQ(Read("out/sub/b.txt"), "b");
    EXPECT_EQ(Read("out/c"), "c");
}

TEST_F(BatchTest, AListNamesInputsAndOutputs)
{
    Write("a.tl", "a");
    Write("b.tl", "b");
    Write("c d.tl", "c");
    Write("list", "# inputs\n\na.tl\tplace/x\r\nb.tl\nc d.tl");
    Expand({"--batch", "list", "--out-dir", "out"});
    EXPECT_EQ(Read("place/x"), "a");
    EXPECT_EQ(Read("out/b"), "b");
    EXPECT_EQ(Read("out/c d"), "c");
    EXPECT_EQ(Read("out/place/x"), "(none)");
    Expand({"--batch", "-"}, "a.tl\tfrom input\n");
    EXPECT_EQ(Read("from input"), "a");
}

TEST_F(BatchTest, AByteOrderMarkOfTheListIsNoName)
{
    Write("a.tl", "a");
    Write("list", "\xef\xbb\xbf"
                  "a.tl\tx\n");
    Expand({"--batch", "list"});
    EXPECT_EQ(Read("x"), "a");
    Write("comment", "\xef\xbb\xbf# inputs\na.tl\ty\n");
    Expand({"--batch", "comment"});
    EXPECT_EQ(Read("y"), "a");
}

TEST_F(BatchTest, FilesDoNotSeeEachOther)
{
    Write("lib.tl", "@def shared = {library _V_}");
    Write("a.tl", "@import \"lib.tl\"\n@def own = {defined}\nshared own");
    Write("b.tl", "shared own");
    Write("c.tl", "@import \"lib.tl\"\nshared own");
    Expand({"--out-dir", "out", "-D", "V=1", "a.tl", "b.tl", "c.tl"});
    EXPECT_EQ(Read("out/a"), "library 1 defined");
    EXPECT_EQ(Read("out/b"), "shared own");
    EXPECT_EQ(Read("out/c"), "library 1 own");
}

#if TELV_HAS_PYTHON
TEST_F(BatchTest, PythonStartsAnewForEachFile)
{
    Write("a.tl", "@runpython{x = 1}@defpython v = {x}v");
    Write("c.tl", "@defpython v = {str('x' in globals())}v");
    Expand({"--out-dir", "out", "a.tl", "c.tl"});
    EXPECT_EQ(Read("out/a"), "1");
    EXPECT_EQ(Read("out/c"), "False");
}
#endif

TEST_F(BatchTest, SeveralProcessesMakeTheSame)
{
    std::string list;
    for (int i = 0; i < 60; ++i)
    {
        const std::string name = "f" + std::to_string(i);
        Write(name + ".tl",
              "@for(x in [a, b]){x" + std::to_string(i) + " }@(" + std::to_string(i) + " * 2)");
        list += name + ".tl\n";
    }
    Write("list", list);
    Expand({"--batch", "list", "--out-dir", "one"});
    Expand({"--batch", "list", "--out-dir", "four", "-j", "4"});
    for (int i = 0; i < 60; ++i)
    {
        const std::string name = "/f" + std::to_string(i);
        EXPECT_NE(Read("one" + name), "(none)");
        EXPECT_EQ(Read("one" + name), Read("four" + name));
    }
}

TEST_F(BatchTest, ShowsProgressOnATerminalOnly)
{
    Write("a.tl", "a");
    Write("b.tl", "@fail(stop)");
    const std::string command = "\"$TLEXPAND\" --out-dir out --keep-going a.tl b.tl";
    const std::string start = "[0/2]\033[K\r";
    const ProgramResult plain = RunShell(command);
    EXPECT_EQ(plain.err.find("[0/2]"), std::string::npos);
    const ProgramResult shown =
        RunShell("export TLEXPAND TERM=xterm; script -qec '" + command + "' /dev/null </dev/null");
    EXPECT_EQ(shown.status, 1);
    EXPECT_NE(shown.out.find(start), std::string::npos) << shown.out;
    EXPECT_NE(shown.out.find("\033[K\rtlexpand: 1 of 2 files failed:\r\n"), std::string::npos)
        << shown.out;
    EXPECT_EQ(Read("out/a"), "a");
}

TEST_F(BatchTest, ShowsNoProgressWhereALineCantBeWrittenAgain)
{
    Write("a.tl", "a");
    for (const char* const terminal : {"export TERM=dumb", "unset TERM"})
    {
        const ProgramResult shown =
            RunShell(std::string("export TLEXPAND; ") + terminal +
                     "; script -qec '\"$TLEXPAND\" --out-dir out a.tl' /dev/null </dev/null");
        EXPECT_EQ(shown.status, 0) << terminal;
        EXPECT_EQ(shown.out, "") << terminal;
    }
}

TEST_F(BatchTest, AnOutputStreamThatFailsEndsAll)
{
    std::string list;
    for (int i = 0; i < 9; ++i)
    {
        const std::string name = "in" + std::to_string(i);
        Write(name + ".tl", i == 0 ? "silent" : "@print(text)x");
        list += " " + name + ".tl";
    }
    const std::vector<std::pair<std::string, std::string>> streams = {
        {"> /dev/full", "No space left on device"}, {">&-", "Bad file descriptor"}};
    for (const auto& [stream, reason] : streams)
        for (const char* const options : {"", "-j 3 ", "--keep-going -j 2 "})
        {
            const ProgramResult result =
                RunShell("exec 3>&2; { $TLEXPAND --out-dir out " + std::string(options) + list +
                         "; echo \"status $?\" >&3; } " + stream);
            EXPECT_EQ(result.err,
                      "tlexpand: can't write standard output: " + reason + "\nstatus 2\n")
                << stream << options;
        }
    EXPECT_EQ(Read("out/in0"), "silent");
}

TEST_F(BatchTest, StopsAtTheFirstFailure)
{
    Write("a.tl", "a");
    Write("b.tl", "@fail(stop)");
    Write("c.tl", "c");
    const ProgramResult result = Run({"--out-dir", "out", "a.tl", "b.tl", "c.tl"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.substr(result.err.find("tlexpand:")),
              "tlexpand: 1 of 3 files failed, 1 not tried (--keep-going tries them):\n  b.tl\n");
    EXPECT_EQ(Read("out/a"), "a");
    EXPECT_EQ(Read("out/b"), "(none)");
    EXPECT_EQ(Read("out/c"), "(none)");
}

TEST_F(BatchTest, KeepsGoing)
{
    Write("a.tl", "@fail(stop)");
    Write("b.tl", "b");
    Write("c.tl", "@(1 / 0)");
    Write("out/a", "earlier");
    const ProgramResult result = Run({"--out-dir", "out", "--keep-going", "a.tl", "b.tl", "c.tl"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("a.tl(1) : error : "), std::string::npos);
    EXPECT_NE(result.err.find("c.tl(1) : error : Division by zero"), std::string::npos);
    EXPECT_NE(result.err.find("tlexpand: 2 of 3 files failed:\n  a.tl\n  c.tl\n"),
              std::string::npos);
    EXPECT_EQ(Read("out/a"), "earlier");
    EXPECT_EQ(Read("out/b"), "b");
}

TEST_F(BatchTest, DirectoriesThatStayEmptyGoAgain)
{
    Write("a.tl", "@fail(stop)");
    Write("b.tl", "b");
    Write("there/kept/earlier", "");
    std::filesystem::remove(Path("there/kept/earlier"));
    Write("list", "a.tl\tnew/deep/er/a\na.tl\tthere/kept/x/a\nb.tl\tnew/other/b\n");
    const std::string before = Names();
    for (const std::string processes : {"1", "3"})
    {
        const ProgramResult stopped = Run({"--batch", "list", "-j", processes, "--keep-going"});
        EXPECT_EQ(stopped.status, 1);
        EXPECT_EQ(Read("new/other/b"), "b");
        EXPECT_FALSE(std::filesystem::exists(Path("new/deep")));
        EXPECT_TRUE(std::filesystem::is_directory(Path("there/kept")));
        EXPECT_FALSE(std::filesystem::exists(Path("there/kept/x")));
        std::filesystem::remove_all(Path("new"));
    }
    EXPECT_EQ(Run({"--out-dir", "./out//./in", "a.tl"}).status, 1);
    EXPECT_EQ(Names(), before);
}

TEST_F(BatchTest, DirectoriesGoAgainWhenAnotherCannotBeMade)
{
    Write("a.tl", "a");
    Write("list", "a.tl\tnew/deep/a\na.tl\ta.tl/sub/b\n");
    ExpectFailure(Run({"--batch", "list"}), 2,
                  "tlexpand: can't make 'a.tl/sub': Not a directory\n");
    EXPECT_EQ(Names(), " a.tl list");
}

TEST_F(BatchTest, MistakesInTheListCostNothing)
{
    Write("a.tl", "a");
    Write("b.tl", "b");
    Write("missing", "a.tl\tx\nnone.tl\ty\nnever.tl\tz\n");
    ExpectFailure(Run({"--batch", "missing"}), 2,
                  "tlexpand: missing(2): can't read 'none.tl': No such file or directory\n"
                  "tlexpand: missing(3): can't read 'never.tl': No such file or directory\n");
    Write("same", "a.tl\tx\nb.tl\t./x\n");
    ExpectFailure(Run({"--batch", "same"}), 2,
                  "tlexpand: same(2): 'a.tl' and 'b.tl' have the same output './x'" + s_hint);
    Write("over", "a.tl\tb.tl\nb.tl\tx\n");
    ExpectFailure(Run({"--batch", "over"}), 2,
                  "tlexpand: over(2): 'b.tl' is the output of 'a.tl'" + s_hint);
    Write("bare", "a.tl\n");
    ExpectFailure(
        Run({"--batch", "bare"}), 2,
        "tlexpand: bare(1): no output for 'a.tl': give --out-dir, or name the output behind a "
        "tab in the list" +
            s_hint);
    EXPECT_EQ(Names(), " a.tl b.tl bare missing over same");
}

TEST_F(BatchTest, OneFileUnderTwoNamesIsOneOutput)
{
    Write("a.tl", "a");
    Write("b.tl", "b");
    Write("real/x", "earlier");
    std::filesystem::create_symlink("real", Path("link"));
    Write("same", "a.tl\treal/x\nb.tl\tlink/x\n");
    ExpectFailure(Run({"--batch", "same"}), 2,
                  "tlexpand: same(2): 'a.tl' and 'b.tl' have the same output 'link/x'" + s_hint);
    Write("new", "a.tl\treal/y\nb.tl\tlink/y\n");
    ExpectFailure(Run({"--batch", "new"}), 2,
                  "tlexpand: new(2): 'a.tl' and 'b.tl' have the same output 'link/y'" + s_hint);
    EXPECT_EQ(Read("real/x"), "earlier");
}

TEST_F(BatchTest, ALinkToAFileThatIsStillToBeMadeIsThatFile)
{
    Write("one.tl", "one");
    Write("two.tl", "two");
    Write("z/other", "");
    std::filesystem::create_symlink("a1", Path("z/link"));
    std::filesystem::create_symlink("../z/link", Path("z/far"));
    for (const std::string link : {"z/link", "z/far"})
    {
        Write("list", "one.tl\t" + link + "\ntwo.tl\tz/a1\n");
        ExpectFailure(Run({"--batch", "list"}), 2,
                      "tlexpand: list(2): 'one.tl' and 'two.tl' have the same output 'z/a1'" +
                          s_hint);
    }
    EXPECT_EQ(Read("z/a1"), "(none)");
    Write("list", "one.tl\tz/far\n");
    Expand({"--batch", "list"});
    EXPECT_EQ(Read("z/a1"), "one");
    EXPECT_TRUE(std::filesystem::is_symlink(Path("z/far")));
}

TEST_F(BatchTest, AnOutputThatIsReadThroughALinkIsRefused)
{
    Write("a.tl", "@import (\"li\" + \"nk\")\n");
    Write("c.tl", "c");
    Write("real", "@def v = {one}");
    std::filesystem::create_symlink("real", Path("link"));
    Write("list", "c.tl\treal\na.tl\tout/a\n");
    const ProgramResult result = Run({"--batch", "list", "--keep-going"});
    EXPECT_EQ(result.status, 2);
    EXPECT_NE(result.err.find("list(2): 'link', which 'a.tl' reads, is the output of 'c.tl'"),
              std::string::npos)
        << result.err;
}

TEST_F(BatchTest, AnOutputIsNoDirectory)
{
    Write("a.tl", "a");
    Write("b.tl", "b");
    Write("c.tl", "c");
    Write("there/x", "x");
    Write("list", "a.tl\tout/a\nb.tl\tthere\nc.tl\tnew/\n");
    const ProgramResult there = Run({"--batch", "list"});
    EXPECT_EQ(there.status, 2);
    EXPECT_NE(there.err.find("tlexpand: list(2): can't write 'there': Is a directory\n"),
              std::string::npos);
    EXPECT_NE(there.err.find("\ntlexpand: list(3): can't write 'new/': Is a directory\n"),
              std::string::npos);
    EXPECT_EQ(Names(), " a.tl b.tl c.tl list there");
    Write("list", "a.tl\tout/a\nb.tl\tq\nc.tl\t./q/deep/x\n");
    ExpectFailure(Run({"--batch", "list"}), 2,
                  "tlexpand: list(3): the output './q/deep/x' of 'c.tl' lies in 'q', the output of "
                  "'b.tl'" +
                      s_hint);
    EXPECT_EQ(Names(), " a.tl b.tl c.tl list there");
}

TEST_F(BatchTest, NoInputIsLost)
{
    Write("a.txt", "@(1 + 1)");
    ExpectFailure(
        Run({"--out-dir", ".", "a.txt"}), 2,
        "tlexpand: 'a.txt' would be overwritten by its own output: give another --out-dir" +
            s_hint);
    EXPECT_EQ(Read("a.txt"), "@(1 + 1)");
    Write("list", "a.txt\ta.txt\n");
    Expand({"--batch", "list"});
    EXPECT_EQ(Read("a.txt"), "2");
}

TEST_F(BatchTest, TheListIsNoOutput)
{
    Write("a.tl", "a");
    Write("L.tl", "l");
    const std::string text = "a.tl\tx\na.tl\t./L\n";
    Write("L", text);
    ExpectFailure(Run({"--batch", "L"}), 2,
                  "tlexpand: L(2): the output './L' of 'a.tl' is the list itself" + s_hint);
    const ProgramResult redirected = RunShell("$TLEXPAND --batch - < L");
    ExpectFailure(redirected, 2,
                  "tlexpand: <stdin>(2): the output './L' of 'a.tl' is the list itself" + s_hint);
    EXPECT_EQ(Read("L"), text);
    Write("L", "a.tl\n");
    std::filesystem::create_symlink("L", Path("link"));
    ExpectFailure(Run({"--batch", "link", "--out-dir", ".", "L.tl"}), 2,
                  "tlexpand: the output './L' of 'L.tl' is the list itself" + s_hint);
    EXPECT_EQ(Read("L"), "a.tl\n");
    EXPECT_EQ(Names(), " L L.tl a.tl link");
}

TEST_F(BatchTest, ALineOfTheListHasTwoFieldsAtMost)
{
    Write("a.tl", "a");
    Write("list", "# inputs\na.tl\tx\na.tl\tp.txt\textra\n");
    ExpectFailure(Run({"--batch", "list"}), 2,
                  "tlexpand: list(3): a second tab: a line has an input, and behind a tab its "
                  "output, and no more" +
                      s_hint);
    EXPECT_EQ(Names(), " a.tl list");
}

TEST_F(BatchTest, WhatIsNoFileIsRefused)
{
    Write("a.tl", "a");
    Write("sub/b.tl", "b");
    ExpectFailure(Run({"--out-dir", "out", "sub"}), 2,
                  "tlexpand: can't read 'sub': Is a directory\n");
    Write("list", "a.tl\t-\n");
    ExpectFailure(Run({"--batch", "list"}), 2,
                  "tlexpand: list(1): standard output can't be one of many outputs" + s_hint);
    Write("nul", std::string_view("a.tl\0x\tb\n", 10));
    ExpectFailure(Run({"--batch", "nul"}), 2, "tlexpand: nul(1): a name with a NUL byte" + s_hint);
    ExpectFailure(Run({"--batch", "none"}), 2,
                  "tlexpand: can't read 'none': No such file or directory\n");
    ExpectFailure(Run({"--out-dir", "a.tl", "sub/b.tl"}), 2,
                  "tlexpand: can't make 'a.tl/sub': Not a directory\n");
}

TEST_F(BatchTest, WhatAFileImportsIsNotItsOutput)
{
    Write("lib.tl", "@def v = {one}");
    Write("a.tl", "@import \"lib.tl\"\nv");
    Write("b.tl", "@import \"lib.tl\"\nv");
    Write("list", "a.tl\tlib.tl\n");
    const ProgramResult result = Run({"--batch", "list", "--keep-going"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err.substr(0, result.err.find('\n')),
              "tlexpand: list(1): the output 'lib.tl' is a file that is read");
    EXPECT_EQ(Read("lib.tl"), "@def v = {one}");
}

TEST_F(BatchTest, WhatAnotherFileImportsIsNoOutput)
{
    const std::string lib = "@def v = {one}";
    Write("sub/lib.tl", lib);
    Write("mid.tl", "@importpath \"sub\"\n@import \"lib.tl\"");
    Write("a.tl", "@import \"mid.tl\"\nv");
    Write("c.tl", "@unstr(\"@def v = {two}\")");
    Write("list", "a.tl\tout/a\nc.tl\t./sub/lib.tl\n");
    const ProgramResult result = Run({"--batch", "list", "--keep-going", "-j", "1"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err.find(
                  "tlexpand: list(1): 'sub/lib.tl', which 'a.tl' reads, is the output of 'c.tl': "
                  "expand that in a run of its own, before\n"
                  "tlexpand: list(2): the output './sub/lib.tl' of 'c.tl' is read by another of "
                  "these files\n"),
              0u)
        << result.err;
    EXPECT_EQ(Read("sub/lib.tl"), lib);
    EXPECT_EQ(Read("out/a"), "(none)");
}

TEST_F(BatchTest, WhatATextOnlyNamesMayBeAnOutput)
{
    Write("a.tl", "@// @import \"out/b\"\n@quote(@import \"out/b\")@if(false){@import \"out/b\"}");
    Write("b.tl", "b");
    Write("list", "a.tl\tout/a\nb.tl\tout/b\n");
    Expand({"--batch", "list"});
    EXPECT_EQ(Read("out/a"), "@import \"out/b\"");
    EXPECT_EQ(Read("out/b"), "b");
}

TEST_F(BatchTest, RowsOfDataAreNoOutput)
{
    Write("rows.csv", "a\n1\n");
    Write("a.tl", "@for(x in rows){x}");
    Write("c.tl", "c");
    Write("list", "c.tl\trows.csv\na.tl\tout/a\n");
    ExpectFailure(Run({"--list", "rows=rows.csv", "--batch", "list"}), 2,
                  "tlexpand: list(1): 'rows.csv', which '--list' reads, is the output of 'c.tl': "
                  "expand that in a run of its own, before" +
                      s_hint);
    EXPECT_EQ(Read("rows.csv"), "a\n1\n");
}

TEST_F(BatchTest, AnImportWithAMadeUpNameIsNoOutput)
{
    const std::string lib = "@def v = {one}";
    Write("lib.tl", lib);
    Write("a.tl", "@import (\"l\" + \"ib.tl\")\nv");
    Write("b.tl", "b");
    Write("c.tl", "@unstr(\"@def v = {two}\")");
    Write("list", "a.tl\tout/a\nc.tl\tlib.tl\nb.tl\tout/b\n");
    const ProgramResult result = Run({"--batch", "list", "--keep-going"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err,
              "tlexpand: list(1): 'lib.tl', which 'a.tl' reads, is the output of 'c.tl': "
              "expand that in a run of its own, before\n"
              "tlexpand: list(2): the output 'lib.tl' of 'c.tl' is read by another of these files\n"
              "tlexpand: 2 of 3 files failed:\n  a.tl\n  c.tl\n");
    EXPECT_EQ(Read("lib.tl"), lib);
    EXPECT_EQ(Read("out/b"), "b");
}

#if TELV_HAS_PYTHON
TEST_F(BatchTest, WhatPythonChangesIsNotSeenByOtherFiles)
{
    Write("a.tl", "@runpython{import os\nos.chdir('/')\nos.environ['SEEN'] = '1'}a");
    Write("b.tl", "@defpython v = {str('SEEN' in __import__('os').environ)}v");
    Expand({"--out-dir", "out", "a.tl", "b.tl"});
    EXPECT_EQ(Read("out/a"), "a");
    EXPECT_EQ(Read("out/b"), "False");
}

TEST_F(BatchTest, AProcessThatDiesTakesItsFileOnly)
{
    Write("a.tl", "@runpython{import os, signal\nos.kill(os.getpid(), signal.SIGKILL)}");
    Write("b.tl", "b");
    const ProgramResult result = Run({"--out-dir", "out", "--keep-going", "a.tl", "b.tl"});
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "tlexpand: a.tl: the process that expanded it was ended by signal 9\n"
                          "tlexpand: 1 of 2 files failed:\n  a.tl\n");
    EXPECT_EQ(Read("out/b"), "b");
    EXPECT_EQ(Read("out/a"), "(none)");
}

TEST_F(BatchTest, AProcessThatEndsItselfHasNotMadeItsFile)
{
    Write("b.tl", "b");
    for (const std::string status : {"0", "1", "3"})
        for (const std::string processes : {"1", "2"})
        {
            Write("a.tl", "@runpython{import os; os._exit(" + status + ")}");
            const ProgramResult result = Run({"--out-dir", "out" + status + processes,
                                              "--keep-going", "-j", processes, "a.tl", "b.tl"});
            EXPECT_EQ(result.status, 2);
            EXPECT_EQ(result.err,
                      "tlexpand: a.tl: the process that expanded it ended without a result\n"
                      "tlexpand: 1 of 2 files failed:\n  a.tl\n");
            EXPECT_EQ(Read("out" + status + processes + "/b"), "b");
        }
}
#endif

TEST_F(BatchTest, ANumberOfProcessesIsOneOrMore)
{
    Write("a.tl", "a");
    for (const std::string wrong : {"0", "-1", "x", ""})
        ExpectFailure(Run({"--out-dir", "out", "-j", wrong, "a.tl"}), 2,
                      "tlexpand: bad value '" + wrong +
                          "' for -j: a number of 1 or more is wanted" + s_hint);
    EXPECT_EQ(Names(), " a.tl");
}

TEST_F(BatchTest, AnEmptyListIsDone)
{
    Write("list", "# nothing\n");
    Expand({"--batch", "list"});
}

TEST_F(BatchTest, OptionsForOneFileAreRefused)
{
    Write("a.tl", "a");
    const std::string one =
        "tlexpand: -o, --map, --source-map, --depfile, --trace and --check are for one file; with many, "
        "outputs are named by --out-dir or by the list" +
        s_hint;
    ExpectFailure(Run({"--out-dir", "out", "-o", "x", "a.tl"}), 2, one);
    ExpectFailure(Run({"--out-dir", "out", "--map", "x", "a.tl"}), 2, one);
    ExpectFailure(Run({"--out-dir", "out", "--check", "a.tl"}), 2, one);
    ExpectFailure(Run({"-j", "2", "a.tl"}), 2,
                  "tlexpand: -j and --keep-going are for many files: give --batch or --out-dir" +
                      s_hint);
    ExpectFailure(Run({"--out-dir", "out", "-"}), 2,
                  "tlexpand: standard input can't be one of many files" + s_hint);
    ExpectFailure(Run({"--out-dir", "out"}), 2,
                  "tlexpand: there is no file for --out-dir" + s_hint);
}

} // namespace telv::test
