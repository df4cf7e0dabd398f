// SPDX-License-Identifier: MIT
// Texts on which a careless step would take exponential time, or all memory: they would never end.
// How time grows below that is measured by scripts/growth.
#include "HostileTest.h"

namespace telv::test
{
namespace
{

class TimeTest : public HostileTest
{
};

/// Levels of nesting for which the stack is large enough in this build.
size_t Levels(size_t n)
{
    return s_underAddressSanitizer ? n / 10 : n;
}

std::string Numbered(const std::string& prefix, size_t i)
{
    return prefix + std::to_string(i);
}

TEST_F(TimeTest, LoopWithoutEndMeetsTheLimitOfSteps)
{
    ExpectError(Expand("\n@while(true){}", {"--max-steps", "100000"}),
                "main.tl(2) : error : Too many expansion steps\n 2 | @while(true){}\n");
    ExpectError(Expand("@def f = {@assertfails(@while(true){})}\nf", {"--max-steps", "100000"}),
                "main.tl(1) : error : Too many expansion steps\n");
}

TEST_F(TimeTest, LoopWithoutEndMeetsTheLimitOfOutput)
{
    ExpectError(Expand("@while(true){xxxxxxxxxxxxxxxx}", {"--max-output", "1M"}),
                "main.tl(1) : error : Output too large\n");
}

TEST_F(TimeTest, HintLooksForNamesAsLongAsAnyFile)
{
    const std::string letters(size_t(1) << 20, 'b');
    const ProgramResult result = Expand("@def a" + letters + " = {1}\n@(x" + letters + ")\n");
    ExpectError(result, "main.tl(2) : error : Unexpected xbbb");
    EXPECT_NE(result.err.find("bbb' names nothing here; did you mean 'abbb"), std::string::npos)
        << Describe(result);
}

TEST_F(TimeTest, WarningsLookForManyWordsAmongManyNames)
{
    std::string source;
    for (int i = 0; i < 30'000; ++i)
        source += "@def " + Numbered("some", i) + "name(x) = {}\n";
    std::string words;
    for (int i = 0; i < 30'000; ++i)
        words += Numbered("other", i) + "word()\n";
    const ProgramResult result =
        Expand(source + words + "some1nam()\n", {"--warn", "unknown-name"});
    EXPECT_EQ(result.status, 0) << Describe(result);
    EXPECT_EQ(result.out.substr(result.out.find("other0")), words + "some1nam()\n");
    EXPECT_EQ(result.err.substr(0, result.err.find('[')),
              "main.tl(60001) : warning : 'some1nam' names nothing; 'some1name' is a macro ");
}

TEST_F(TimeTest, AssertfailsDoesNotDoubleTheWorkOfExhaustion)
{
    ExpectError(Expand("@def f = {@assertfails(f)@assertfails(f)}\nf", {"--max-depth", "2000"}),
                "main.tl(1) : error : Expansion nested too deeply\n");
}

/// Every second level has an error that quotes all that is inside it.
TEST_F(TimeTest, NestedAssertfails)
{
    LimitedOptions options;
    const auto nested = [](size_t n)
    { return Repeat("@assertfails(", n) + "@fail(\"x\")" + Repeat(")", n); };
    ExpectText(Expand(nested(Levels(100'000) - 1) + "end", {}, options), "end");
    ExpectError(Expand(nested(Levels(100'000)), {}, options),
                "main.tl(1) : error : Macro expansion of @assertfails(@assertfails(");
    ExpectText(Expand("@def f(int n, text) = {@assertfails{@if(n > 0){f(n - 1, text)}@else{text}}}"
                      "\nf(" +
                          std::to_string(Levels(40'000)) + ", @fail(\"x\"))end",
                      {}, options),
               "end");
}

TEST_F(TimeTest, EndlessRecursion)
{
    LimitedOptions options;
    std::vector<std::string> arguments;
#if !defined(__OPTIMIZE__) || defined(TELV_ADDRESS_SANITIZER)
    // Such a build takes long for a whole stack, and the address sanitizer can't follow an
    // exception through more than 64 MiB of it.
    arguments = {"--max-depth", "10000"};
#endif
    const char* const rows[] = {"f", "@if(true){f}", "@scope{@scope{f}}"};
    for (const char* const row : rows)
        ExpectError(Expand(std::string("@def f = {") + row + "}\nf", arguments, options),
                    "main.tl(1) : error : Expansion nested too deeply\n");
}

/// Frames of invocations whose argument is being expanded stay alive beside the path to the root;
/// all of them bind the name that is looked for.
TEST_F(TimeTest, NamesLookedUpDeepInsideArguments)
{
    LimitedOptions options;
    const char* const calls[][2] = {
        {"k @if(n > 0){f(r(n - 1))}", "@def f(k) = {k}"},
        {"@if(n > 0){f(r(n - 1))}k ", "@def f(k) = {k}"},
        {"k @if(n > 0){f(r, n - 1)}", "@def f(k(), int m) = {k(m)}"},
    };
    const size_t n = Levels(40'000);
    for (const auto& call : calls)
        ExpectText(Expand(std::string(call[1]) + "@def r(int n) = {" + call[0] + "}r(" +
                              std::to_string(n) + ")",
                          {}, options),
                   Repeat("k ", n + 1));
}

TEST_F(TimeTest, ManyFormalArguments)
{
    const size_t n = 100'000;
    std::string formals = "a0";
    std::string actuals = "0";
    for (size_t i = 1; i < n; ++i)
    {
        formals += Numbered(",a", i);
        actuals += Numbered(",", i);
    }
    ExpectText(Expand("@def m(" + formals + ") = {a0 a99999}\nm(" + actuals + ")"), "0 99999");
    ExpectError(Expand("@def m(" + formals + ",a0) = {x}\n"),
                "main.tl(1) : error : Repeated argument a0 in definition of macro m\n");
}

TEST_F(TimeTest, NestedBlocksAroundMuchText)
{
    const std::string text = Repeat("0123456789012345678901234567890123456789012345678\n", 100'000);
    const ProgramResult result = Expand(Repeat("@if(true){\n", 200) + text + Repeat("}\n", 200));
    ExpectText(result, text + Repeat("\n", 200));
}

TEST_F(TimeTest, HiddenVariables)
{
    std::string list = "0";
    for (size_t i = 1; i < 200'000; ++i)
        list += Numbered(",", i);
    ExpectText(Expand("@for(x in [" + list + "]){@def + m = {last}}m"), "last");
}

TEST_F(TimeTest, MapOfManyCalls)
{
    Expect("map.json");
    const size_t n = 100'000;
    ExpectText(Expand("@def m(x) = {[x]}\n" + Repeat("m(1)\n", n), {"--map", "map.json"}),
               Repeat("[1]\n", n));
    EXPECT_NE(Read("map.json").find("\"size\":400000,"), std::string::npos);
}

TEST_F(TimeTest, MapOfManyTokens)
{
    Expect("map.json");
    const std::string text = Repeat("a,", 500'000);
    LimitedOptions options;
    options.addressSpace = 1UL << 30;
    ExpectText(Expand(text, {"--map", "map.json"}, options), text);
    EXPECT_NE(Read("map.json").find("\"size\":1000000,"), std::string::npos);
}

TEST_F(TimeTest, MessagesThatGrowAtEveryLevel)
{
    const std::string big(20'000, 'y');
    const ProgramResult result = Expand(
        "@def f(int n, string t) = {@if(n > 0){f(n - 1, @str(t))}@else{@fail(\"x\")}}\nf(500, \"" +
        big + "\")");
    ExpectError(result, "main.tl(1) : error : x\n    invoking macro f(n,t) with n=0, t=" + big);
    EXPECT_LT(result.err.size(), 100'000u);
    ExpectError(Expand("@def f(int n) = {@if(n > 0){@[f(n - 1)]}@else{@fail(\"EOS\")}}\nf(500)"),
                "main.tl(1) : error : EOS\n");
}

/// Files in which each of 40 levels imports both files of the next one.
TEST_F(TimeTest, LadderOfImports)
{
    const size_t levels = 40;
    for (size_t i = 0; i < levels; ++i)
        for (const char* const side : {"a", "b"})
        {
            std::string text = Numbered("@def level", i) + " = {x}\n";
            if (i + 1 < levels)
                text = "@import \"" + Numbered("a", i + 1) + ".tl\"\n@import \"" +
                       Numbered("b", i + 1) + ".tl\"\n" + text;
            if (i + 1 == levels)
                text += std::string("@def bottom") + side + " = {" + side + "}\n";
            if (i + 2 == levels)
                text += "@def both = {x}\n";
            Write(Numbered(side, i) + ".tl", text);
        }
    const std::string imports = "@import \"a0.tl\"\n@import \"b0.tl\"\n";
    ExpectText(Expand(imports + "bottoma bottomb unknown \"$(NOPE)\""), "a b unknown \"$(NOPE)\"");
    ExpectError(Expand(imports + "level0"), "main.tl(3) : error : Ambiguous macro name : level0\n");
    ExpectError(Expand(imports + "both"), "main.tl(3) : error : Ambiguous macro name : both\n");
}

TEST_F(TimeTest, ManyImportsOnOneLine)
{
    Write("a.tl", "");
    LimitedOptions options;
    const size_t n = 200'000;
    ExpectText(Expand(Repeat("@import \"a.tl\" x ", n), {}, options), Repeat(" x ", n));
}

TEST_F(TimeTest, ManyWordsBesideManyImports)
{
    std::string source;
    for (size_t i = 0; i < 1000; ++i)
    {
        Write(Numbered("f", i) + ".tl", Numbered("@def m", i) + " = {" + std::to_string(i) + "}\n");
        source += "@import \"" + Numbered("f", i) + ".tl\"\n";
    }
    LimitedOptions options;
    ExpectText(Expand(source + Repeat("word m7 ", 200'000), {}, options),
               Repeat("word 7 ", 200'000));
}

TEST_F(TimeTest, ManyDifferentWordsBesideAnImport)
{
    std::string definitions;
    std::string words;
    std::string out;
    for (size_t i = 0; i < 40'000; ++i)
    {
        if (i % 1000 == 0)
            definitions += Numbered("@def w", i) + " = {" + std::to_string(i) + "}\n";
        words += Numbered("w", i) + ' ';
        out += Numbered(i % 1000 == 0 ? "" : "w", i) + ' ';
    }
    Write("lib.tl", definitions);
    LimitedOptions options;
    ExpectText(Expand("@import \"lib.tl\"\n" + words + words, {}, options), out + out);
}

TEST_F(TimeTest, ChainOfMacros)
{
    std::string source = "@def m0 = {end}\n";
    for (size_t i = 1; i <= 20'000; ++i)
        source += Numbered("@def m", i) + " = {" + Numbered("m", i - 1) + "}\n";
    ExpectText(Expand(source + "m20000"), "end");
}

TEST_F(TimeTest, DollarMacrosThatComeBackToThemselves)
{
    const char* const rows[][2] = {
        {"@$A=\"$(A)\"\n\"$(A)\"", "main.tl(2) : error : Dollar macro A contains itself\n"},
        {"@$A=\"x$(A)$(A)\"\n\n\"$(A)\"", "main.tl(3) : error : Dollar macro A contains itself\n"},
        {"@$A=\"$(B)\"\n@$B=\"$(C)\"\n@$C=\"-$(A)\"\n\"$(B)\"",
         "main.tl(4) : error : Dollar macro B contains itself\n"},
        {"@$A=\"$(\"\n@$B=\"$(A)B)\"\n\"$(B)\"",
         "main.tl(3) : error : Dollar macro B contains itself\n"},
        {"@$A=\"$(A)\"\n@import \"$(A)\"", "main.tl(2) : error : Dollar macro A contains itself\n"},
    };
    for (const auto& row : rows)
        ExpectError(Expand(row[0], {"--max-output", "1M"}), row[1]);
}

TEST_F(TimeTest, DollarMacrosThatGrow)
{
    std::string source;
    for (size_t i = 0; i < 60; ++i)
        source += Numbered("@$A", i) + "=\"" + Repeat(Numbered("$(A", i + 1) + ")", 2) + "\"\n";
    ExpectError(Expand(source + "\"$(A0)\"", {"--max-output", "1M"}),
                "main.tl(61) : error : Output too large\n 61 | \"$(A0)\"\n    | ^\n");
}

TEST_F(TimeTest, ProjectFileThatImportsItself)
{
    Write("app.mpfw", "@import \"app.mpfw\"\n");
    const ProgramResult result = Run({"project", "app.mpfw"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.rfind("app.mpfw(1) : error : Import cycle: app.mpfw -> app.mpfw\n", 0), 0u)
        << result.err;
}

} // namespace
} // namespace telv::test
