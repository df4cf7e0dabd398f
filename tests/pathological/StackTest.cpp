// SPDX-License-Identifier: MIT
// Nesting: whatever the stack is, a text that nests too deeply is an error, and one that nests
// 100,000 deep is expanded by the tool.
#include "HostileTest.h"

#include <optional>
#include <sys/resource.h>

namespace telv::test
{
namespace
{

constexpr unsigned long s_kibi = 1024;
constexpr unsigned long s_mebi = 1024 * s_kibi;
/// Smaller where a level takes many times as long.
constexpr unsigned long s_usualStack = (s_underAddressSanitizer ? 2 : 8) * s_mebi;
constexpr size_t s_deep = 100'000;

/// A limit on the stack, as `ulimit -s` sets it.
constexpr unsigned long s_stacks[] = {512 * s_kibi, 8 * s_mebi, 256 * s_mebi, RLIM_INFINITY};

/// Every way in which a body can come back to itself.
const char* const s_endless[] = {
    "@def f = {f}\nf",
    "@def f = {@scope{f}}\nf",
    "@def f = {@if(true){f}}\nf",
    "@def f = {@if(false){}@elseif(true){f}}\nf",
    "@def f = {@if(false){}@else{f}}\nf",
    "@def f = {@if(f){}}\nf",
    "@def f = {@for(x in [1]){f}}\nf",
    "@def f = {@for(x in f){}}\nf",
    "@def f = {@while(true){f}}\nf",
    "@def f = {@while(f){}}\nf",
    "@def f = {@(f)}\nf",
    "@def f = {@[f]}\nf",
    "@def f = {@[@quote(f)]}\nf",
    "@def f = {@str(f)}\nf",
    "@def f = {@unstr(f)}\nf",
    "@def f = {@print(f)}\nf",
    "@def f = {@assert(f)}\nf",
    "@def f = {@assertfails(f)}\nf",
    "@def f = {@assertfails(f)@assertfails(f)}\nf",
    "@def f = {@fail(f)}\nf",
    "@def f = {@relativepath(f, f)}\nf",
    "@def f = {@let int i = {f}}\nf",
    "@def f = {@let string s := {f}}\nf",
    "@def int f = {f}\nf",
    "@def f(int i) = {f(i)}\nf(1)",
    "@def f(int i) = {x}\n@def g = {f(g)}\ng",
    "@def f(x) = {f(x)}\nf(1)",
    "@def f(g()) = {g(1)}\n@def h(x) = {f(h)}\nf(h)",
    "@nakeddef f = {f}\nf",
};

class StackTest : public HostileTest
{
protected:
    /// Runs the client of the library, whose stack is the main thread's.
    static ProgramResult RunClient(std::string_view source, unsigned long stack,
                                   std::optional<unsigned long> addressSpace = {})
    {
        LimitedOptions options;
        options.input = source;
        options.stack = stack;
        options.addressSpace = addressSpace;
        const ProgramResult result = RunLimited({TELV_LIBRARY_CLIENT_PATH}, options);
        EXPECT_EQ(result.signal, 0) << source.substr(0, 200);
        return result;
    }
};

TEST_F(StackTest, EndlessRecursionIsAnErrorOnSmallStacks)
{
    const std::string wanted = "Expansion nested too deeply";
    for (const char* const source : s_endless)
        for (const unsigned long stack : {512 * s_kibi, s_usualStack})
        {
            const ProgramResult result = RunClient(source, stack);
            EXPECT_EQ(result.status, 1) << source;
            EXPECT_EQ(result.err.substr(0, wanted.size()), wanted) << source;
            EXPECT_EQ(result.err.find("at -1"), std::string::npos) << source;
        }
}

// The address sanitizer can't follow an exception through more than 64 MiB of stack.
#if !defined(TELV_ADDRESS_SANITIZER)

TEST_F(StackTest, EndlessRecursionIsAnErrorOnLargeStacks)
{
    for (const unsigned long stack : {256 * s_mebi, RLIM_INFINITY})
    {
        const ProgramResult result = RunClient(s_endless[0], stack);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err.rfind("Expansion nested too deeply", 0), 0u);
    }
}

TEST_F(StackTest, ToolReportsEndlessRecursion)
{
    ExpectError(Expand("@def f = {f}\nf\n"),
                "main.tl(1) : error : Expansion nested too deeply\n    invoking macro f\n");
}

/// What a diagnostic says below its excerpt, "N" for the number of those that are left out.
std::string CallLinesOf(const std::string& diagnostic, size_t& leftOut)
{
    const size_t begin = diagnostic.find("called from");
    const size_t number = diagnostic.find("... ", begin) + 4;
    const size_t end = diagnostic.find(" more", number);
    leftOut = std::stoul(diagnostic.substr(number, end - number));
    return diagnostic.substr(begin, number - begin) + "N" + diagnostic.substr(end);
}

TEST_F(StackTest, CallPlacesAreTenAtEveryDepth)
{
    const std::string ten = Repeat("called from main.tl(1)\n", 10) + "... N more\n";
    size_t leftOut = 0;
    std::set<size_t> sizes;
    for (const size_t depth : {100, 5000})
    {
        const ProgramResult result =
            Expand("@def f = {f}@//\nf\n", {"--max-depth", std::to_string(depth)});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(CallLinesOf(result.err, leftOut), ten);
        EXPECT_EQ(leftOut, depth - 10);
        sizes.insert(result.err.size() - std::to_string(leftOut).size());
    }
    const ProgramResult atLimit = Expand("@def f = {f}@//\nf\n");
    EXPECT_EQ(CallLinesOf(atLimit.err, leftOut), ten);
    EXPECT_GT(leftOut, s_deep);
    sizes.insert(atLimit.err.size() - std::to_string(leftOut).size());
    EXPECT_EQ(sizes.size(), 1u) << "the diagnostic grows with the depth";
    // An error of the text itself.
    const ProgramResult inside =
        Expand("@def f(int n) = {@if(n > 0){f(n - 1)}@else{@(1 / 0)}}@// \nf(20000)\n");
    EXPECT_EQ(inside.status, 1);
    EXPECT_EQ(CallLinesOf(inside.err, leftOut), ten);
    EXPECT_EQ(leftOut, size_t{20'000} + 1 - 10);
}

#endif

TEST_F(StackTest, AThousandLevelsFitIntoTheUsualStack)
{
    const ProgramResult result =
        RunClient("@def f(int n) = {@if(n > 0){@scope{f(n - 1)}}@else{end}}\nf(1000)", 8 * s_mebi);
    EXPECT_EQ(result.out, "end");
}

TEST_F(StackTest, ToolNestsMacroCalls)
{
    const std::string source =
        "@def f(n) = {[n]}\n" + Repeat("f(", s_deep) + "x" + Repeat(")", s_deep);
    for (const unsigned long stack : s_stacks)
    {
        LimitedOptions options;
        options.stack = stack;
        ExpectText(Expand(source, {}, options), Repeat("[", s_deep) + "x" + Repeat("]", s_deep));
    }
}

TEST_F(StackTest, ToolNestsTypedRecursion)
{
    ExpectText(Expand("@def f(int n) = {@if(n > 0){f(n - 1)}@else{end}}\nf(100000)\n"), "end\n");
}

TEST_F(StackTest, ToolFollowsDynamicScopes)
{
    ExpectText(Expand("@def g = {G}\n@def f(int n) = {g@if(n > 0){f(n - 1)}}\nf(100000)\n"),
               Repeat("G", s_deep + 1) + "\n");
}

TEST_F(StackTest, ToolNestsBlocks)
{
    ExpectText(Expand(Repeat("@scope{", s_deep) + "x" + Repeat("}", s_deep)), "x");
    ExpectText(Expand(Repeat("@if(true){\n", 5000) + "x\n" + Repeat("}\n", 5000)),
               "x\n" + Repeat("\n", 5000));
}

TEST_F(StackTest, ToolNestsExpressions)
{
    const size_t n = 1'000'000;
    ExpectText(Expand("@(" + Repeat("(", n) + "1" + Repeat(")", n) + ")"), "1");
    ExpectText(Expand("@(" + Repeat("!", n) + "true)"), "true");
    ExpectText(Expand("@(" + Repeat("- ", n) + "1)"), "1");
    ExpectText(Expand("@(" + Repeat("true?", n) + "1" + Repeat(":2", n) + ")"), "1");
    ExpectText(Expand("@(" + Repeat("false?1:", n) + "2)"), "2");
    ExpectText(Expand("@(" + Repeat("\"ab\"[", n) + "\"ab\"[1]" + Repeat("==\"b\"?1:0]", n) + ")"),
               "b");
    ExpectText(Expand("@(" + Repeat("int(", n) + "1" + Repeat(")", n) + ")"), "1");
    ExpectText(Expand("@(1" + Repeat("+1", n) + ")"), "1000001");
}

TEST_F(StackTest, ClientNestsNoExpressionTooDeeply)
{
    const size_t n = 1'000'000;
    const std::string expressions[] = {
        Repeat("(", n) + "1" + Repeat(")", n),       Repeat("!", n) + "true",
        Repeat("true?", n) + "1" + Repeat(":2", n),  Repeat("false?1:", n) + "2",
        Repeat("\"ab\"[", n) + "1" + Repeat("]", n), Repeat("len(", n) + "1" + Repeat(")", n),
    };
    for (const std::string& expression : expressions)
    {
        const ProgramResult result = RunClient("@(" + expression + ")", 512 * s_kibi);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err.substr(0, 27), "Expansion nested too deeply")
            << expression.substr(0, 9);
    }
}

// The main thread's stack would fail to grow, with a signal, before it met its own limit.
#if !defined(TELV_ADDRESS_SANITIZER)

TEST_F(StackTest, LittleAddressSpaceIsNoSignal)
{
    const std::string source =
        "@def f(n) = {[n]}\n" + Repeat("f(", 20'000) + "x" + Repeat(")", 20'000);
    for (const unsigned long stack : s_stacks)
        for (const unsigned long space : {13 * s_mebi, 14 * s_mebi, 16 * s_mebi, 24 * s_mebi})
        {
            LimitedOptions options;
            options.stack = stack;
            options.addressSpace = space;
            const ProgramResult result = Expand(source, {}, options);
            EXPECT_EQ(result.status, 1) << space;
            EXPECT_EQ(result.err.rfind("main.tl(", 0), 0u) << Describe(result);
        }
}

TEST_F(StackTest, LittleAddressSpaceIsNoSignalForTheClient)
{
    for (const unsigned long stack : {8 * s_mebi, 256 * s_mebi, RLIM_INFINITY})
        for (const unsigned long space : {10 * s_mebi, 14 * s_mebi, 40 * s_mebi, 150 * s_mebi})
            EXPECT_EQ(RunClient(s_endless[0], stack, space).status, 1) << stack << ' ' << space;
}

#endif

TEST_F(StackTest, MaxDepthIsALimitOfItsOwn)
{
    ExpectError(Expand("@def f = {f}\nf\n", {"--max-depth", "50"}),
                "main.tl(1) : error : Expansion nested too deeply\n    invoking macro f\n");
    ExpectError(Expand("@def f = {@assertfails(f)}\nf\n", {"--max-depth", "50"}),
                "main.tl(1) : error : Expansion nested too deeply\n");
    ExpectText(Expand("@def f = {@scope{x}}\nf\n", {"--max-depth", "3"}), "x\n");
}

} // namespace
} // namespace telv::test
