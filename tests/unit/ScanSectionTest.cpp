// SPDX-License-Identifier: MIT
// Arguments, bracketed sections and blocks: what is cut out, where the scan goes on, every error.
#include "tlMacroExpander/src/Scan/ScanSection.h"
#include "ScannerSupport.h"
#include <gtest/gtest.h>

namespace telv::scanner
{

namespace
{

/// "ARGUMENT|END|REST" for one ScanArgument, or the error.
std::string Argument(const std::string& text, EToken close = TOKEN_RIGHT_PAREN)
{
    SubString s = View(text);
    std::string result;
    const std::string error = ErrorIn(s,
                                      [&]
                                      {
                                          SubString arg;
                                          const LSToken end = ScanArgument(s, arg, close);
                                          result = Str(arg) + "|" + Str(end.m_str) + "|" + Str(s);
                                      });
    return error == "no error" ? result : error;
}

/// "SECTION|REST", or the error.
std::string Section(const std::string& text, bool readOpen = true, EToken open = TOKEN_LEFT_PAREN,
                    EToken close = TOKEN_RIGHT_PAREN)
{
    SubString s = View(text);
    std::string result;
    const std::string error = ErrorIn(s,
                                      [&]
                                      {
                                          const SubString section =
                                              ScanBrackettedSection(s, readOpen, open, close);
                                          EXPECT_LE(section.begin(), section.end());
                                          result = Str(section) + "|" + Str(s);
                                      });
    return error == "no error" ? result : error;
}

/// "BLOCK|INDENT|REST", or the error.
template <class Scan>
std::string Block(const std::string& text, Scan scan)
{
    SubString s = View(text);
    std::string result;
    const std::string error =
        ErrorIn(s,
                [&]
                {
                    ssize_t indent = 77;
                    const SubString block = scan(s, indent);
                    EXPECT_LE(block.begin(), block.end());
                    result = Str(block) + "|" + std::to_string(indent) + "|" + Str(s);
                });
    return error == "no error" ? result : error;
}

std::string CurlyBlock(const std::string& text)
{
    return Block(text, ScanSubstString);
}

std::string RoundBlock(const std::string& text)
{
    return Block(text, ScanRndBrackettedString);
}

} // namespace

TEST(ScanSection, GivenToken)
{
    const SubString text(" /* c */ = x");
    SubString s(text);
    ReadGivenToken(s, TOKEN_EQUAL, "= expected");
    EXPECT_EQ(Str(s), " x");
    EXPECT_EQ(ErrorIn(text, [&] { ReadGivenToken(s, TOKEN_EQUAL, "= expected"); }),
              "= expected @11");
    EXPECT_EQ(ErrorIn(text, [&] { ReadGivenToken(s, TOKEN_EQUAL, "= expected"); }),
              "= expected @12");
}

TEST(ScanSection, BackwardsThroughSpacesAndTabs)
{
    const struct
    {
        const char* m_text;
        ssize_t m_width;
        const char* m_left;
    } rows[] = {
        {"", 0, ""},    {"abc", 0, "abc"},   {"abc\t  ", 6, "abc"},
        {" \t", 5, ""}, {"a\n  ", 2, "a\n"}, {"a \r", 0, "a \r"},
    };
    for (const auto& row : rows)
    {
        SubString s(row.m_text);
        EXPECT_EQ(ScanBackwardsThroughSpacesAndTabs(s), row.m_width) << row.m_text;
        EXPECT_EQ(Str(s), row.m_left);
    }
    SubString null;
    EXPECT_EQ(ScanBackwardsThroughSpacesAndTabs(null), 0);
}

TEST(ScanSection, Arguments)
{
    const struct
    {
        const char* m_text;
        const char* m_result;
    } rows[] = {
        {"a(1,2), b)", "a(1,2)|,| b)"},
        {"a)", "a|)|"},
        {")x", "|)|x"},
        {"  ,x", "|,|x"},
        {"\n a b \n,c", "a b|,|c"},
        {"a /* c */ , b", "a|,| b"},
        {"/* c */ a, b", "/* c */ a|,| b"},
        {"\"a,b)\",c", "\"a,b)\"|,|c"},
        {"{a,)},c", "{a,)}|,|c"},
        {"[a,)],c", "[a,)]|,|c"},
        {"(a,(b,)c,)d,e", "(a,(b,)c,)d|,|e"},
        {"(a],[,)),b", "(a],[,)|)|,b"},
        {"{(}a)", "{(}a|)|"},
        {"{a /* } */ , // }\n},b", "{a /* } */ , // }\n}|,|b"},
        {"{{}{}}{,}x)y", "{{}{}}{,}x|)|y"},
        {"a]b,c", "a]b|,|c"},
        {"`a,(b)`,c", "a,(b)|,|c"},
        {"`` )c", "|)|c"},
        {" `\"'@` ) c", "\"'@|)| c"},
        {"`a` b", "a|b|"},
        {"`a`", "a||"},
        {"a`b,c`", "a`b|,|c`"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Argument(row.m_text), row.m_result) << row.m_text;
    EXPECT_EQ(Argument("a), b]c", TOKEN_RIGHT_SQUARE), "a)|,| b]c");
    EXPECT_EQ(Argument("a}", TOKEN_RIGHT_CURLY), "a|}|");
}

TEST(ScanSection, ArgumentErrors)
{
    const struct
    {
        const char* m_text;
        const char* m_error;
    } rows[] = {
        {"", "Met EOS while reading argument  @0"},
        {"  ", "Met EOS while reading argument  @2"},
        {" a b ", "Met EOS while reading argument a b  @1"},
        {" (a, b", "Met EOS while reading argument (a, b @1"},
        {"{a)", "Met EOS while reading argument {a) @0"},
        {" `a, b)", "Met EOS while reading argument `a, b) @1"},
        {"`", "Met EOS while reading argument ` @0"},
        {"(1.x)", "Expected digit (not 'x') after decimal point (ie after reading '1.') @3"},
        {"a, 'b", "no error"},
        {"a 'b", "Met EOS within single quoted string after reading 'b @4"},
    };
    for (const auto& row : rows)
    {
        const std::string result = Argument(row.m_text);
        EXPECT_EQ(std::string(row.m_error) == "no error" ? "a|,| 'b" : row.m_error, result);
    }
}

TEST(ScanSection, Sections)
{
    const struct
    {
        const char* m_text;
        const char* m_result;
    } rows[] = {
        {"(a)b", "a|b"},
        {" ( a b ) c", "a b| c"},
        {"(a(b)c)d", "a(b)c|d"},
        {"(a\")\"b ')' )", "a\")\"b ')'|"},
        {"()x", "|x"},
        {"(   )x", "|x"},
        {"(\r\n)x", "|x"},
        {"(a{)}", "a{|}"},
        {"(a /* ) */)b", "a|b"},
        {"( /* c */ a)b", "/* c */ a|b"},
        {"( /* c */ )b", "|b"},
        {"( // )\n )b", "|b"},
        {"(a @/* c */ )b", "a @/* c */|b"},
        {"// c\n(a)", "a|"},
        {"(((a) (b)) )c", "((a) (b))|c"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Section(row.m_text), row.m_result) << row.m_text;
    EXPECT_EQ(Section(" a(b) )c", /*readOpen=*/false), "a(b)|c");
    EXPECT_EQ(Section("[a[]b]c", /*readOpen=*/true, TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE),
              "a[]b|c");
    EXPECT_EQ(Section("<a<b>>>", /*readOpen=*/true, TOKEN_LESS, TOKEN_GREATER),
              "Met EOS while reading bracketted section @7");
    EXPECT_EQ(Section("<a<b> >c", /*readOpen=*/true, TOKEN_LESS, TOKEN_GREATER), "a<b>|c");
}

TEST(ScanSection, BlankSectionStandsBehindTheBlanks)
{
    const SubString text("(  )");
    SubString s(text);
    const SubString section =
        ScanBrackettedSection(s, /*readOpen=*/true, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN);
    EXPECT_EQ(section.begin(), text.begin() + 3);
    EXPECT_EQ(section.end(), text.begin() + 3);
}

TEST(ScanSection, SectionErrors)
{
    const struct
    {
        const char* m_text;
        const char* m_error;
    } rows[] = {
        {"(a(b)", "Met EOS while reading bracketted section @5"},
        {"( ", "Met EOS while reading bracketted section @2"},
        {" x)", "( expected when read x @1"},
        {" ", "( expected when read EOS @1"},
        {"(\x01)", "Bad token \x01 @1"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Section(row.m_text), row.m_error) << row.m_text;
    EXPECT_EQ(Section("x", /*readOpen=*/true, TOKEN_LEFT_CURLY, TOKEN_RIGHT_CURLY),
              "{ expected when read x @0");
    EXPECT_EQ(Section("x", /*readOpen=*/true, TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE),
              "[ expected when read x @0");
    EXPECT_EQ(Section("x", /*readOpen=*/true, TOKEN_LESS, TOKEN_GREATER),
              std::string(1, '\0') + " expected when read x @0");
}

TEST(ScanSection, BlockOnTheSameLine)
{
    const struct
    {
        const char* m_text;
        const char* m_result;
    } rows[] = {
        {"{a}b", "a|0|b"},
        {" \t{ a } b", " a |0| b"},
        {"{}x", "|0|x"},
        {"{ }x", " |0|x"},
        {"{\n}x", "|0|x"},
        {"{\r\n}x", "|0|x"},
        {"{\r}x", "|0|x"},
        {"{\n\n}x", "\n|0|x"},
        {"{\n  a\n  b\n}x", "  a\n  b\n|0|x"},
        {"{\r\na\r\n}x", "a\r\n|0|x"},
        {"{\ra}x", "a|0|x"},
        {"{ \na}x", " \na|0|x"},
        {"{a{b}c}d", "a{b}c|0|d"},
        {"{a \"}\" // }\n}d", "a \"}\" // }\n|0|d"},
        {"{a /* c */}d", "a /* c */|0|d"},
        {"/* c */ {a}d", "a|0|d"},
        {"// c\n{a}d", "a|0|d"},
        {"\v\f\r{a}d", "a|0|d"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CurlyBlock(row.m_text), row.m_result) << row.m_text;
    EXPECT_EQ(RoundBlock("(a(b) )c"), "a(b) |0|c");
    EXPECT_EQ(Block("[a]b",
                    [](SubString& s, ssize_t& indent)
                    {
                        return ScanStringBlock(s, indent, TOKEN_LEFT_SQUARE, TOKEN_RIGHT_SQUARE,
                                               "[", "]", /*requireOpen=*/true);
                    }),
              "a|0|b");
}

TEST(ScanSection, BlockIsTheRestOfTheLine)
{
    const struct
    {
        const char* m_text;
        const char* m_result;
    } rows[] = {
        {" a b \nc", "a b |0|\nc"}, {"a b", "a b|0|"},           {"a\r\nb", "a|0|\r\nb"},
        {"a\rb", "a|0|\rb"},        {"a {b}\nc", "a {b}|0|\nc"}, {"a 'b\nc", "a 'b|0|\nc"},
        {"// c\nd", "// c|0|\nd"},  {"// c", "// c|0|"},         {"}", "}|0|"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CurlyBlock(row.m_text), row.m_result) << row.m_text;
}

TEST(ScanSection, BlockOnLinesOfItsOwn)
{
    const struct
    {
        const char* m_text;
        const char* m_result;
    } rows[] = {
        {"\n{\n  a\n  b\n}c", "a\n  b|2|c"},
        {" \r\n{\r\n\t a\r\n}c", "a|5|c"},
        {"\n\n  {\n    a\n\t }c", "a|4|c"},
        {"\n{ \t\n a\n}c", "a|1|c"},
        {"\n{\n\n a\n}c", "\n a|0|c"},
        {"\n{\n a\n\n}c", "a\n|1|c"},
        {"\n{\n a\n\r\n}c", "a\n|1|c"},
        {"\n{\n a{\n}\n}c", "a{\n}|1|c"},
        {"\n// c\n{\na\n}d", "a|0|d"},
        {"\n{\na // }\n}d", "a // }|0|d"},
        // The closing bracket should stand alone: what is before it loses its last character.
        {"\n{\n abc}d", "ab|1|d"},
        {"\n{\n abc \t}d", "ab|1|d"},
        {"\n{abc}d", "ab|0|d"},
        {"\n{ abc }d", "ab|0|d"},
        {"\n{ab\n}d", "ab|0|d"},
        {"\n{a}d", "|0|d"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CurlyBlock(row.m_text), row.m_result) << row.m_text;
    EXPECT_EQ(RoundBlock("\n(\n  a\n)b"), "a|2|b");
}

TEST(ScanSection, EmptyBlockOnLinesOfItsOwn)
{
    const struct
    {
        const char* m_text;
        const char* m_result;
    } rows[] = {
        {"\n{\n}x", "|0|x"},   {"\n{}x", "|0|x"},         {"\n{  }x", "|0|x"},
        {"\n{\r\n}x", "|0|x"}, {"\r\n{\r\n}x", "|0|x"},   {"\n{\r}x", "|0|x"},
        {"\n{\n  }x", "|2|x"}, {"\n{\n\t\n}x", "|4|x"},   {"\n{\n \r\n}x", "|1|x"},
        {"\n{\n\n}x", "|0|x"}, {"\n{\r\n\r\n}x", "|0|x"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CurlyBlock(row.m_text), row.m_result) << row.m_text;
}

TEST(ScanSection, BlockErrors)
{
    const struct
    {
        const char* m_text;
        const char* m_error;
    } curlyRows[] = {
        {"", "Expected { when read EOS @0"},
        {" \t\r", "Expected { when read EOS @3"},
        {"\n x", "Expected { when read x @2"},
        {"\n ", "Expected { when read EOS @2"},
        {" {", "Met EOS before closing } @1"},
        {" { ", "Met EOS while reading bracketted string @1"},
        {"{a{b}", "Met EOS while reading bracketted string @0"},
        {"\n {", "Met EOS before closing } @2"},
        {"\n {\n a", "Met EOS before closing } @2"},
        {"{'a\n}", "Met line feed within single quoted string after reading 'a @3"},
        {"'a\n", "Met line feed within single quoted string after reading 'a @2"},
    };
    for (const auto& row : curlyRows)
        EXPECT_EQ(CurlyBlock(row.m_text), row.m_error) << row.m_text;
    const struct
    {
        const char* m_text;
        const char* m_error;
    } roundRows[] = {
        {"", "Expected ( when read EOS @0"},
        {" {a}", "Expected ( when read { @1"},
        {" // c", "Expected ( when read EOS @5"},
        {"(", "Met EOS before closing ) @0"},
        {"(a", "Met EOS while reading bracketted string @0"},
        {"\n(a", "Met EOS before closing ) @1"},
    };
    for (const auto& row : roundRows)
        EXPECT_EQ(RoundBlock(row.m_text), row.m_error) << row.m_text;
}

TEST(ScanSection, TokenEquivalence)
{
    const struct
    {
        const char* m_a;
        const char* m_b;
        bool m_equivalent;
    } rows[] = {
        {"", "", true},          {"", " // c", true}, {"a+b", " a /* c */ + b\n", true},
        {"a b", "ab", false},    {"a", "a b", false}, {"a b", "a", false},
        {"\"a\"", "'a'", false}, {"1", "01", false},  {"<<", "--", false},
        {"< <", "<<", false},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(SubStringsAreTokenEquivalent(row.m_a, row.m_b), row.m_equivalent)
            << row.m_a << " and " << row.m_b;
    }
}

TEST(ScanSection, FailureLeavesTheViewWhereTheScanStopped)
{
    SubString s("(a");
    EXPECT_THROW(ScanBrackettedSection(s, /*readOpen=*/true, TOKEN_LEFT_PAREN, TOKEN_RIGHT_PAREN),
                 LexScannerException);
    EXPECT_TRUE(s.empty());
}

} // namespace telv::scanner
