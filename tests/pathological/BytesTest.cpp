// SPDX-License-Identifier: MIT
// Any bytes, and values at the edges of their types: expanded, or an error with a place.
#include "HostileTest.h"

namespace telv::test
{
namespace
{

using namespace std::string_literals;

class BytesTest : public HostileTest
{
};

struct Row
{
    std::string source;
    std::string out; ///< The expansion, when there is no error.
    std::string err; ///< The whole diagnostic.
};

const Row s_bytes[] = {
    {"a\0b"s, "", "main.tl(1) : error : Bad token \0\n 1 | a\0b\n   |  ^\n"s},
    {"\"a\0b\" '\0' /*\0*/ x"s, "\"a\0b\" '\0' /*\0*/ x"s, ""},
    {"x\ny \x01 z", "", "main.tl(2) : error : Bad token \x01\n 2 | y \x01 z\n   |   ^\n"},
    {"\xff\xfe \x80\xc3", "\xff\xfe \x80\xc3", ""},
    {"@def \xff = {\xfe}\n\xff", "\xfe", ""},
    {"@fail(\"a\0b\")"s, "", "main.tl(1) : error : a\0b\n 1 | @fail(\"a\0b\")\n   |      ^\n"s},
    {"@def m = {M}\r\nx\r\nm\r\n  m\r\n", "\r\nx\r\nM\r\n  M\r\n", ""},
    {"@def m =\r\n{\r\n}\r\n[m]", "\r\n[]", ""},
    {"@def m =\n{}\n[m]", "[]", ""},
    {"@def m =\n{\n}\n[m]", "[]", ""},
    {"@if(true)\n{}@else\n{}x", "x", ""},
    {"@for(x in [a,b])\n{}x", "x", ""},
    {"@scope\n{}x", "x", ""},
    {"@str(   )|@str()", "\"   \"|\"\"", ""},
    {"@print(   )@println()x", "x", ""},
    {"@(   )", "",
     "main.tl(1) : error : Unexpected ) after ( in expression\n    in @()\n 1 | @(   )\n   | ^\n"},
    {"@[  ]x", "x", ""},
    {"@quote(   )|", "   |", ""},
    {"", "", ""},
    {"\xef\xbb\xbfx", "\xef\xbb\xbfx", ""},
};

TEST_F(BytesTest, AnyBytes)
{
    for (const Row& row : s_bytes)
    {
        SCOPED_TRACE(row.source);
        const ProgramResult result = Expand(row.source);
        EXPECT_EQ(result.status, row.err.empty() ? 0 : 1);
        EXPECT_EQ(result.out, row.out);
        EXPECT_EQ(result.err.size() > 0 && result.status == 0 ? "" : result.err, row.err);
    }
}

/// Whatever can hold a text, around texts that hold nothing: no view may end before it begins.
TEST_F(BytesTest, NothingInsideAnything)
{
    const char* const heads[] = {
        "@def m =",
        "@def int m =",
        "@def m(a) =",
        "@nakeddef + m =",
        "@let string m :=",
        "@let int m =",
        "@scope",
        "@if(true)",
        "@if(false){}@else",
        "@for(x in [a,b])",
        "@while(false)",
        "@quote",
        "@assertfails",
        "@defpython int m =",
        "@runpython",
        "@str",
        "@strxW",
        "@print",
        "@unstr",
        "@fail",
        "@(",
        "@[",
    };
    const char* const bodies[] = {
        "{}",     "{\n}",   "{ }",        "{\n\n}",     "{\t}",         "{/**/}", "{//\n}",
        "{\r\n}", "\n{\n}", "\r\n{\r\n}", "\n{}",       "{\n@@\n}",     "(   )",  "(\n)",
        "(/**/)", "[ ]",    "[\n]",       ")",          "\r\n)",        "/**/]",  "\n]",
        "{",      "(",      "",           "{\n\n  \n}", "{\n// c\n\n}",
    };
    for (const char* const head : heads)
        for (const char* const body : bodies)
        {
            const std::string source = std::string(head) + body + "\n[m(1)]";
            SCOPED_TRACE(source);
            const ProgramResult result = Expand(source);
            if (result.status == 0)
                continue;
            EXPECT_EQ(result.status, 1);
            EXPECT_EQ(result.err.rfind("main.tl(", 0), 0u) << result.err;
            EXPECT_EQ(result.err.find("Assertion"), std::string::npos) << result.err;
        }
}

TEST_F(BytesTest, EveryByteAlone)
{
    for (int c = 0; c < 256; ++c)
    {
        const std::string byte(1, static_cast<char>(c));
        const ProgramResult result = Expand(byte);
        if (result.status == 0)
            EXPECT_EQ(result.out, byte) << c;
        else
            EXPECT_EQ(result.err.rfind("main.tl(1) : error : ", 0), 0u) << c;
    }
}

const Row s_assertions[] = {
    {"\n@(\"\\x41\")", "", "main.tl(2) : error : Assertion failed: MapEscapeCharacter(*s, c) at "},
    {"@(__LINE__)", "",
     "main.tl(1) : error : Assertion failed: "
     "GetFilenameAndLineNumberAtCurrentPosition(filename, lineNumber) at "},
    {"@def f = {@(__FILE__)}\n\nf", "", "main.tl(1) : error : Assertion failed: GetFilename"},
};

TEST_F(BytesTest, BrokenAssumptionsHaveAPlace)
{
    for (const Row& row : s_assertions)
        ExpectError(Expand(row.source), row.err);
}

const Row s_values[] = {
    {"-9223372036854775807-1", "-9223372036854775808", ""},
    {"9223372036854775807+1", "-9223372036854775808", ""},
    {"(-9223372036854775807-1)*-1", "-9223372036854775808", ""},
    {"(-9223372036854775807-1)/-1", "-9223372036854775808", ""},
    {"(-9223372036854775807-1)%-1", "0", ""},
    {"-(-9223372036854775807-1)", "-9223372036854775808", ""},
    {"1<<64", "1", ""},
    {"1<<-1", "-9223372036854775808", ""},
    {"-1>>200", "-1", ""},
    {"int(1e300)", "9223372036854775807", ""},
    {"int(-1e300)", "-9223372036854775808", ""},
    {"2^^64", "9223372036854775807", ""},
    {"2^^63", "9223372036854775807", ""},
    {"int((0-1.0)^^0.5)", "0", ""},
    {"int(1e999-1e999)", "0", ""},
    {"1e999", "inf", ""},
    {"99999999999999999999", "7766279631452241919", ""},
    {"0x11111111111111111", "1229782938247303441", ""},
    {"1/0", "", "Division by zero error"},
    {"1%0", "", "Modulo zero error"},
    {"1/0.0", "", "Division by zero"},
    {"0^^-1", "", "Calculation 0 ^^ -1 ill defined"},
    {"\"abc\"[5000000000]", "", "No implicit conversion from value 5000000000 to int32"},
    {"\"abc\"[-1]", "", "Index -1 out of range [0,3) on string"},
    {"log(0)", "", "Can't take log of value 0"},
};

TEST_F(BytesTest, ValuesAtTheEdges)
{
    for (const Row& row : s_values)
    {
        SCOPED_TRACE(row.source);
        const ProgramResult result = Expand("@(" + row.source + ")");
        if (row.err.empty())
            ExpectText(result, row.out);
        else
            ExpectError(result,
                        "main.tl(1) : error : " + row.err + "\n    in @(" + row.source + ")\n");
    }
}

TEST_F(BytesTest, LongTokens)
{
    const size_t n = 1'000'000;
    ExpectText(Expand("@(" + std::string(n, '9') + ")"), "-1");
    ExpectText(Expand("@(0x" + std::string(n, 'f') + ")"), "-1");
    ExpectText(Expand("@(0." + std::string(n, '5') + ")"), "0.5555555555555556");
    ExpectText(Expand("@(1e" + std::string(n, '9') + ")"), "inf");
    const std::string name(n, 'n');
    ExpectText(Expand("@def " + name + " = {x}\n" + name), "x");
    ExpectText(Expand("@(len(\"" + std::string(n, 's') + "\"))"), "1000000");
    ExpectText(Expand("/*" + std::string(n, '*') + "*/@//" + std::string(n, 'c')),
               "/*" + std::string(n, '*') + "*/");
}

TEST_F(BytesTest, LongLines)
{
    const std::string line(10'000'000, 'x');
    ExpectText(Expand(line), line);
    const ProgramResult result = Expand(line + " \x01 " + line);
    ExpectError(result, "main.tl(1) : error : Bad token \x01\n 1 | ");
    EXPECT_LT(result.err.size(), 10'000u);
}

TEST_F(BytesTest, IndentationsOutOfRange)
{
    for (const char* const value : {"-1", "9223372036854775808", "99999999999999999999999",
                                    "1000000000000", "", "1x", " 1", "0x10"})
        for (const char* const option : {"--dst-indent", "--src-indent"})
        {
            const ProgramResult result = Expand("x\ny", {option, value});
            EXPECT_EQ(result.status, 2) << value;
            EXPECT_EQ(result.out, "");
            EXPECT_NE(result.err.find(option), std::string::npos) << result.err;
        }
}

TEST_F(BytesTest, LimitsOutOfRange)
{
    for (const char* const option : {"--max-depth", "--max-steps", "--max-output"})
        for (const char* const value :
             {"-1", "9223372036854775808", "9223372036854775807G", "x", ""})
        {
            const ProgramResult result = Expand("x", {option, value});
            EXPECT_EQ(result.status, 2) << option << value;
            EXPECT_NE(result.err.find(option), std::string::npos) << result.err;
        }
}

} // namespace
} // namespace telv::test
