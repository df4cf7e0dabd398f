// SPDX-License-Identifier: MIT
// Texts that grow without bounds: an error with a place when a limit was given, and one when the
// memory itself is the limit. The address sanitizer needs the address space for itself, so what is
// about real exhaustion is left to the other builds.
#include "HostileTest.h"

namespace telv::test
{
namespace
{

/// A source and the line at which it grows, 0 when that depends on when it is met.
struct Row
{
    const char* name;
    std::string source;
    size_t line;
};

std::string TenfoldMacros()
{
    std::string source = "@def a0 = {0123456789}\n";
    for (int i = 1; i <= 12; ++i)
    {
        const std::string before = "a" + std::to_string(i - 1) + " ";
        source += "@def a" + std::to_string(i) + " = {" + Repeat(before, 10) + "}\n";
    }
    return source + "a12";
}

const Row s_growing[] = {
    {"loop", "\n@while(true){0123456789012345678901234567890123456789}", 2},
    {"tenfold macros", TenfoldMacros(), 1},
    {"doubling by name", "@def d(x) = {x x}\n" + Repeat("d(", 50) + "0123456789" + Repeat(")", 50),
     0},
    {"strings in strings", "\n\n" + Repeat("@str(", 60) + "\"" + "\"" + Repeat(")", 60), 3},
    {"value that doubles", "@let string s := {0123456789}\n" + Repeat("@let s := {s@@s}\n", 60), 0},
    {"dollar macros that double",
     []
     {
         std::string source;
         for (int i = 0; i < 50; ++i)
         {
             const std::string next = "$(A" + std::to_string(i + 1) + ")";
             source += "@$A" + std::to_string(i) + "=\"" + next + next + "\"\n";
         }
         return source + "@$A50=\"0123456789\"\n\"$(A0)\"";
     }(),
     52},
};

class MemoryTest : public HostileTest
{
protected:
    /// The run ended with this description, at a line: the row's when it names one.
    static void ExpectAt(const ProgramResult& result, const Row& row, const std::string& what)
    {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(result.status, 1) << Describe(result);
        EXPECT_EQ(result.out, "");
        const size_t open = result.err.find('(');
        const size_t close = result.err.find(") : error : " + what + "\n");
        ASSERT_NE(close, std::string::npos) << Describe(result);
        const std::string line = result.err.substr(open + 1, close - open - 1);
        EXPECT_EQ(result.err.substr(0, open), "main.tl");
        EXPECT_GT(std::stol(line), 0);
        EXPECT_TRUE(row.line == 0 || line == std::to_string(row.line)) << line;
        EXPECT_NE(result.err.find("\n " + line + " | "), std::string::npos);
    }
};

TEST_F(MemoryTest, GrowthMeetsTheLimitOfOutput)
{
    for (const Row& row : s_growing)
    {
        Row limited = row;
        limited.line = 0;
        ExpectAt(Expand(row.source, {"--max-output", "1M"}), limited, "Output too large");
    }
}

#if !defined(TELV_ADDRESS_SANITIZER)

TEST_F(MemoryTest, OutOfMemoryIsAnErrorWithAPlace)
{
    LimitedOptions options;
    options.addressSpace = 128UL << 20;
    for (const Row& row : s_growing)
    {
        Row anywhere = row;
        if (anywhere.line == 1)
            anywhere.line = 0;
        ExpectAt(Expand(row.source, {}, options), anywhere, "Out of memory");
    }
}

/// Texts whose expansion needs a little more than there is: what is left must be enough to say so,
/// however long the lines are.
TEST_F(MemoryTest, TheErrorItselfNeedsLittleMemory)
{
    const std::string line(12'000'000, 'x');
    std::string definitions;
    for (int i = 0; i < 150'000; ++i)
        definitions += "@def m" + std::to_string(i) + " = {x}\n";
    const struct
    {
        const char* name;
        std::string source;
        const char* place; ///< Of "Out of memory", or "" where it depends.
        unsigned long mostMebis = 64;
    } rows[] = {
        {"one long line", line, "main.tl(1)"},
        {"many short lines", Repeat("0123456789abcde\n", 1'000'000), ""},
        {"many calls on many lines", "@def m(x) = {[x]}\n" + Repeat("m(1)\n", 1'500'000), ""},
        {"many definitions, which stay", definitions, ""},
        {"many names on a line", "@for(x in [" + Repeat("a,", 200'000) + "b]){@def + m = {x}}",
         "main.tl(1)"},
        {"many brackets on a line",
         "\n@(" + Repeat("(", 300'000) + "1" + Repeat(")", 300'000) + ")", "main.tl(2)", 16},
        {"long literal", "\n@(len(@str(" + line + ")))", "main.tl(2)"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        int failures = 0;
        for (unsigned long mebis = row.mostMebis; mebis >= 10 && failures < 2; mebis -= 2)
        {
            LimitedOptions options;
            options.addressSpace = mebis << 20;
            const ProgramResult result = Expand(row.source, {}, options);
            if (result.status == 0)
                continue;
            ++failures;
            ExpectAt(result, {row.name, "", 0}, "Out of memory");
            EXPECT_EQ(result.err.rfind(row.place, 0), 0u) << mebis << Describe(result);
        }
        EXPECT_EQ(failures, 2);
    }
}

TEST_F(MemoryTest, AnErrorInALongLineNeedsLittleMemory)
{
    const std::string line(12'000'000, 'x');
    LimitedOptions options;
    options.addressSpace = 200UL << 20;
    ExpectError(Expand(line + "\x01" + line, {}, options),
                "main.tl(1) : error : Bad token \x01\n 1 | ...xxx");
}

TEST_F(MemoryTest, ALongMessageNeedsLittleMemory)
{
    const std::string text(8'000'000, 'z');
    LimitedOptions options;
    options.addressSpace = 84UL << 20;
    const ProgramResult result = Expand("\n@fail(\"" + text + "\")", {}, options);
    ExpectError(result, "main.tl(2) : error : zzz");
    EXPECT_NE(result.err.find("\n... (7934464 bytes left out)\n"), std::string::npos);
}

TEST_F(MemoryTest, AnEarlierOutputSurvivesOutOfMemory)
{
    Write("out.txt", "earlier");
    LimitedOptions options;
    options.addressSpace = 128UL << 20;
    const ProgramResult result = Expand(s_growing[4].source, {"-o", "out.txt"}, options);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(Read("out.txt"), "earlier");
}

TEST_F(MemoryTest, InputLargerThanTheMemory)
{
    LimitedOptions options;
    options.addressSpace = 128UL << 20;
    options.inputPath = "/dev/zero";
    const ProgramResult standardInput = Run({"-"}, options);
    EXPECT_EQ(standardInput.status, 2) << Describe(standardInput);
    EXPECT_EQ(standardInput.err, "tlexpand: can't read '<stdin>': Cannot allocate memory\n");
    const ProgramResult file = Run({"/dev/zero"}, options);
    EXPECT_EQ(file.status, 2) << Describe(file);
    EXPECT_EQ(file.err, "tlexpand: can't read '/dev/zero': Cannot allocate memory\n");
}

TEST_F(MemoryTest, NoStackButTheMainThreads)
{
    LimitedOptions options;
    options.addressSpace = 40UL << 20;
    ExpectText(Expand("@def f = {x}\nf", {}, options), "x");
}

/// From what the C library can't be loaded with to what is enough: each run ends with a message.
TEST_F(MemoryTest, HardlyAnyAddressSpaceIsAnError)
{
    TempDir directory;
    WriteFile(directory.Path("main.tl"), "@def m = {x}m\n");
    constexpr unsigned long kibi = 1024;
    constexpr int notLoaded = 127;
    size_t succeeded = 0;
    for (unsigned long space = 3'000 * kibi; space < 16'000 * kibi; space += 52 * kibi)
    {
        LimitedOptions options;
        options.directory = directory.Path(".");
        options.addressSpace = space;
        const ProgramResult result = RunLimited({TELV_TLEXPAND_PATH, "main.tl"}, options);
        EXPECT_EQ(result.signal, 0) << space / kibi << result.err;
        succeeded += result.status == 0 ? 1 : 0;
        if (result.status == 0)
        {
            EXPECT_EQ(result.out, "x\n");
        }
        else if (result.status != notLoaded)
        {
            EXPECT_NE(result.err.find("Out of memory\n"), std::string::npos) << space / kibi;
        }
    }
    EXPECT_GT(succeeded, 10u);
}

#endif

} // namespace
} // namespace telv::test
