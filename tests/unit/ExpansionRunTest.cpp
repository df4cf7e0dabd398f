// SPDX-License-Identifier: MIT
// The run: how it is installed, its limits, which source a position belongs to, and where something
// failed that has no position of its own.
#include "tlMacroExpander/ExpansionRun.h"
#include "ExpanderSupport.h"
#include "tlMacroExpander/src/LSSourceFile.h"
#include "tlUtils/HeldMemory.h"
#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <new>
#include <thread>

namespace telv::expander
{

namespace
{

/// The result in a session of its own under a run with these limits.
std::string Limited(const ExpansionLimits& limits, const std::string& text)
{
    ExpansionRun run;
    run.m_limits = limits;
    const ExpansionRunScope scope(run);
    return ExpansionOf(text);
}

ExpansionLimits Depth(ssize_t depth)
{
    ExpansionLimits limits;
    limits.m_maxDepth = depth;
    return limits;
}

ExpansionLimits Steps(ssize_t steps)
{
    ExpansionLimits limits;
    limits.m_maxSteps = steps;
    return limits;
}

ExpansionLimits OutputSize(ssize_t bytes)
{
    ExpansionLimits limits;
    limits.m_maxOutput = bytes;
    return limits;
}

std::string FirstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

/// An output that has room for only so many writes, after which memory is exhausted.
class Exhausted final : public IndentingStream
{
public:
    explicit Exhausted(int writes) : m_left(writes) {}
    void Flush() override {}

protected:
    void Write(const char*, ssize_t) override
    {
        if (m_left-- == 0)
            throw std::bad_alloc();
    }
    char LastCharacter() const override { return 'x'; }

private:
    int m_left;
};

/// Notes the place that the run gives during an import.
class PlaceHandler : public ImportHandler
{
public:
    bool HandleImport(VarFrame*, const xstring&, const char*) override
    {
        m_run = ExpansionRun::Current();
        m_pos = m_run == nullptr ? nullptr : m_run->CurrentPosition();
        return true;
    }

    const ExpansionRun* m_run = nullptr;
    const char* m_pos = nullptr;
};

} // namespace

// Scopes

TEST(ExpansionRun, ScopesNest)
{
    EXPECT_EQ(ExpansionRun::Current(), nullptr);
    ExpansionRun outer;
    ExpansionRun inner;
    {
        const ExpansionRunScope outerScope(outer);
        EXPECT_EQ(ExpansionRun::Current(), &outer);
        {
            const ExpansionRunScope innerScope(inner);
            EXPECT_EQ(ExpansionRun::Current(), &inner);
            const ExpansionRunScope again(outer);
            EXPECT_EQ(ExpansionRun::Current(), &outer);
        }
        EXPECT_EQ(ExpansionRun::Current(), &outer);
        std::thread([] { EXPECT_EQ(ExpansionRun::Current(), nullptr); }).join();
    }
    EXPECT_EQ(ExpansionRun::Current(), nullptr);
}

TEST(ExpansionRun, IsTheOneThatHandlersSee)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    PlaceHandler handler;
    Session session(&handler);
    EXPECT_EQ(session.Expand("a @import \"x\""), "a @import \"x\"");
    EXPECT_EQ(handler.m_run, &run);
    EXPECT_EQ(session.Place(handler.m_pos), "2");
    EXPECT_EQ(run.CurrentPosition(), nullptr);
}

TEST(ExpansionRun, NothingStaysInstalledWithoutOne)
{
    PlaceHandler handler;
    EXPECT_EQ(Session(&handler).Expand("@import \"x\""), "@import \"x\"");
    EXPECT_NE(handler.m_run, nullptr);
    EXPECT_EQ(ExpansionRun::Current(), nullptr);
    EXPECT_EQ(ExpansionOf("@fail(\"no\")"), "error: no @5");
    EXPECT_EQ(ExpansionRun::Current(), nullptr);
}

TEST(ExpansionRun, NewRunLimitsNothing)
{
    const ExpansionRun run;
    EXPECT_EQ(run.m_limits.m_maxDepth, ExpansionLimits::s_none);
    EXPECT_EQ(run.m_limits.m_maxSteps, ExpansionLimits::s_none);
    EXPECT_EQ(run.m_limits.m_maxOutput, ExpansionLimits::s_none);
    EXPECT_TRUE(run.m_pythonAllowed);
    EXPECT_EQ(run.m_mappedOutput, nullptr);
    EXPECT_EQ(run.FailurePosition(), nullptr);
    EXPECT_EQ(run.CurrentPosition(), nullptr);
}

TEST(ExpansionRun, SameResultsWithAndWithout)
{
    const char* const texts[] = {
        "a@@b",
        "@def f(x) = {<x>}\nf(1) f(f(2))",
        "@for(x in [1,2]){x }",
        "@[@quote(@(1+1))]",
        "@fail(\"no\")",
        "@for(x in [1,2]){@fail(\"x\")}",
        "@[@quote(@(1+))]",
    };
    for (const char* text : texts)
        EXPECT_EQ(Limited(ExpansionLimits(), text), ExpansionOf(text)) << text;
}

// Limits

TEST(ExpansionRun, DepthLimit)
{
    const char* const nested = "@scope{@scope{x}}"; // three expansions inside one another
    EXPECT_EQ(Limited(Depth(3), nested), "x");
    EXPECT_EQ(Limited(Depth(2), nested), "error: Expansion nested too deeply @14");
    EXPECT_EQ(Limited(Depth(1), nested), "error: Expansion nested too deeply @7");
    EXPECT_EQ(Limited(Depth(1), "x@@y"), "xy");
    EXPECT_EQ(Limited(Depth(0), "x"), "error: Expansion nested too deeply @0");
    EXPECT_EQ(Limited(Depth(1), "@def m = {x}\nm"),
              "error: Expansion nested too deeply\n    invoking macro m @10");
    EXPECT_EQ(Limited(Depth(2), "@def m = {x}\nm m m"), "x x x");
}

TEST(ExpansionRun, StepLimitCountsExpansionsInvocationsAndRounds)
{
    const struct
    {
        const char* m_text;
        ssize_t m_steps;
    } rows[] = {
        {"x", 1},
        {"@scope{x}", 2},
        {"@def m = {x}\nm", 3},       // text, invocation, body
        {"@let int i = {1}\ni i", 4}, // text, value text, two values
        {"@for(x in [1,2]){}", 4},    // text, list, two rounds
        {"@if(true){x}", 3},          // text, condition, block
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Limited(Steps(row.m_steps), row.m_text), ExpansionOf(row.m_text)) << row.m_text;
        EXPECT_EQ(FirstLine(Limited(Steps(row.m_steps - 1), row.m_text))
                      .substr(0, sizeof "error: Too many expansion steps" - 1),
                  "error: Too many expansion steps")
            << row.m_text;
    }
}

TEST(ExpansionRun, StepLimitEndsEndlessLoops)
{
    EXPECT_EQ(Limited(Steps(1000), "ab @while(true){}").substr(0, 31),
              "error: Too many expansion steps");
    EXPECT_EQ(Limited(Steps(1000), "@while(true){x}").substr(0, 31),
              "error: Too many expansion steps");
}

TEST(ExpansionRun, StepsAreCountedForTheWholeRun)
{
    ExpansionRun run;
    run.m_limits.m_maxSteps = 3;
    const ExpansionRunScope scope(run);
    EXPECT_EQ(ExpansionOf("a"), "a");
    EXPECT_EQ(ExpansionOf("b"), "b");
    EXPECT_EQ(ExpansionOf("c"), "c");
    EXPECT_EQ(ExpansionOf("d"), "error: Too many expansion steps @0");
}

TEST(ExpansionRun, OutputLimit)
{
    EXPECT_EQ(Limited(OutputSize(3), "abc"), "abc");
    EXPECT_EQ(Limited(OutputSize(2), "abc"), "error: Output too large @0");
    EXPECT_EQ(Limited(OutputSize(4), "ab cd"), "error: Output too large @3");
    EXPECT_EQ(Limited(OutputSize(5), "x @str(\"\"\"\")").substr(0, 23), "error: Output too large");
    EXPECT_EQ(Limited(OutputSize(2), "@scope{\n        a\n}").substr(0, 23),
              "error: Output too large");
    EXPECT_EQ(Limited(OutputSize(100), "@let string s = {\"xxxxxxxxxx\"}\n@while(true){@let s := "
                                       "{s@@s}}")
                  .substr(0, 23),
              "error: Output too large");
}

TEST(ExpansionRun, AssertFailsDoesNotSwallowLimits)
{
    EXPECT_EQ(Limited(Depth(2), "@assertfails{@scope{x}}"),
              "error: Expansion nested too deeply @20");
    EXPECT_EQ(Limited(Steps(100), "@assertfails{@while(true){}}").substr(0, 31),
              "error: Too many expansion steps");
    EXPECT_EQ(Limited(OutputSize(9), "@assertfails{abcdefghij}"), "error: Output too large @13");
    EXPECT_EQ(Limited(Depth(3), "@assertfails{@fail(\"no\")}x"), "x");
}

TEST(ExpansionRun, LimitsKeepTheirPlaceAndTheirWords)
{
    // Handlers would move other errors to their directive, and read "EOS" as a bracket.
    EXPECT_EQ(Limited(Depth(2), "@( @scope{1} )"),
              "error: Expansion nested too deeply\n    in @() @10");
    EXPECT_EQ(Limited(Depth(2), "@assert( @scope{1} )"),
              "error: Expansion nested too deeply\n    in @assert() @16");
}

TEST(ExpansionRun, LimitsCollectTwentyLinesOfContext)
{
    std::string text = "@def m0 = {@scope{x}}\n";
    for (int i = 1; i <= 40; ++i)
        text += "@def m" + std::to_string(i) + " = {m" + std::to_string(i - 1) + "}\n";
    const std::string error = Limited(Depth(42), text + "m40");
    EXPECT_EQ(FirstLine(error), "error: Expansion nested too deeply");
    EXPECT_EQ(std::count(error.begin(), error.end(), '\n'), 20);
    EXPECT_NE(error.find("\n    invoking macro m0\n"), std::string::npos);
    EXPECT_NE(error.find("\n    invoking macro m19 @"), std::string::npos);
    // Other errors collect all.
    const std::string other = ExpansionOf(text + "@def f = {@fail(\"no\")}\n@def g = {f}\ng");
    EXPECT_EQ(other.substr(0, other.find(" @")),
              "error: no\n    invoking macro f\n    invoking macro g");
}

TEST(ExpansionRun, EarlierErrorsDoNotCount)
{
    ExpansionRun run;
    run.m_limits = Depth(3);
    const ExpansionRunScope scope(run);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(ExpansionOf("@scope{@fail(\"no\")}"), "error: no @12");
    EXPECT_EQ(ExpansionOf("@scope{@scope{x}}"), "x");
}

// Sources

TEST(ExpansionRun, FindSource)
{
    LSSourceFile one;
    LSSourceFile two;
    one.m_buffer = "first file";
    two.m_buffer = "second";
    ExpansionRun run;
    EXPECT_EQ(run.FindSource(one.m_buffer.begin()), nullptr);
    run.AddSource(one);
    run.AddSource(two);
    EXPECT_EQ(run.FindSource(nullptr), nullptr);
    for (const LSSourceFile* file : {&one, &two})
    {
        EXPECT_EQ(run.FindSource(file->m_buffer.begin()), file);
        EXPECT_EQ(run.FindSource(file->m_buffer.begin() + 3), file);
        EXPECT_EQ(run.FindSource(file->m_buffer.end()), file);
    }
    const std::string other = "another text";
    EXPECT_EQ(run.FindSource(other.data()), nullptr);
    EXPECT_EQ(run.FindSource(other.data() + 12), nullptr);
}

// Text made while expanding

TEST(ExpansionRun, OriginOfTextThatADefinitionKeepsAlive)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    Session session;
    const std::string text = "one @[@quote(@def + m = {body})] m";
    EXPECT_EQ(session.Expand(text), "one  body");
    const auto* const m = static_cast<LSMacroVariable*>(session.m_frame.Find("m", nullptr));
    const SubString body = m->GetSubstitutionString();
    for (const char* pos : {body.begin(), body.end(), m->m_name.begin()})
    {
        SubString origin;
        ASSERT_TRUE(run.FindOrigin(pos, origin));
        EXPECT_EQ(session.Place(origin.begin()), "4");
        EXPECT_EQ(Str(origin), "@");
        EXPECT_EQ(session.Place(run.ResolvePosition(pos)), "4");
    }
    SubString origin("untouched");
    const char* const given = session.Keep("given text").begin();
    EXPECT_FALSE(run.FindOrigin(given, origin));
    EXPECT_FALSE(run.FindOrigin(nullptr, origin));
    EXPECT_EQ(Str(origin), "untouched");
    EXPECT_EQ(run.ResolvePosition(given), given);
    EXPECT_EQ(run.ResolvePosition(nullptr), nullptr);
}

TEST(ExpansionRun, OriginOfTextInTextIsTheOutermost)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    Session session;
    // The inner @[ stands in the text that the outer one made.
    EXPECT_EQ(session.Expand("x @[@quote(yy @[@quote(@def + m = {body})])]"), "x yy ");
    const auto* const m = static_cast<LSMacroVariable*>(session.m_frame.Find("m", nullptr));
    SubString origin;
    ASSERT_TRUE(run.FindOrigin(m->GetSubstitutionString().begin(), origin));
    EXPECT_EQ(session.Place(origin.begin()), "2");
}

TEST(ExpansionRun, OriginEndsWithItsText)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    const char* body = nullptr;
    {
        Session session;
        EXPECT_EQ(session.Expand("@[@quote(@def + m = {body})]"), "");
        const auto* const m = static_cast<LSMacroVariable*>(session.m_frame.Find("m", nullptr));
        body = m->GetSubstitutionString().begin();
        EXPECT_NE(run.ResolvePosition(body), body);
    }
    EXPECT_EQ(run.ResolvePosition(body), body);
}

TEST(ExpansionRun, TextsOutliveTheRunThatMadeThem)
{
    Session session;
    {
        ExpansionRun run;
        const ExpansionRunScope scope(run);
        EXPECT_EQ(session.Expand("@[@quote(@def + m = {body})]"), "");
    }
    EXPECT_EQ(session.Expand("m"), "body");
}

// Where something failed

/// Answers each import with a text that it keeps for itself, counted as held.
class KeepingHandler final : public ImportHandler
{
public:
    static constexpr ssize_t s_size = ssize_t{1} << 20;

    bool HandleImport(VarFrame* /*vf*/, const xstring& /*path*/, const char* /*pos*/) override
    {
        m_held.emplace_back(s_size);
        return true;
    }

    std::deque<MemoryHold> m_held;
};

TEST(ExpansionRun, WhatAHandlerHoldsCounts)
{
    const ssize_t before = ThreadMemory().m_bytes;
    {
        KeepingHandler handler;
        ExpansionRun run;
        run.m_limits.m_maxMemory = 2 * KeepingHandler::s_size + KeepingHandler::s_size / 2;
        const ExpansionRunScope scope(run);
        FileScopeVarFrame frame;
        const xstring source("@import \"a\"\n@import \"b\"\n@import \"c\"\n");
        xstring text;
        try
        {
            MacroExpand(&handler, &frame, source, 0, 0, text);
            ADD_FAILURE() << "expanded";
        }
        catch (const ExpansionLimitException& e)
        {
            EXPECT_EQ(xstring("Out of memory"), e.m_description);
            EXPECT_EQ(source.begin() + 24, e.m_pos);
        }
        EXPECT_EQ(2u, handler.m_held.size());
    }
    EXPECT_EQ(before, ThreadMemory().m_bytes);
}

TEST(ExpansionRun, FailurePositionOfAnAssertion)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    Session session;
    session.m_frame.m_localVariables.Add(new LSValueVariable(LSV_INT, "@n", "1"));
    EXPECT_THROW(session.Expand("text @n"), TelvAssertionError);
    EXPECT_EQ(session.Place(run.FailurePosition()), "5");
    EXPECT_THROW(session.Expand("text @scope{  @n}"), TelvAssertionError);
    EXPECT_EQ(session.Place(run.FailurePosition()), "14");
    EXPECT_EQ(run.CurrentPosition(), nullptr);
    EXPECT_EQ(session.Expand("fine"), "fine");
    EXPECT_EQ(run.FailurePosition(), nullptr);
}

TEST(ExpansionRun, FailurePositionInTextMadeWhileExpanding)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    Session session;
    session.m_frame.m_localVariables.Add(new LSValueVariable(LSV_INT, "@n", "1"));
    EXPECT_THROW(session.Expand("text @[@quote(abc @n)]"), TelvAssertionError);
    EXPECT_EQ(session.Place(run.FailurePosition()), "5");
    EXPECT_THROW(session.Expand("@for(x in [@quote(@n)]){ x}"), TelvAssertionError);
    EXPECT_EQ(session.Place(run.FailurePosition()), "0");
}

TEST(ExpansionRun, FailurePositionIsNotThatOfAnEarlierError)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    Session session;
    session.m_frame.m_localVariables.Add(new LSValueVariable(LSV_INT, "@n", "1"));
    EXPECT_THROW(session.Expand("@assertfails{@fail(\"x\")} @n"), TelvAssertionError);
    EXPECT_EQ(session.Place(run.FailurePosition()), "25");
}

TEST(ExpansionRun, ErrorsWithAPositionLeaveNone)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    Session session;
    EXPECT_EQ(session.Expand("@scope{@fail(\"no\")}"), "error: no @12");
    EXPECT_EQ(run.FailurePosition(), nullptr);
}

TEST(ExpansionRun, FailurePositionWhenMemoryIsExhausted)
{
    ExpansionRun run;
    const ExpansionRunScope scope(run);
    FileScopeVarFrame frame;
    const std::string text = "one two @scope{three four} five";
    const struct
    {
        int m_writes;
        ssize_t m_offset;
    } rows[] = {{0, 0}, {1, 4}, {2, 8}, {3, 15}, {4, 21}};
    for (const auto& row : rows)
    {
        Exhausted exhausted(row.m_writes);
        xostream os(&exhausted);
        ExpandedOutput output(&os);
        EXPECT_THROW(MacroExpand(nullptr, &frame, View(text), 0, 0, output), std::bad_alloc);
        EXPECT_EQ(run.FailurePosition() - text.data(), row.m_offset) << row.m_writes;
    }
}

} // namespace telv::expander
