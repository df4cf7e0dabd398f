// SPDX-License-Identifier: MIT
// The limits for text that is not trusted, at their exact bounds: what needs N is expanded with a
// limit of N and refused with one less, at its place, wherever the text comes from.
#include "HostileTest.h"

namespace telv::test
{
namespace
{

using Arguments = std::vector<std::string>;

class LimitTest : public HostileTest
{
protected:
    void SetUp() override { Write("lib.tl", "@def m = {body}\n"); }

    ProgramResult ExpandLimited(const std::string& source, Arguments arguments,
                                const std::string& limit, size_t value)
    {
        arguments.push_back(limit);
        arguments.push_back(std::to_string(value));
        return Expand(source, arguments);
    }
};

struct Row
{
    const char* source;
    Arguments arguments;
    const char* limit;
    size_t needs;
    const char* out;
    const char* err; ///< The whole diagnostic with a limit of one less.
};

const Row s_rows[] = {
    {"@def f = {x}\nf f",
     {},
     "--max-depth",
     2,
     "x x",
     "main.tl(1) : error : Expansion nested too deeply\n    invoking macro f\n"
     " 1 | @def f = {x}\n   |           ^\ncalled from main.tl(2)\n"},
    {"@def f = {x}\nf f",
     {},
     "--max-steps",
     5,
     "x x",
     "main.tl(1) : error : Too many expansion steps\n    invoking macro f\n"
     " 1 | @def f = {x}\n   |           ^\ncalled from main.tl(2)\n"},
    {"@if(true){a}@else{b}",
     {},
     "--max-steps",
     3,
     "a",
     "main.tl(1) : error : Too many expansion steps\n"
     " 1 | @if(true){a}@else{b}\n   |           ^\n"},
    {"@let int i = {0}\n@while(i < 2){@let i = {i + 1}}",
     {},
     "--max-steps",
     16,
     "",
     "main.tl(2) : error : Too many expansion steps\n    in @while(i < 2)\n"
     " 2 | @while(i < 2){@let i = {i + 1}}\n   |        ^\n"},
    {"@for(i in [1,2,3]){ab}",
     {},
     "--max-output",
     7,
     "ababab", // the list is longer
     "main.tl(1) : error : Output too large\n"
     " 1 | @for(i in [1,2,3]){ab}\n   |                 ^\n"},
    {"@str(abcde)",
     {},
     "--max-output",
     7,
     "\"abcde\"",
     "main.tl(1) : error : Output too large\n 1 | @str(abcde)\n   | ^\n"},
    {"@import \"lib.tl\"\nm",
     {},
     "--max-depth",
     2,
     "body",
     "lib.tl(1) : error : Expansion nested too deeply\n"
     " 1 | @def m = {body}\n   | ^\nimported from main.tl(1)\n"},
    {"@import \"lib.tl\"\nm",
     {},
     "--max-steps",
     4,
     "body",
     "lib.tl(1) : error : Too many expansion steps\n    invoking macro m\n"
     " 1 | @def m = {body}\n   |           ^\ncalled from main.tl(2)\n"},
    {"@import \"lib.tl\"\nm",
     {"--keep-imports"},
     "--max-output",
     21,
     "@import \"lib.tl\"\nbody",
     "lib.tl(1) : error : Output too large\n    invoking macro m\n"
     " 1 | @def m = {body}\n   |           ^\ncalled from main.tl(2)\n"},
    {"x",
     {"-E", "@scope{yy}"},
     "--max-depth",
     2,
     "x",
     "<command line>(1) : error : Expansion nested too deeply\n"
     " 1 | @scope{yy}\n   |        ^\n"},
    {"x",
     {"-E", "@scope{yy}"},
     "--max-steps",
     3,
     "x",
     "main.tl(1) : error : Too many expansion steps\n 1 | x\n   | ^\n"},
    {"x",
     {"-E", "@scope{yy}"},
     "--max-output",
     2,
     "x",
     "<command line>(1) : error : Output too large\n"
     " 1 | @scope{yy}\n   |        ^\n"},
    {"\"$(A)\"",
     {"-D", "A=0123456789"},
     "--max-output",
     12,
     "\"0123456789\"",
     "main.tl(1) : error : Output too large\n 1 | \"$(A)\"\n   | ^\n"},
    {"@assertfails(@scope{@fail(\"x\")})",
     {},
     "--max-depth",
     4,
     "",
     "main.tl(1) : error : Expansion nested too deeply\n"
     " 1 | @assertfails(@scope{@fail(\"x\")})\n   |                           ^\n"},
    {"@assertfails(@scope{@fail(\"x\")})",
     {},
     "--max-steps",
     4,
     "",
     "main.tl(1) : error : Too many expansion steps\n"
     " 1 | @assertfails(@scope{@fail(\"x\")})\n   |                           ^\n"},
    {"@assertfails(abc @fail(\"x\"))",
     {},
     "--max-output",
     3,
     "",
     "main.tl(1) : error : Output too large\n"
     " 1 | @assertfails(abc @fail(\"x\"))\n   |              ^\n"},
    {"@[@quote(@scope{x})]",
     {"--no-python"},
     "--max-depth",
     3,
     "x",
     "main.tl(1) : error : Expansion nested too deeply\n    in @[@scope{x}]\n"
     " 1 | @[@quote(@scope{x})]\n   | ^\n"},
    {"@[@quote(@scope{x})]",
     {"--no-python"},
     "--max-steps",
     4,
     "x",
     "main.tl(1) : error : Too many expansion steps\n    in @[@scope{x}]\n"
     " 1 | @[@quote(@scope{x})]\n   | ^\n"},
};

TEST_F(LimitTest, WhatItNeedsIsAllowedAndOneLessIsRefused)
{
    for (const Row& row : s_rows)
    {
        SCOPED_TRACE(std::string(row.source) + ' ' + row.limit);
        ExpectText(ExpandLimited(row.source, row.arguments, row.limit, row.needs), row.out);
        const ProgramResult refused =
            ExpandLimited(row.source, row.arguments, row.limit, row.needs - 1);
        EXPECT_EQ(refused.status, 1);
        EXPECT_EQ(refused.out, "");
        EXPECT_EQ(refused.err, row.err);
    }
}

TEST_F(LimitTest, NoTextCatchesOne)
{
    for (const Row& row : s_rows)
    {
        if (std::string_view(row.source).find("@import") != std::string_view::npos)
            continue; // not allowed in there, which is caught
        SCOPED_TRACE(std::string(row.source) + ' ' + row.limit);
        const std::string source = "@assertfails(" + std::string(row.source) + ")x";
        const std::string err = row.err;
        const size_t start = err.find("error : ");
        const std::string what = err.substr(start, err.find('\n') - start + 1);
        const ProgramResult refused =
            ExpandLimited(source, row.arguments, row.limit, row.needs - 1);
        EXPECT_EQ(refused.status, 1);
        EXPECT_NE(refused.err.find(what), std::string::npos) << refused.err;
    }
}

TEST_F(LimitTest, RefusedTextLeavesNoFile)
{
    Write("out.txt", "earlier");
    for (const char* const limit : {"--max-depth", "--max-steps", "--max-output"})
    {
        const ProgramResult result =
            ExpandLimited("@scope{text}", {"-o", "out.txt", "--map", "map.json"}, limit, 1);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(Read("out.txt"), "earlier");
    }
}

TEST_F(LimitTest, SizesHaveUnits)
{
    const struct
    {
        const char* size;
        size_t bytes;
    } rows[] = {{"1000", 1000}, {"2K", 2048}, {"1M", 1048576}};
    for (const auto& row : rows)
    {
        const std::string text(row.bytes, 'x');
        ExpectText(Expand(text, {"--max-output", row.size}), text);
        ExpectError(Expand(text + 'x', {"--max-output", row.size}),
                    "main.tl(1) : error : Output too large\n");
    }
}

// Libraries that come with sanitizers and with the measurement of coverage bring that of
// mathematics.
TEST_F(LimitTest, NoDescriptorForTheLibraryOfMathematics)
{
    LimitedOptions options;
    options.input = "@def x = {1}\n@(sin(0.0)) x";
    options.descriptors = 4; // for the standard streams and the working directory
    for (int fd = 3; fd < 64; ++fd)
        options.closed.push_back(fd);
    const ProgramResult result = Run({}, options);
    if (result.status == 0)
        ExpectText(result, "0 1");
    else
        ExpectError(result,
                    "<stdin>(2) : error : Unable to load the library of mathematical functions\n"
                    "    in @(sin(0.0))\n 2 | @(sin(0.0)) x\n   | ^\n");
}

} // namespace
} // namespace telv::test
