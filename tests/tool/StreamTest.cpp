// SPDX-License-Identifier: MIT
// Large texts: outputs that are written while the text is expanded, and inputs that are mapped.
#include "ToolTest.h"

#include <sys/stat.h>

namespace telv::test
{

namespace
{

std::string Repeated(const std::string& text, int times)
{
    std::string repeated;
    for (int i = 0; i < times; ++i)
        repeated += text;
    return repeated;
}

} // namespace

class StreamTest : public ToolTest
{
protected:
    /// The same expansion through a file and through standard output, where the text is kept.
    std::string ExpandBothWays(std::vector<std::string> arguments, const std::string& source) const
    {
        Write("main.tl", source);
        arguments.insert(arguments.end(), {"main.tl"});
        const std::string kept = Expand(arguments);
        arguments.insert(arguments.end(), {"-o", "out"});
        EXPECT_EQ(Expand(arguments), "");
        EXPECT_EQ(Read("out"), kept);
        return kept;
    }
};

TEST_F(StreamTest, LongTextsPassUnchanged)
{
    const std::string lines = Repeated("a line of text; and (more)\n", 100'000);
    EXPECT_EQ(ExpandBothWays({}, lines), lines);
    const std::string line = Repeated("word ", 500'000);
    EXPECT_EQ(ExpandBothWays({}, line), line);
    const std::string blanks(1'500'000, ' ');
    EXPECT_EQ(ExpandBothWays({}, blanks), blanks);
    EXPECT_EQ(ExpandBothWays({}, blanks + "x\n" + blanks), blanks + "x\n" + blanks);
}

TEST_F(StreamTest, ImportsGoFromLongTexts)
{
    Write("x.tl", "@def m = {x}\n");
    const std::string text = Repeated("some text\n", 30'000);
    const std::string blanks(300'000, ' ');
    const std::string word(300'000, 'w');
    const std::string mark = "\xef\xbb\xbf"; // a byte order mark, which is no part of a line
    struct Row
    {
        std::string m_source;
        std::string m_output;
    };
    const std::string directives[] = {"@import \"x.tl\"", "@import (\"x\" + \".tl\")",
                                      "@ import // why\n\"x.tl\""};
    for (const std::string& import : directives)
    {
        const Row rows[] = {
            {text + import + "\n" + text, text + text},
            {text + import, text},
            {import + "\n" + text + import + " " + import + "\n", text},
            {blanks + import + "\nm", "x"},
            {import + blanks + "\nm", "x"},
            {import + blanks, ""},
            {import + blanks + ".", blanks + "."},
            {word + import + "\nm", word + "\nx"},
            {word + "@@" + import + "@@" + import + word, word + word},
            {import + word + import + "\n", word + "\n"},
            {mark + import + "\nm", mark + "x"},
            {mark + blanks + import + blanks + "\n" + text, mark + text},
            {text + blanks + "@importpath \"d\"" + blanks + "\n" + import + "\nm", text + "x"},
        };
        for (const Row& row : rows)
        {
            EXPECT_TRUE(ExpandBothWays({}, row.m_source) == row.m_output)
                << &row - rows << ": " << import;
        }
    }
}

TEST_F(StreamTest, IndentationOfImportsGoesToo)
{
    Write("x.tl", "@def m = {x}\n");
    Write("a\nb.tl", "@def n = {y}\n");
    struct Row
    {
        std::string m_source;
        std::string m_output;
    };
    const Row rows[] = {
        {"a\n@import \"x.tl\"\nm\n", "  a\n  x\n"},
        {"a\n@import (\"x\" + \".tl\")\nm\n", "  a\n  x\n"},
        {"a @import \"x.tl\" b\n", "  a  b\n"},
        {"a\n@import (\"a\\nb.tl\")\nn\n", "  a\n  y\n"},
        {"a @import (\"a\\nb.tl\") n\n", "  a y\n"},
        {"@ import // why\n\"x.tl\"\nm", "  x"},
        {"a\r\n@import \"x.tl\"\r\nm", "  a\r\n  x"},
        {"@importpath \"d\"\nm", "  m"},
        {"@import \"x.tl\" @import (\"x.tl\") m", "   x"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(ExpandBothWays({"--dst-indent", "2"}, row.m_source), row.m_output)
            << row.m_source;
}

TEST_F(StreamTest, AnErrorAfterMuchOutputLeavesTheEarlierFile)
{
    Write("out", "old");
    Write("main.tl", Repeated("some text\n", 200'000) + "@fail(\"late\")");
    EXPECT_EQ(Run({"-o", "out", "main.tl"}).status, 1);
    EXPECT_EQ(Read("out"), "old");
    EXPECT_EQ(Names(), " main.tl out");
    EXPECT_EQ(Run({"main.tl"}).out, "");
}

TEST_F(StreamTest, AnImportThatIsTheOutputIsSeenBeforeItIsReplaced)
{
    Write("lib.tl", "@def m = {x}\n");
    Write("main.tl", "@import \"lib.tl\"\n" + Repeated("m\n", 300'000));
    ExpectFailure(Run({"-o", "lib.tl", "main.tl"}), 2,
                  "tlexpand: the output 'lib.tl' is a file that is read" + s_hint);
    EXPECT_EQ(Read("lib.tl"), "@def m = {x}\n");
    EXPECT_EQ(Names(), " lib.tl main.tl");
}

TEST_F(StreamTest, ALargeMainFileMayBeItsOwnOutput)
{
    const std::string text = Repeated("some text\n", 200'000);
    Write("main.tl", text + "@(1+2)\n");
    Expand({"-o", "main.tl", "main.tl"});
    EXPECT_EQ(Read("main.tl"), text + "3\n");
}

TEST_F(StreamTest, AFullDiskInTheMiddleIsAnError)
{
    Write("main.tl", Repeated("@(1)some text\n", 200'000));
    const ProgramResult result = RunShell("ulimit -f 600; $TLEXPAND -o out main.tl");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "tlexpand: can't write 'out': File too large\n");
    EXPECT_EQ(Names(), " main.tl");
}

TEST_F(StreamTest, EndlessOutputCanBeInterrupted)
{
    Write("main.tl", "@while(true){some text}");
    const ProgramResult result = RunShell("$TLEXPAND -o out main.tl & pid=$!\n"
                                          "until ls .tlexpand-* > list 2> list; do :; done\n"
                                          "kill -TERM $pid; wait $pid");
    EXPECT_EQ(result.status, 128 + 15);
    EXPECT_EQ(Names(), " list main.tl");
}

/// Runs `change` while the tool works on a large main.tl, before it has seen its end.
class MappedFileTest : public StreamTest
{
protected:
    ProgramResult RunDuring(const std::string& change) const
    {
        // Printing waits for the reader of the pipe.
        Write("main.tl", "@println(ready)@print(" + std::string(200'000, 'p') + ")" +
                             Repeated("some text\n", 400'000));
        return RunShell("mkfifo pipe\n"
                        "$TLEXPAND -o out main.tl > pipe & pid=$!\n"
                        "exec 3< pipe; read line <&3\n" +
                        change + "\ncat <&3 > /dev/null; rm pipe; wait $pid");
    }
};

TEST_F(MappedFileTest, ThatBecomesShorterIsAnError)
{
    // The end of a page, and a place in one, whose rest is read as zeros, before and behind what is
    // being expanded.
    for (const char* const size : {"1003520", "1000001", "1000"})
    {
        const ProgramResult result = RunDuring(std::string("truncate -s ") + size + " main.tl");
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.signal, 0);
        EXPECT_EQ(result.err,
                  "tlexpand: can't read 'main.tl': it became shorter while it was read\n");
        EXPECT_EQ(Names(), " main.tl");
    }
}

TEST_F(MappedFileTest, ThatIsWrittenToIsAnError)
{
    Write("out", "old");
    for (const char* const change :
         {"printf x >> main.tl", "touch -d '1 hour ago' main.tl",
          "printf x >> main.tl; rm main.tl; echo another > main.tl",
          "printf x >> main.tl; mv main.tl moved; cp moved main.tl; rm moved"})
    {
        const ProgramResult result = RunDuring(change);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err, "tlexpand: can't read 'main.tl': it changed while it was read\n");
        EXPECT_EQ(Read("out"), "old");
        EXPECT_EQ(Names(), " main.tl out");
    }
}

TEST_F(MappedFileTest, LeavesTheSignalToThoseWhoSendIt)
{
    Write("main.tl", Repeated("some text\n", 200'000) + "@while(true){some text}");
    // The address sanitizer takes the signal for a fault of the program, unless it is told not to.
    const ProgramResult result = RunShell("export ASAN_OPTIONS=$ASAN_OPTIONS:handle_sigbus=0\n"
                                          "$TLEXPAND -o out main.tl & pid=$!\n"
                                          "until ls .tlexpand-* > list 2> list; do :; done\n"
                                          "kill -BUS $pid; wait $pid");
    EXPECT_EQ(result.status, 128 + SIGBUS);
    EXPECT_EQ(Names(), " list main.tl");
}

TEST_F(MappedFileTest, ThatIsReplacedOrRemovedIsTheEarlierOne)
{
    for (const char* const change : {"echo new > new; mv new main.tl", "rm main.tl"})
    {
        EXPECT_EQ(RunDuring(change).status, 0);
        EXPECT_EQ(Read("out"), Repeated("some text\n", 400'000));
    }
}

TEST_F(MappedFileTest, StandardInputAndLargeImportsAreMappedToo)
{
    const std::string text = Repeated("some text\n", 200'000);
    Write("main.tl", "@import \"lib.tl\"\nm");
    Write("lib.tl", text + "@def m = {x}\n");
    EXPECT_EQ(Expand({"main.tl"}), "x");
    EXPECT_EQ(RunShell("$TLEXPAND < lib.tl; cat").out, text);
    EXPECT_EQ(RunShell("(read line; $TLEXPAND) < lib.tl").out + "some text\n", text);
    Write("lib.tl", text + "@fail(\"f\")");
    ExpectFailure(Run({"main.tl"}), 1,
                  "lib.tl(200001) : error : f\n"
                  " 200001 | @fail(\"f\")\n"
                  "        |      ^\n"
                  "imported from main.tl(1)\n");
}

} // namespace telv::test
