// SPDX-License-Identifier: MIT
// What a run holds under --max-memory: each way to grow ends in an error with a place, and the
// process never takes much more than it may. The most that it took is asked of the system, so the
// figures of builds with sanitizers say nothing; there, only the errors count.
#include "HostileTest.h"

#include <algorithm>
#include <cstdio>

namespace telv::test
{
namespace
{

/// What the tool itself needs: its code, its stack, what the allocator keeps back.
constexpr ssize_t s_besides = 64;

/// A text that grows in a way of its own, for ever.
struct Row
{
    const char* name;
    std::string source;
    std::vector<std::string> arguments = {};
    bool isSlow = false; ///< It takes long to hold much.
};

/// A string variable of 2^`power` characters.
std::string Long(const char* name, size_t power)
{
    const std::string n(name);
    return "@let string " + n + " := {x}\n" +
           Repeat("@let " + n + " := {" + n + "@@" + n + "}\n", power);
}

/// `block` for ever; `i` counts.
std::string Forever(const std::string& block)
{
    return "@let int i = {0}\n@while(true){@let i = {i + 1}" + block + "}";
}

/// `text` with the value of `i` for each `#`, expanded in a text of its own.
std::string Made(const std::string& text)
{
    std::string made = "@[@quote(";
    for (const char c : text)
        made += c == '#' ? ")@(i)@quote(" : std::string(1, c);
    return made + ")]";
}

/// A macro that hands its many arguments on to itself, for ever.
std::string Recursion(bool byValue)
{
    std::string formals;
    std::string values;
    std::string ones;
    for (int i = 0; i < 200; ++i)
    {
        const std::string number = std::to_string(i);
        const std::string separator = i == 0 ? "" : ",";
        formals += separator + (byValue ? "string a" : "a") + number;
        values += separator + (byValue ? "@str(a" + number + ")" : "a" + number);
        ones += separator + "\"1\"";
    }
    return "@def f(" + formals + ") = {f(" + values + ")}f(" + ones + ")";
}

/// Each of `count` dollar macros stands for the one before it, twice.
std::string DollarLadder(int count)
{
    std::string source = "@$A0=\"" + Repeat("x", 1'000) + "\"\n";
    for (int i = 1; i <= count; ++i)
    {
        const std::string below = "$(A" + std::to_string(i - 1) + ")";
        source += "@$A" + std::to_string(i) + "=\"" + below + below + "\"\n";
    }
    return source + "\"$(A" + std::to_string(count) + ")\"";
}

std::vector<Row> Rows()
{
    const std::string deep =
        "@def f(string a, int n) = {@if(n == 0){@fail(\"x\")}@else{f(@str(a), n - 1)}}\n";
    return {
        {"output", Long("s", 16) + "@while(true){s}"},
        {"map",
         "@def m = {" + Repeat(",", 10'000) + "}@while(true){m}",
         {"--map", "/dev/null", "-o", "/dev/null"}},
        {"value", Long("s", 60)},
        {"hidden macros", Forever(Made("@def + m = {x}"))},
        {"hidden macros that own long texts",
         Long("s", 20) + "@while(true){@[@quote(@def + m = {)s@quote(})]}"},
        {"macros of many names", Forever(Made("@def + m# = {x}")), {}, true},
        {"long names", Long("s", 12) + Forever("@[@quote(@def + )s@@@(i)@quote( = {x})]")},
        {"macros that are used", Forever(Made("@def + m# = {a @(1 + 1) b m} m# m# m#")), {}, true},
        {"dollar macros", Forever(Made("@$A# = \"\"")), {}, true},
        {"a dollar macro", "@$A=\"x\"\n" + Forever("@[@quote(@$A=\"$(A)$(A)\")]"), {}, true},
        {"descriptions", Long("s", 20) + deep + "f(@str(s), 5000)", {}, true},
        {"descriptions of loops",
         Long("s", 20) + Repeat("@for(a in [s]){", 500) + "@fail(\"x\")" + Repeat("}", 500)},
        {"descriptions of texts that are expanded twice",
         Long("s", 20) + Repeat("@[s ", 500) + "@fail(\"x\")" + Repeat("]", 500)},
        {"long names of imports", Long("s", 21) + "@import (@str(s))"},
        {"a list", Long("s", 21) + "@for(a in [s,s,s,s]){a}"},
        {"frames",
         Long("s", 16) + "@def f(string a) = {f(@str(a))}\nf(@str(s))",
         {"--max-depth", "10000"},
         true},
        {"brackets",
         Long("s", 10) + "@let string t := {(}\n" + Repeat("@let t := {t@@t}\n", 22) + "@(t)",
         {},
         true},
        {"a long expression",
         "@let string t := {1 + }\n" + Repeat("@let t := {t@@t}\n", 22) + "@(t 1)"},
        {"strings in strings", Repeat("@str(", 60) + "\"" + "\"" + Repeat(")", 60)},
        {"joined pieces of a map",
         "@def m = {" + Repeat("a , ", 5'000) + "}@while(true){m}",
         {"--map", "/dev/null", "--map-runs", "-o", "/dev/null"}},
        {"chains",
         "@def a = {x}@def m = {" + Repeat("a ", 1'000) + "}@while(true){m}",
         {"--map", "/dev/null", "--chains", "-o", "/dev/null"}},
        {"a source map",
         "@def m = {" + Repeat("a ", 1'000) + "}@while(true){m}",
         {"--source-map", "/dev/null", "-o", "/dev/null"}},
        {"line directives",
         "@def m = {\n" + Repeat("a\n", 1'000) + "}\n@while(true){\nm\n}",
         {"--line-directives", "-o", "/dev/null"}},
        {"what may be unused", Forever(Made("@def + u# = {x}")), {"--warn", "all"}, true},
        {"exported macros", "@def g(n) = {@exportdef + e = {n}}" + Forever("g(x)"), {}, true},
        {"arguments", Recursion(/*byValue=*/false)},
        {"arguments by value", Recursion(/*byValue=*/true)},
        {"expected errors",
         Long("s", 16) +
             "@def f(string a, int n) = {@assertfails{f(@str(a), n - 1)}@fail(@str(a))}\n"
             "f(@str(s), 9000)",
         {},
         true},
        {"a text that doubles from argument to argument",
         "@def f(string a) = {f(@str(a@@a))}f(\"x\")"},
        {"dollar macros of one another", DollarLadder(40)},
    };
}

class MemoryLimitTest : public HostileTest
{
protected:
    void SetUp() override { Write("lib.tl", "@def lib = {lib}\n"); }

    void TearDown() override
    {
        if (m_programs > 1)
            std::printf("%d programs took at most %zd KiB\n", m_programs, m_mostKibi);
        HostileTest::TearDown();
    }

    void ExpectLittle(const ProgramResult& result, ssize_t limit)
    {
        ++m_programs;
        m_mostKibi = std::max(m_mostKibi, result.peakKibi);
#if !defined(TELV_ADDRESS_SANITIZER) && !defined(TELV_GUARD_TEXTS) // pages of their own
        EXPECT_LT(result.peakKibi, (limit + s_besides) * 1024) << Describe(result);
#else
        static_cast<void>(limit);
#endif
    }

    static std::vector<std::string> With(std::vector<std::string> arguments,
                                         const std::vector<std::string>& more)
    {
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

private:
    int m_programs = 0;
    ssize_t m_mostKibi = 0;
};

TEST_F(MemoryLimitTest, EveryWayToGrowEndsInAnErrorWithAPlace)
{
    constexpr ssize_t limit = 8;
    for (const Row& row : Rows())
    {
        SCOPED_TRACE(row.name);
        const ProgramResult result =
            Expand(row.source, With({"--max-memory", std::to_string(limit) + "M"}, row.arguments));
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.rfind("main.tl(", 0), 0u) << Describe(result);
        EXPECT_NE(result.err.find(") : error : Out of memory\n"), std::string::npos)
            << Describe(result);
        ExpectLittle(result, limit);
    }
}

/// With the options that SECURITY.md recommends.
TEST_F(MemoryLimitTest, TheRecommendedLimitsBoundEveryRun)
{
    constexpr ssize_t limit = 256;
    const std::vector<std::string> recommended = {
        "--no-python", "--max-depth",  "10000", "--max-steps", "10000000", "--max-output",
        "1G",          "--max-memory", "256M",  "-o",          "out.txt"};
    Expect("out.txt");
    for (const Row& row : Rows())
    {
        if (row.isSlow)
            continue;
        SCOPED_TRACE(row.name);
        const ProgramResult result = Expand(row.source, With(recommended, row.arguments));
        EXPECT_TRUE(result.status == 0 || result.status == 1) << Describe(result);
        ExpectLittle(result, limit);
    }
}

TEST_F(MemoryLimitTest, NothingSwallowsIt)
{
    const std::string text =
        "@assertfails{\n@assertfails{" + Forever(Made("@def + m# = {x}")) + "}}";
    ExpectError(Expand(text, {"--max-memory", "16M"}), "main.tl(");
    const ProgramResult result = Expand(text, {"--max-memory", "16M"});
    EXPECT_NE(result.err.find(" : error : Out of memory\n"), std::string::npos) << Describe(result);
}

TEST_F(MemoryLimitTest, ItSaysWhoCalled)
{
    const ProgramResult result =
        Expand("@def grow(a) = {\n    " + Forever(Made("@def + m# = {x}")) + "\n}\n\ngrow(b)\n",
               {"--max-memory", "16M"});
    EXPECT_EQ(result.err.rfind("main.tl(3) : error : Out of memory\n", 0), 0u) << Describe(result);
    EXPECT_NE(result.err.find("\ncalled from main.tl(6)\n"), std::string::npos) << Describe(result);
}

TEST_F(MemoryLimitTest, WhatIsGivenBackMayBeTakenAgain)
{
    const std::string source =
        "@def f(string a, int n) = {@if(n > 0){f(@str(a@@x), n - 1)}}\n"
        "@let int i = {0}\n@while(i < 20000){@let i = {i + 1}f(\"abc\", 10)}ok";
    ExpectText(Expand(source, {"--max-memory", "1M"}), "ok");
}

TEST_F(MemoryLimitTest, AnInputLargerThanTheLimit)
{
    const std::string text(4'000'000, 'x');
    ExpectError(Expand(text, {"--max-memory", "1M"}), "main.tl(1) : error : Out of memory\n");
    Write("large.tl", text);
    ExpectError(Expand("\n@import \"large.tl\"\n", {"--max-memory", "1M"}),
                "main.tl(2) : error : Out of memory\n");
    LimitedOptions options;
    options.inputPath = "/dev/zero";
    const ProgramResult endless = Run({"--max-memory", "16M", "-"}, options);
    EXPECT_EQ(endless.status, 2) << Describe(endless);
    EXPECT_EQ(endless.err, "tlexpand: can't read '<stdin>': Cannot allocate memory\n");
}

TEST_F(MemoryLimitTest, PrintedTextIsOutput)
{
    const ProgramResult result =
        Run({"--max-output", "1K", "-E", "@while(true){@print(0123456789)}", "-o", "/dev/null",
             "lib.tl"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, Repeat("0123456789", 102));
    EXPECT_EQ(result.err.rfind("<command line>(1) : error : Output too large\n", 0), 0u)
        << Describe(result);
}

TEST_F(MemoryLimitTest, ALongDescriptionIsShownToALength)
{
    const ProgramResult result = Expand(Long("s", 20) + "@fail(@str(s))");
    EXPECT_EQ(result.status, 1);
    const std::string start = "main.tl(22) : error : ";
    EXPECT_EQ(result.err.substr(0, start.size()), start);
    EXPECT_EQ(result.err.find_first_not_of('x', start.size()), start.size() + 64 * 1024);
    EXPECT_NE(result.err.find("\n... (983040 bytes left out)\n"), std::string::npos);
}

#if TELV_HAS_PYTHON

TEST_F(MemoryLimitTest, APythonResultIsMeasuredWhileItIsWritten)
{
    const std::string source =
        "@runpython{\na = ['x']\nfor i in range(40): a = [a, a]\n}\n@defpython r = {a}\nr";
    for (const char* const limit : {"--max-output", "--max-memory"})
    {
        const ProgramResult result = Expand(source, {limit, "8M"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err.rfind("main.tl(6) : error : ", 0), 0u) << Describe(result);
        ExpectLittle(result, 64);
    }
}

TEST_F(MemoryLimitTest, WhatPythonPrintsIsOutput)
{
    const ProgramResult result = Expand("\n@runpython{\nfor i in range(1000):\n"
                                        "  try: print '0123456789'\n  except: pass\n}\n",
                                        {"--max-output", "1K", "-o", "/dev/null"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.rfind("main.tl(2) : error : Output too large\n", 0), 0u)
        << Describe(result);
    EXPECT_LE(result.out.size(), 1024u);
}

#endif

} // namespace
} // namespace telv::test
