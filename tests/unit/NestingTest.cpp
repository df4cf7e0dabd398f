// SPDX-License-Identifier: MIT
// Nesting without end is an error and never a crash, on small and on large stacks; nesting that is
// merely deep works.
#include "ExpanderSupport.h"
#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <ucontext.h>

namespace telv::expander
{

namespace
{

constexpr size_t s_smallStack = 512 * 1024;
constexpr size_t s_largeStack = 8 * 1024 * 1024;

std::string Repeated(const std::string& text, size_t times)
{
    std::string result;
    result.reserve(text.size() * times);
    for (size_t i = 0; i < times; ++i)
        result += text;
    return result;
}

std::string OnStack(size_t size, const std::string& text)
{
    std::string result;
    OnStackOf(size, [&] { result = ExpansionOf(text); });
    return result;
}

std::string FirstLine(const std::string& result)
{
    return result.substr(0, std::min(result.find('\n'), result.find(" @")));
}

struct Nested
{
    const char* m_name;
    std::string m_before;
    std::string m_open; ///< Repeated, then `m_middle`, then `m_close` as often.
    std::string m_middle;
    std::string m_close;
};

std::string Text(const Nested& nested, size_t levels)
{
    return nested.m_before + Repeated(nested.m_open, levels) + nested.m_middle +
           Repeated(nested.m_close, levels);
}

const Nested s_nested[] = {
    {"@scope", "", "@scope{", "x", "}"},
    {"@if", "", "@if(true){", "x", "}"},
    {"@elseif", "", "@if(false){}@elseif(true){", "x", "}"},
    {"@else", "", "@if(false){}@else{", "x", "}"},
    {"@for", "", "@for(i in [1]){", "x", "}"},
    {"@while", "", "@while(true){", "@fail(\"reached\")", "}"},
    {"condition", "", "@if(@if(true){true", "", "}){}"},
    {"list of @for", "", "@for(i in [", "1", "]){i}"},
    {"@(", "", "@(", "1", ")"},
    {"@[", "", "@[", "x", "]"},
    {"@str", "", "@str(", "", ")"},
    {"@unstr", "", "@unstr(@str(", "x", "))"},
    {"@assert", "", "@assert(true @scope{", "", "})"},
    {"@print", "", "@print(", "", ")"},
    {"@assertfails", "", "@assertfails{x@scope{", "", "}@fail(\"no\")}"},
    {"argument", "@def f(x) = {x}\n", "f(", "x", ")"},
    {"argument with a type", "@def f(int i) = {i}\n", "f(", "1", ")"},
    {"round brackets", "@(", "(", "1", "))"},
    {"function calls", "@(", "sin(", "1", "))"},
};

/// Endless, whatever the stack.
const std::pair<const char*, const char*> s_endless[] = {
    {"macro", "@def f = {f}\nf"},
    {"macro with an argument", "@def f(x) = {f(x)}\nf(1)"},
    {"macro whose argument grows", "@def f(x) = {f(<x>)}\nf(1)"},
    {"two macros", "@def f = {g}\n@def g = {f}\nf"},
    {"macro with a type", "@def int f = {f}\nf"},
    {"argument with a type", "@def f(int i) = {f(i + 1)}\nf(1)"},
    {"naked macro", "@nakeddef f = {f}\nf"},
    {"function argument", "@def c(g()) = {g(1)}\n@def f(x) = {c(f)}\nf(1)"},
    {"@scope", "@def f = {@scope{f}}\nf"},
    {"@if", "@def f = {@if(true){f}}\nf"},
    {"condition", "@def f = {@if(f){}}\nf"},
    {"@for", "@def f = {@for(x in [1]){f}}\nf"},
    {"list", "@def f = {@for(x in [f]){}}\nf"},
    {"@while", "@def f = {@while(true){f}}\nf"},
    {"@(", "@def f = {@(f)}\nf"},
    {"@[", "@def f = {@[f]}\nf"},
    {"@[ from its result", "@def f = {@[@quote(f)]}\nf"},
    {"@let", "@def f = {@let int i = {f}}\nf"},
    {"@str", "@def f = {@str(f)}\nf"},
    {"@unstr", "@def f = {@unstr(f)}\nf"},
    {"@print", "@def f = {@print(f)}\nf"},
    {"@assert", "@def f = {@assert(f)}\nf"},
    {"@assertfails", "@def f = {@assertfails(f)@assertfails(f)}\nf"},
    {"@fail", "@def f = {@fail(f)}\nf"},
    {"@relativepath", "@def f = {@relativepath(f, f)}\nf"},
};

} // namespace

TEST(Nesting, EndlessIsAnErrorOnASmallStack)
{
    for (const auto& [name, text] : s_endless)
        EXPECT_EQ(FirstLine(OnStack(s_smallStack, text)), "error: Expansion nested too deeply")
            << name;
}

TEST(Nesting, EndlessIsAnErrorOnALargeStack)
{
    for (const auto& [name, text] : s_endless)
        EXPECT_EQ(FirstLine(OnStack(s_largeStack, text)), "error: Expansion nested too deeply")
            << name;
}

TEST(Nesting, DeepTextEndsInAnErrorOnAnyStack)
{
    for (const Nested& nested : s_nested)
    {
        SCOPED_TRACE(nested.m_name);
        // Enough for 8 MiB where a level costs 200 bytes.
        const std::string result = FirstLine(OnStack(s_smallStack, Text(nested, 20000)));
        EXPECT_EQ(result, "error: Expansion nested too deeply");
    }
}

TEST(Nesting, DeepExpressionsEndInAnError)
{
    const std::pair<const char*, std::string> rows[] = {
        {"round brackets", "@(" + Repeated("(", 300000) + "1" + Repeated(")", 300000) + ")"},
        {"prefix operators", "@(" + Repeated("!", 1000000) + "true)"},
        {"signs", "@(" + Repeated("- ", 1000000) + "1)"},
        {"conditionals", "@(" + Repeated("true?1:", 300000) + "2)"},
        {"function calls", "@(" + Repeated("sin(", 300000) + "1" + Repeated(")", 300000) + ")"},
    };
    for (const size_t stack : {s_smallStack, s_largeStack})
    {
        for (const auto& [name, text] : rows)
            EXPECT_EQ(FirstLine(OnStack(stack, text)), "error: Expansion nested too deeply")
                << name << " on " << stack;
    }
}

TEST(Nesting, ThousandLevelsOfMacrosOnALargeStack)
{
    const std::string countdown = "@def f(int n) = {@if(n > 0){f(n - 1)}@else{end}}\nf(300)";
    std::string chain = "@def m0 = {end}\n";
    for (int i = 1; i <= 1000; ++i)
        chain += "@def m" + std::to_string(i) + " = {m" + std::to_string(i - 1) + "}\n";
    std::string withArgs = "@def m0(x) = {x}\n";
    for (int i = 1; i <= 1000; ++i)
        withArgs += "@def m" + std::to_string(i) + "(y" + std::to_string(i) + ") = {m" +
                    std::to_string(i - 1) + "(.)}\n";
    EXPECT_EQ(OnStack(s_largeStack, countdown), "end");
    EXPECT_EQ(OnStack(s_largeStack, chain + "m1000"), "end");
    EXPECT_EQ(OnStack(s_largeStack, withArgs + "m1000(x)"), ".");
}

TEST(Nesting, HundredLevelsOfEverythingOnALargeStack)
{
    const std::pair<const char*, std::string> rows[] = {
        {"@scope", Repeated("@scope{", 100) + "x" + Repeated("}", 100)},
        {"@if", Repeated("@if(true){", 100) + "x" + Repeated("}", 100)},
        {"@for", Repeated("@for(i in [1]){", 100) + "x" + Repeated("}", 100)},
        {"@[", Repeated("@[", 10) + "x" + Repeated("]", 10)},
        {"round brackets", "@str(x)@@" + Repeated("@unstr(@str(", 100) + "x" + Repeated("))", 100)},
    };
    for (const auto& [name, text] : rows)
    {
        const std::string result = OnStack(s_largeStack, text);
        EXPECT_EQ(result.back(), 'x') << name;
    }
    EXPECT_EQ(OnStack(s_largeStack, "@(" + Repeated("(", 1000) + "7" + Repeated(")", 1000) + ")"),
              "7");
    EXPECT_EQ(OnStack(s_largeStack, "@(" + Repeated("!", 1000) + "true)"), "true");
}

// The address sanitizer would have to be told of the switch.
#if !defined(TELV_ADDRESS_SANITIZER)

namespace
{

struct Fiber
{
    ucontext_t m_caller;
    ucontext_t m_own;
    std::function<void()> m_work;
};

thread_local Fiber* t_fiber = nullptr;

void RunFiber()
{
    t_fiber->m_work();
}

/// Runs `work` on a stack that the thread does not know of.
void OnFiber(size_t size, const std::function<void()>& work)
{
    const std::unique_ptr<char[]> stack(new char[size]);
    Fiber fiber;
    fiber.m_work = work;
    getcontext(&fiber.m_own);
    fiber.m_own.uc_stack.ss_sp = stack.get();
    fiber.m_own.uc_stack.ss_size = size;
    fiber.m_own.uc_link = &fiber.m_caller;
    makecontext(&fiber.m_own, RunFiber, 0);
    t_fiber = &fiber;
    swapcontext(&fiber.m_caller, &fiber.m_own);
}

} // namespace

TEST(Nesting, OnAFiberEndsInAnErrorAndTheThreadGoesOn)
{
    for (int i = 0; i < 2; ++i)
    {
        std::string endless;
        std::string fine;
        OnFiber(s_smallStack,
                [&]
                {
                    fine = ExpansionOf("@def m(a) = {<a>}\n@for(x in [1,2]){m(x)}");
                    endless = ExpansionOf("@def f = {f}\nf");
                });
        EXPECT_EQ(fine, "<1><2>");
        EXPECT_EQ(endless.substr(0, 34), "error: Expansion nested too deeply");
        EXPECT_EQ(ExpansionOf("@scope{x}"), "x");
    }
}

#endif

TEST(Nesting, ErrorKeepsItsPlace)
{
    // The place is in the text, and one that a shallow error could have.
    const std::string result = OnStack(s_smallStack, "@def f = {f}\nf");
    EXPECT_EQ(result.substr(result.rfind('@')), "@10");
}

TEST(Nesting, ThreadIsUsableAfterwards)
{
    OnStackOf(s_smallStack,
              []
              {
                  Session session;
                  EXPECT_EQ(FirstLine(session.Expand("@def f = {f}\nf")),
                            "error: Expansion nested too deeply");
                  EXPECT_EQ(session.Expand("@def f = {fine}\nf @(((1)))"), "fine 1");
              });
}

TEST(Nesting, ManyFramesAndVariablesAreDestroyedWithoutNesting)
{
    OnStackOf(s_smallStack,
              []
              {
                  Session session;
                  session.Expand(Repeated("@def + m = {x}\n", 100000));
                  EXPECT_EQ(session.Expand("m"), "x");
              });
}

} // namespace telv::expander
