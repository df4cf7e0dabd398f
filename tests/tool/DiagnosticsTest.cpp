// SPDX-License-Identifier: MIT
// Errors as they are shown.
#include "ToolTest.h"

namespace telv::test
{

using DiagnosticsTest = ToolTest;

TEST_F(DiagnosticsTest, TheCaretStandsUnderTheColumn)
{
    struct Row
    {
        std::string m_source;
        std::string m_excerpt;
    };
    const Row rows[] = {
        {"@else", " 1 | @else\n   |  ^\n"},
        {"\t x\t@else\n", " 1 | \t x\t@else\n   | \t  \t ^\n"},
        {"\xc3\xa4\xe2\x82\xac\xff @else\n", " 1 | \xc3\xa4\xe2\x82\xac\xff @else\n   |      ^\n"},
        {"a\r\n@else\r\nb\r\n", " 2 | @else\n   |  ^\n"},
        {"@else\x1b[31m\n", " 1 | @else\x1b[31m\n   |  ^\n"},
    };
    for (const Row& row : rows)
    {
        const ProgramResult result = Run({}, row.m_source);
        EXPECT_EQ(result.status, 1);
        const size_t firstLine = result.err.find('\n') + 1;
        EXPECT_EQ(result.err.substr(firstLine), row.m_excerpt);
    }
}

// Two ideographs take four columns, a combining accent none, a C1 control one.
TEST_F(DiagnosticsTest, TheCaretStandsUnderTheColumnBehindWideCharacters)
{
    const std::string wide = "\xe6\xbc\xa2\xe5\xad\x97";
    const std::string accent = "e\xcc\x81";
    ExpectFailure(Run({"-"}, wide + " @else\n"), 1,
                  "<stdin>(1) : error : @else with no matching @if directive\n"
                  " 1 | " +
                      wide +
                      " @else\n"
                      "   |       ^\n");
    ExpectFailure(Run({"-"}, accent + " @else\n"), 1,
                  "<stdin>(1) : error : @else with no matching @if directive\n"
                  " 1 | " +
                      accent +
                      " @else\n"
                      "   |    ^\n");
    // Whatever the locale is.
    Write("wide", wide + "@else");
    for (const char* const locale : {"C", "C.UTF-8", "none"})
        EXPECT_EQ(RunShell(std::string("LC_ALL=") + locale + " $TLEXPAND wide").err,
                  "wide(1) : error : @else with no matching @if directive\n"
                  " 1 | " +
                      wide +
                      "@else\n"
                      "   |      ^\n");
}

TEST_F(DiagnosticsTest, TheEndOfTheTextIsBehindItsLastCharacter)
{
    ExpectFailure(Run({}, "@scope{"), 1,
                  "<stdin>(1) : error : Met EOS before closing }\n"
                  " 1 | @scope{\n"
                  "   |       ^\n");
    ExpectFailure(Run({}, "x\n@print(a"), 1,
                  "<stdin>(2) : error : Met EOS while reading bracketted section\n"
                  " 2 | @print(a\n"
                  "   |         ^\n"
                  "opened at <stdin>(2)\n"
                  " 2 | @print(a\n"
                  "   |       ^\n");
    ExpectFailure(Run({}, "@print(a\n"), 1,
                  "<stdin>(2) : error : Met EOS while reading bracketted section\n"
                  " 2 | \n"
                  "   | ^\n"
                  "opened at <stdin>(1)\n"
                  " 1 | @print(a\n"
                  "   |       ^\n");
}

TEST_F(DiagnosticsTest, ALongLineIsCutAroundTheCaret)
{
    const std::string blanks(300, ' ');
    ExpectFailure(Run({}, blanks + "@else" + blanks), 1,
                  "<stdin>(1) : error : @else with no matching @if directive\n"
                  " 1 | ..." +
                      std::string(199, ' ') + "@else" + std::string(196, ' ') + "...\n" + "   | " +
                      std::string(203, ' ') + "^\n");
}

/// What is shown begins with a whole character, and bytes that are none count as one each.
TEST_F(DiagnosticsTest, ALongLineOfManyByteCharactersIsCutAroundTheCaret)
{
    for (const std::string& character : {std::string("\xe2\x82\xac"), std::string("\x82")})
    {
        std::string line;
        std::string shown;
        for (int i = 0; i < 5'000; ++i)
            line += character;
        for (int i = 0; i < 199; ++i)
            shown += character;
        const std::string expected =
            "\n 1 | ..." + shown + " @(1/0)" + shown.substr(0, 194 * character.size());
        const ProgramResult result = Run({}, line + " @(1/0)" + line);
        EXPECT_NE(result.err.find(expected), std::string::npos) << result.err;
    }
}

/// Of the first few the lines are counted in another way than of those that follow.
TEST_F(DiagnosticsTest, EveryOneOfManyWarningsHasItsLine)
{
    std::string text;
    std::string expected;
    for (int line = 1; line <= 2'000; ++line)
    {
        text += line % 20 == 0 ? "@wrod\n" : std::string(line % 7 * 10, 'x') + "\n";
        if (line % 20 == 0)
            expected += "<stdin>(" + std::to_string(line) + ") ";
    }
    const ProgramResult result = Run({"--warn", "unknown-directive"}, text);
    std::string places;
    for (size_t at = result.err.find("<stdin>("); at != std::string::npos;
         at = result.err.find("<stdin>(", at + 1))
        places += result.err.substr(at, result.err.find(' ', at) + 1 - at);
    EXPECT_EQ(places, expected);
}

TEST_F(DiagnosticsTest, ColoursOnDemandOnly)
{
    EXPECT_EQ(Run({"--color", "always"}, "@else").err,
              "\x1b[1m<stdin>(1) : \x1b[31merror\x1b[0m\x1b[1m : @else with no matching @if "
              "directive\x1b[0m\n"
              " 1 | @else\n"
              "   |  \x1b[1;32m^\x1b[0m\n");
    EXPECT_EQ(Run({"--color=never"}, "@else").err, Run({}, "@else").err);
}

TEST_F(DiagnosticsTest, ErrorsInMadeUpTextStandAtTheDirective)
{
    ExpectFailure(Run({}, "a\n @let int i = {1 2}\n"), 1,
                  "<stdin>(2) : error : Read 2 in middle of expression\n"
                  "    expression: 1 2\n"
                  " 2 |  @let int i = {1 2}\n"
                  "   |  ^\n");
}

TEST_F(DiagnosticsTest, ABrokenAssumptionIsReportedAtItsPlace)
{
    const ProgramResult result = Run({}, "a\nb @(__LINE__)\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err.find("<stdin>(2) : error : Assertion failed: "
                              "GetFilenameAndLineNumberAtCurrentPosition(filename, lineNumber) at "
                              "Core/tlMacroExpander/src/ExpressionParser("),
              0u);
    EXPECT_NE(result.err.find("\n 2 | b @(__LINE__)\n"), std::string::npos);
}

TEST_F(DiagnosticsTest, PrintedTextComesFirst)
{
    EXPECT_EQ(Run({}, "@println(text)@else").err.substr(0, 24), "text\n<stdin>(1) : error ");
}

// A message that quotes the rest of the file says so, and shows how it begins and ends.
TEST_F(DiagnosticsTest, OfAMessageWithManyLinesTheMiddleIsLeftOut)
{
    const auto lines = [](int from, int to)
    {
        std::string text;
        for (int i = from; i <= to; ++i)
            text += "line " + std::to_string(i) + "\n";
        return text;
    };
    Write("main.tl", "@def f(x) = {x}\nf(a,\n" + lines(1, 1000));
    const ProgramResult result = Run({"main.tl"});
    EXPECT_EQ(result.status, 1);
    const std::string message = result.err.substr(0, result.err.find("\n 2 | "));
    EXPECT_EQ(message.substr(0, message.find('\n')),
              "main.tl(2) : error : Too many arguments provided for macro f(x)");
    Write("main.tl", "@def f(x) = {x}\nf(a\n" + lines(1, 1000));
    const std::string err = Run({"main.tl"}).err;
    EXPECT_EQ(err.substr(0, err.find("\n 2 | ")),
              "main.tl(2) : error : Met EOS while reading argument a\n" + lines(1, 39) +
                  "... (952 lines left out)\n" + lines(992, 1000));
    Write("main.tl", "@def f(x) = {x}\nf(a\n" + lines(1, 58));
    EXPECT_NE(Run({"main.tl"}).err.find(lines(1, 58)), std::string::npos);
}

} // namespace telv::test
