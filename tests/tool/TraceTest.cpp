// SPDX-License-Identifier: MIT
// --trace: a line for each call, round, definition and import, and where it goes.
#include "ToolTest.h"

namespace telv::test
{

class TraceTest : public ToolTest
{
protected:
    /// The trace of a text that must expand.
    std::string Trace(const std::string& text) const
    {
        Write("main.tl", text);
        Expand({"--trace", "trace", "-o", "out", "main.tl"});
        return Read("trace");
    }
};

TEST_F(TraceTest, EachKindOfLine)
{
    Write("lib.tl", "@def pair(a, b) = {a-b}\n");
    EXPECT_EQ(Trace("@import \"lib.tl\"\n"
                    "@let int n = {1}\n"
                    "@for(x in [p, q])\n"
                    "{\n"
                    "    pair(x, @(n))\n"
                    "\n"
                    "}\n"
                    "@let n = {n + 1}\n"
                    "@$D = \"v\"\n"),
              "import lib.tl at main.tl(1)\n"
              "  define pair(a,b) = a-b at lib.tl(1)\n"
              "define int n = 1 at main.tl(2)\n"
              "round 1 of @for: p at main.tl(3)\n"
              "  call pair(a=x, b=@(n)) at main.tl(5)\n"
              "    call a = x at lib.tl(1)\n"
              "      call x = p at main.tl(5)\n"
              "    call b = @(n) at lib.tl(1)\n"
              "      value n = 1 at main.tl(5)\n"
              "round 2 of @for: q at main.tl(3)\n"
              "  call pair(a=x, b=@(n)) at main.tl(5)\n"
              "    call a = x at lib.tl(1)\n"
              "      call x = q at main.tl(5)\n"
              "    call b = @(n) at lib.tl(1)\n"
              "      value n = 1 at main.tl(5)\n"
              "value n = 1 at main.tl(8)\n"
              "assign n = 2 at main.tl(8)\n"
              "define $D = v at main.tl(9)\n");
}

TEST_F(TraceTest, KindsOfMacros)
{
    EXPECT_EQ(Trace("@def int sum(int a, b) = {a + b}\n"
                    "@def twice(m()) = {m(1) }\n"
                    "@def show(x) = {x}\n"
                    "sum(1 + 1, 3)\n"
                    "twice(show)\n"),
              "define int sum(a,b) = a + b at main.tl(1)\n"
              "define twice(m) = m(1)  at main.tl(2)\n"
              "define show(x) = x at main.tl(3)\n"
              "call sum(a=2, b=3) at main.tl(4)\n"
              "  value a = 2 at main.tl(1)\n"
              "  call b = 3 at main.tl(1)\n"
              "call twice(m=show) at main.tl(5)\n"
              "  call m(1) at main.tl(2)\n"
              "    call show(x=1) at main.tl(2)\n"
              "      call x = 1 at main.tl(3)\n");
}

TEST_F(TraceTest, TextsAreShownOnOneLineAndShortened)
{
    EXPECT_EQ(
        Trace("@def f =\n{\n    a\tb\n    c\n}\n@def long = {" + std::string(70, 'x') + "}\n"),
        "define f = a\\tb\\n    c at main.tl(1)\n"
        "define long = " +
            std::string(60, 'x') + "... at main.tl(6)\n");
}

TEST_F(TraceTest, DeepCallsAreNumbered)
{
    const std::string trace = Trace("@def f(int n) = {@if(n > 0){f(n - 1)}}\nf(40)\n");
    EXPECT_NE(trace.find("\n" + std::string(60, ' ') + "call f(n=10) at main.tl(1)\n"),
              std::string::npos);
    EXPECT_NE(trace.find("\n" + std::string(60, ' ') + "[40] call f(n=0) at main.tl(1)\n"),
              std::string::npos);
}

TEST_F(TraceTest, CommandLineAndStandardInput)
{
    Expand({"-E", "@def f = {a}", "--trace", "trace", "-o", "out"}, "f\n");
    EXPECT_EQ(Read("trace"), "define f = a at <command line>(1)\ncall f = a at <stdin>(1)\n");
}

TEST_F(TraceTest, StandardOutput)
{
    const ProgramResult result = Run({"--trace", "-", "-o", "out"}, "@def f = {a}f");
    EXPECT_EQ(result.out, "define f = a at <stdin>(1)\ncall f = a at <stdin>(1)\n");
    EXPECT_EQ(Read("out"), "a");
    ExpectFailure(Run({"--trace", "-"}, "a"), 2,
                  "tlexpand: the expansion and the trace can't both go to standard output" +
                      s_hint);
}

TEST_F(TraceTest, AFailedRunLeavesTheEarlierFile)
{
    Write("trace", "earlier");
    EXPECT_EQ(Run({"--trace", "trace", "-o", "out"}, "@def f = {a}\nf @(1 / 0)\n").status, 1);
    EXPECT_EQ(Read("trace"), "earlier");
    EXPECT_EQ(Names(), " trace");
}

TEST_F(TraceTest, APipeGetsItsLinesUpToTheError)
{
    const ProgramResult result = RunShell(
        "printf '@def f = {@(1 / 0)}\\nf\\n' | $TLEXPAND --trace /dev/stderr -o out 2>&1 | cat");
    EXPECT_EQ(result.out.substr(0, result.out.find(" : error")),
              "define f = @(1 / 0) at <stdin>(1)\n"
              "call f = @(1 / 0) at <stdin>(2)\n"
              "<stdin>(1)");
}

TEST_F(TraceTest, ManyLinesGoOutAsTheyCome)
{
    Write("main.tl", "@let int i = {0}@while(i < 3000){@let i = {i + 1}}\n");
    Expand({"--trace", "trace", "-o", "out", "main.tl"});
    const std::string trace = Read("trace");
    // The definition; for each round its condition, the round, the value and the assignment; the
    // last condition.
    EXPECT_EQ(std::count(trace.begin(), trace.end(), '\n'), 1 + 4 * 3000 + 1);
    EXPECT_GT(trace.size(), 200'000u);
}

TEST_F(TraceTest, FullDisk)
{
    const ProgramResult result = Run({"--trace", "/dev/full", "-o", "out"}, "@def f = {a}f");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.err, "tlexpand: can't write '/dev/full': No space left on device\n");
    EXPECT_EQ(Names(), "");
}

// What options define is told before the text begins, in their order.
TEST_F(TraceTest, DefinitionsOfOptions)
{
    Write("rows.csv", "a,b\n1,one\n");
    Write("main.tl", "x\n");
    Expand({"--trace", "trace", "-o", "out", "-D", "ROOT=/usr", "--list", "rows=rows.csv", "-E",
            "@def f = {y}", "-D", "LAST=", "main.tl"});
    EXPECT_EQ(Read("trace"), "define $ROOT = /usr at <command line>\n"
                             "define rows = [(1,one)] at rows.csv(1)\n"
                             "define f = y at <command line>(1)\n"
                             "define $LAST =  at <command line>\n");
}

} // namespace telv::test
