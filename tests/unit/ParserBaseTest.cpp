// SPDX-License-Identifier: MIT
// The parser base: look-ahead, identifiers, paths, and "Expected ..." errors.
#include "tlMacroExpander/src/ParserBase.h"
#include "ScannerSupport.h"
#include <gtest/gtest.h>

namespace telv::scanner
{

TEST(ParserBase, StartsWithoutTokens)
{
    const ParserBase parser;
    EXPECT_EQ(parser.m_token.m_type, TOKEN_UNDEF);
    EXPECT_EQ(parser.m_prevToken.m_type, TOKEN_UNDEF);
    EXPECT_TRUE(parser.m_token.m_str.empty());
    EXPECT_TRUE(parser.m_prevToken.m_str.empty());
    EXPECT_TRUE(parser.m_str.empty());
    EXPECT_TRUE(parser.m_stringForToken.empty());
}

TEST(ParserBase, ReadsOneTokenAhead)
{
    ParserBase parser;
    parser.Init("a /* c */ b");
    EXPECT_EQ(Str(parser.m_token.m_str), "a");
    EXPECT_EQ(parser.m_prevToken.m_type, TOKEN_UNDEF);
    EXPECT_EQ(Str(parser.m_str), " /* c */ b");
    parser.ReadNextToken();
    EXPECT_EQ(Str(parser.m_token.m_str), "b");
    EXPECT_EQ(Str(parser.m_prevToken.m_str), "a");
    parser.ReadNextToken();
    EXPECT_EQ(parser.m_token.m_type, TOKEN_END);
}

TEST(ParserBase, GivenTokenIsConsumedOrMissed)
{
    const SubString text("x ;");
    ParserBase parser;
    parser.Init(text);
    parser.ParseGivenToken(TOKEN_IDENTIFIER, "name");
    EXPECT_EQ(parser.m_token.m_type, TOKEN_SEMICOLON);
    EXPECT_EQ(ErrorIn(text, [&] { parser.ParseGivenToken(TOKEN_RIGHT_PAREN, ")"); }),
              "Expected ) after x when read ; @2");
    EXPECT_EQ(parser.m_token.m_type, TOKEN_SEMICOLON);
}

TEST(ParserBase, ExpectedAtTheStartAndAtTheEnd)
{
    const SubString text("a");
    ParserBase parser;
    parser.Init(text);
    EXPECT_EQ(ErrorIn(text, [&] { parser.ThrowExpectedException("b"); }),
              "Expected b after EOS when read a @0");
    parser.ReadNextToken();
    EXPECT_EQ(ErrorIn(text, [&] { parser.ThrowExpectedException("b"); }),
              "Expected b after a when read EOS @1");
}

TEST(ParserBase, ErrorsHaveNoFile)
{
    ParserBase parser;
    parser.Init("a");
    try
    {
        parser.ThrowExpectedException("b");
    }
    catch (const LexScannerException& e)
    {
        EXPECT_EQ(e.m_lineNumber, -1);
        EXPECT_TRUE(e.m_path.empty());
    }
}

TEST(ParserBase, Identifier)
{
    const SubString text("abc 1");
    ParserBase parser;
    parser.Init(text);
    EXPECT_EQ(Str(parser.ParseIdentifier()), "abc");
    EXPECT_EQ(ErrorIn(text, [&] { parser.ParseIdentifier(); }),
              "Expected identifier after abc when read 1 @4");
    EXPECT_EQ(parser.m_token.m_type, TOKEN_INTEGER);
}

TEST(ParserBase, Paths)
{
    const struct
    {
        const char* m_text;
        const char* m_path;
        const char* m_next;
    } rows[] = {
        {"a", "a", ""},        {"a/b/c.txt", "a/b/c", "."}, {"a / b/ ;", "a/b/", ";"},
        {"a b", "ab", ""},     {"a//b\n.", "a", "."},       {"a/b\"x\"", "a/b", "\"x\""},
        {"a/ /b", "a//b", ""},
    };
    for (const auto& row : rows)
    {
        ParserBase parser;
        parser.Init(row.m_text);
        EXPECT_EQ(Str(parser.ParsePath()), row.m_path) << row.m_text;
        EXPECT_EQ(Str(parser.m_token.m_str), row.m_next) << row.m_text;
    }
}

TEST(ParserBase, PathBeginsWithAnIdentifier)
{
    const SubString text("/a");
    ParserBase parser;
    parser.Init(text);
    EXPECT_EQ(ErrorIn(text, [&] { parser.ParsePath(); }),
              "Expected identifier (for path) after EOS when read / @0");
}

TEST(ParserBase, LexicalErrorsPassThrough)
{
    const SubString text("a 1.");
    ParserBase parser;
    parser.Init(text);
    EXPECT_EQ(ErrorIn(text, [&] { parser.ReadNextToken(); }),
              "Expected digit (not EOS) after decimal point (ie after reading '1.') @4");
}

} // namespace telv::scanner
