// SPDX-License-Identifier: MIT
// The way to each piece of an output, for every construct through which text can come.
#include "tlMacroExpander/ChainRecorder.h"
#include "ExpanderSupport.h"
#include "tlMacroExpander/ExpansionRun.h"
#include <gtest/gtest.h>

namespace telv::expander
{

namespace
{

/// "NAME@OFFSET" for each step from `step` outwards; a loop as "@for:ROUND@OFFSET".
std::string Way(const ChainRecorder& chains, ssize_t step, SubString source)
{
    std::string way;
    for (; step != -1; step = chains.Steps()[step].m_outer)
    {
        const ChainStep& one = chains.Steps()[step];
        EXPECT_LT(one.m_outer, step);
        EXPECT_TRUE(IsWithin(one.m_place, source)) << Str(one.m_name);
        EXPECT_EQ(one.m_kind == ChainStep::STEP_LOOP, one.m_round > 0);
        way += " " + Str(one.m_name);
        if (one.m_round > 0)
            way += ":" + std::to_string(one.m_round);
        way += "@" + std::to_string(one.m_place.begin() - source.begin());
    }
    return way;
}

/// The expansion of `source`, recorded by `chains`.
xstring Record(const xstring& source, ChainRecorder& chains)
{
    ExpansionRun run;
    run.SetObserver(&chains);
    const ExpansionRunScope scope(run);
    FileScopeVarFrame frame;
    xstring output;
    MacroExpand(nullptr, &frame, source, 0, 0, output);
    return output;
}

/// A line for each stretch of output that came the same way: its text and the way.
std::string Ways(const std::string& text)
{
    const xstring source(text.c_str());
    ChainRecorder chains;
    ExpansionRun run;
    run.SetObserver(&chains);
    const ExpansionRunScope scope(run);
    FileScopeVarFrame frame;
    xstring output;
    OutputPieces pieces;
    MacroExpand(nullptr, &frame, source, 0, 0, output, pieces);
    EXPECT_EQ(chains.CountOfPieces(), pieces.m_pieces.size());
    std::string ways;
    const char* p = output.begin();
    for (ssize_t i = 0; i < chains.CountOfPieces(); ++i)
    {
        const ssize_t size = pieces.m_pieces[i].size();
        ways += Str(SubString(p, p + size));
        p += size;
        if (i + 1 == chains.CountOfPieces() || chains.StepOfPiece(i + 1) != chains.StepOfPiece(i))
            ways += ":" + Way(chains, chains.StepOfPiece(i), source) + "\n";
    }
    return ways;
}

TEST(ChainRecorder, Ways)
{
    static constexpr struct
    {
        const char* m_text;
        const char* m_ways;
    } rows[] = {
        {"a b", "a b:\n"},
        {"@(1 + 1)@str(a)", "2\"a\":\n"},
        {"@def i = {t}@def o = {i}o", "t: i@22 o@24\n"},
        {"@def f(x) = {x!}f(a)", "a: x@13 f@16\n!: f@16\n"},
        {"@def f(x) = {x}f(`a,b`)", "a,b: x@13 f@15\n"},
        // A value says itself where it stands; a macro with a type is on the way to its value.
        {"@def f(int n) = {n}f(1+1)", "2: f@19\n"},
        {"@def int f = {3}f", "3: f@16\n"},
        {"@let int n = {3}n", "3:\n"},
        // The call that an argument stands for is made where the argument is named.
        {"@def t(m()) = {m(x)}@def b(v) = {<v>}t(b)", "<: b@15 m@15 t@37\n"
                                                      "x: v@34 b@15 m@15 t@37\n"
                                                      ">: b@15 m@15 t@37\n"},
        {"@def ab = {Z}@def f = {@[a@@b]}f", "Z: f@31\n"},
        {"@def f = {@if(true){@scope{a}}}f", "a: f@31\n"},
        {"@def f = {@quote(a)@str(b)\"c\"}f", "a\"b\"\"c\": f@30\n"},
        {"@for(i in [p,q]){i.}", "p: i@17 @for:1@0\n.: @for:1@0\nq: i@17 @for:2@0\n.: @for:2@0\n"},
        {"@for((a,b) in [(1,2)]){a-b}", "1: a@23 @for:1@0\n-: @for:1@0\n2: b@25 @for:1@0\n"},
        {"@let int n = {0}@while(n < 2){n@let n = {n + 1}}", "0: @while:1@16\n1: @while:2@16\n"},
        // The list and its loop are made while expanding: places are those of what made them.
        {"@def l = {[u]}@def f = {@for(i in l){@for(j in [i]){j}}}f",
         "u: j@52 @for:1@37 @for:1@24 f@56\n"},
        {"@nakeddef f(x) = {@def g = {x}}f(1)g", "1: x@28 g@35\n"},
        // The other ways to define; what a body defines is used where it is visible.
        {"@nakeddef f = {@exportdef g = {x}}@scope{f@@g}g", "x: g@44\nx: g@46\n"},
        {"@def f = {@def + g = {x}}f@@g", "x: g@28\n"},
        // Chosen blocks are no steps, nor are scopes, quotes and directives that calculate.
        {"@def f(int n) = {@if(n == 1){a}@elseif(n == 2){b}@else{c}}f(1)f(2)f(3)",
         "a: f@58\nb: f@62\nc: f@66\n"},
        {"@def f = {@unstr(\"x\")@strx(y)@relativepath(\"a\", \"a/b\")}f", "x\"y\"\"b\": f@55\n"},
        // Strings, conditions and typed values are expanded, but not written: not even their names.
        {"@def t = {true}@if(t){@str(t)}", "\"true\":\n"},
        {"@def g = {1}@def f(int n) = {n}@let int k = {g + 1}f(k)", "2: f@51\n"},
        {"@def double h = {0.5}@def f(string s) = {s}f(\"x\")h", "x: f@43\n0.5: h@49\n"},
        // Back quotes are taken off, at every level.
        {"@def in(x) = {x}@def out(x) = {in(`x`)}out(`a, b`)", "a, b: x@35 x@14 in@31 out@39\n"},
        // An argument that is used twice, and one that nobody uses.
        {"@def f(x, y) = {x.x}f(a, b)", "a: x@16 f@20\n.: f@20\na: x@18 f@20\n"},
        // A passed macro with a type, and one passed on.
        {"@def t(f()) = {f(1)}@def int n(int x) = {x + 1}t(n)", "2: n@15 f@15 t@47\n"},
        {"@def a(f()) = {b(f)}@def b(g()) = {g(1)}@def c(x) = {x}a(c)",
         "1: x@53 c@35 f@35 g@35 b@15 a@55\n"},
        // Loops in loops in macros.
        {"@def f(l) = {@for(i in l){@for(j in l){i-j}}}f([p])",
         "p: i@39 @for:1@26 @for:1@13 f@45\n-: @for:1@26 @for:1@13 f@45\n"
         "p: j@41 @for:1@26 @for:1@13 f@45\n"},
        {"@assertfails(@def f = {@(1 / 0)}f)a", "a:\n"},
        {"@def f(int n) = {n@if(n > 0){f(n - 1)}}f(1)", "1: f@39\n0: f@29 f@39\n"},
        // The same step twice is two steps; pieces of one step share it.
        {"@def f = {a b}f f", "a b: f@14\n :\na b: f@16\n"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Ways(row.m_text), row.m_ways) << row.m_text;
}

TEST(ChainRecorder, IndentationGoesTheWayOfItsBlock)
{
    EXPECT_EQ(Ways("@def f =\n{\n    a\n    b\n}\n  f"), "  :\na\n  b: f@27\n");
}

#if TELV_HAS_PYTHON
TEST(ChainRecorder, PythonMacros)
{
    EXPECT_EQ(Ways("@defpython p(a) = {str(a)}@def f = {p(7)}f"), "7: p@36 f@41\n");
    // The names in its code are expanded into a string.
    EXPECT_EQ(Ways("@def n = {2}@defpython l(int k) = {[k, n]}@for(i in l(n + 1)){i;}"),
              "3: i@62 @for:1@42\n;: @for:1@42\n2: i@62 @for:2@42\n;: @for:2@42\n");
}
#endif

TEST(ChainRecorder, OnlyWhatLedToPiecesIsStored)
{
    const xstring source("@def silent = {}@def f = {a b}silent f silent");
    ChainRecorder chains;
    const xstring output = Record(source, chains);
    EXPECT_EQ(Str(output), " a b ");
    EXPECT_EQ(chains.Steps().size(), 1);
    EXPECT_EQ(chains.CountOfPieces(), 4);
}

TEST(ChainRecorder, PiecesOfAGivenOutput)
{
    const xstring source("@def f = {a}f");
    StringStream os(64);
    ExpandedOutput output(&os);
    ChainRecorder chains(&output);
    ExpansionRun run;
    run.SetObserver(&chains);
    const ExpansionRunScope scope(run);
    FileScopeVarFrame frame;
    xstring other;
    MacroExpand(nullptr, &frame, source, 0, 0, other);
    EXPECT_EQ(chains.CountOfPieces(), 0);
    MacroExpand(nullptr, &frame, source, 0, 0, output);
    EXPECT_EQ(chains.CountOfPieces(), output.m_pieces.m_pieces.size());
    EXPECT_EQ(chains.Steps().size(), 1);
}

TEST(ChainRecorder, ManyCalls)
{
    constexpr ssize_t n = 100'000;
    const xstring source(
        "@def g = {x}@def f = {g.}@let int i = {0}@while(i < 100000){f@let i = {i + 1}}");
    ChainRecorder chains;
    Record(source, chains);
    EXPECT_EQ(chains.CountOfPieces(), 2 * n);
    EXPECT_EQ(chains.Steps().size(), 3 * n); // a round, f and g
}

TEST(ChainRecorder, WhatTheApplicationWritesItselfHasNoSteps)
{
    const xstring first("@def m = {x}m");
    const xstring second("m");
    const xstring own("own");
    ChainRecorder chains;
    ExpansionRun run;
    run.SetObserver(&chains);
    const ExpansionRunScope scope(run);
    FileScopeVarFrame frame;
    StringStream os(64);
    ExpandedOutput output(&os);
    output.WriteSubStringFromSourceFile(own, 0);
    MacroExpand(nullptr, &frame, first, 0, 0, output);
    output.WriteCalculatedSubString("a\nb", own, 2);
    MacroExpand(nullptr, &frame, second, 0, 0, output);
    ASSERT_EQ(chains.CountOfPieces(), output.m_pieces.m_pieces.size());
    std::string steps;
    for (ssize_t i = 0; i < chains.CountOfPieces(); ++i)
        steps += " " + std::to_string(chains.StepOfPiece(i));
    EXPECT_EQ(steps, " -1 0 -1 1");
}

TEST(ChainRecorder, DeepCalls)
{
    constexpr ssize_t depth = 20'000;
    const auto expand = []
    {
        const xstring source("@def f(int n) = {x@if(n > 0){f(n - 1)}}f(20000)");
        ChainRecorder chains;
        const xstring output = Record(source, chains);
        EXPECT_EQ(output.size(), depth + 1);
        EXPECT_EQ(chains.Steps().size(), depth + 1);
        ssize_t length = 0;
        for (ssize_t step = chains.StepOfPiece(depth); step != -1;
             step = chains.Steps()[step].m_outer)
            ++length;
        EXPECT_EQ(length, depth + 1);
    };
    OnStackOf(1 << 28, expand);
}

} // namespace

} // namespace telv::expander
