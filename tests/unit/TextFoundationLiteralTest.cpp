// SPDX-License-Identifier: MIT
// C-style literals, and blocks moved to another indentation.
#include "TextFoundationSupport.h"
#include <gtest/gtest.h>

namespace telv::foundation
{

/// `c` in a literal between `quote`s, worked out plainly.
std::string ExpectedEscape(int c, char quote)
{
    const std::string plain(1, static_cast<char>(c));
    const std::string named = "\a\b\f\n\r\t\v";
    const size_t index = named.find(plain);
    if (index != std::string::npos)
        return std::string("\\") + "abfnrtv"[index];
    if (c == '\\' || c == quote)
        return "\\" + plain;
    if (c >= 0x20 && c != 0x7f)
        return plain;
    char text[8];
    std::snprintf(text, sizeof text, "\\x%02x", static_cast<unsigned>(c));
    return text;
}

TEST(TextFoundationLiteral, EveryByteInEveryKindOfLiteral)
{
    for (int c = 0; c < 256; ++c)
    {
        const char byte = static_cast<char>(c);
        const std::string inDouble = ExpectedEscape(c, '"');
        EXPECT_EQ(Written([&](xostream& os) { WriteCharForCStyleLiteralConstants(os, byte); }),
                  inDouble);
        xstring out("old");
        MakeDoubleQuotedString(SubString(&byte, &byte + 1), out);
        EXPECT_EQ(Str(out), "\"" + inDouble + "\"");
        MakeSingleQuotedLiteralChar(byte, out);
        EXPECT_EQ(Str(out), "'" + ExpectedEscape(c, '\'') + "'");
    }
}

TEST(TextFoundationLiteral, Texts)
{
    const struct
    {
        std::string m_text;
        std::string m_literal;
    } rows[] = {
        {"", "\"\""},
        {"plain", "\"plain\""},
        {"a\"b\\c", "\"a\\\"b\\\\c\""},
        {"it's", "\"it's\""},
        {"line\n\tnext\r\n", "\"line\\n\\tnext\\r\\n\""},
        {std::string("\0\x1f\x7f", 3), "\"\\x00\\x1f\\x7f\""},
        {"\xc3\xa4\xff", "\"\xc3\xa4\xff\""},
    };
    for (const auto& row : rows)
    {
        xstring out("old");
        MakeDoubleQuotedString(View(row.m_text), out);
        EXPECT_EQ(Str(out), row.m_literal);
    }
}

TEST(TextFoundationLiteral, MayReplaceItsArgument)
{
    xstring s("a\"b");
    MakeDoubleQuotedString(s, s);
    EXPECT_EQ(Str(s), "\"a\\\"b\"");
    MakeDoubleQuotedString(SubString(), s);
    EXPECT_EQ(Str(s), "\"\"");
}

TEST(TextFoundationBlock, CommonIndentationIsReplaced)
{
    const struct
    {
        const char* m_text;
        long m_indent;
        const char* m_result;
    } rows[] = {
        {"", 0, ""},
        {"a", 0, "a"},
        {"  a\n    b\n  c\n", 0, "a\n  b\nc\n"},
        {"  a\n    b", 4, "    a\n      b"},
        {"a\n  b\n", 2, "  a\n    b\n"},
        {"\ta\n\t\tb\n", 0, "a\n\tb\n"},
        {"\ta\n    b\n", 2, "  a\n  b\n"},
        {"  a\n\tb\n", 0, "a\n  b\n"},
        {" a\n\t\tb\n", 1, " a\n    \tb\n"},
        {"    a\n\n  \n\t\n    b\n", 0, "a\n\n\n\nb\n"},
        {"\n\n", 4, "\n\n"},
        {"   ", 4, ""},
        {"  a\n   ", 0, "a\n"},
        {"  a\r\n  \r\n    b\r\n", 0, "a\r\n\r\n  b\r\n"},
        {"    a\n", 40, "                                        a\n"},
        {"  a  \n", 0, "a  \n"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(Written([&](xostream& os)
                          { WriteSubStringWithAdjustedIndent(os, row.m_text, row.m_indent); }),
                  row.m_result)
            << row.m_text;
    }
}

TEST(TextFoundationBlock, EmptyNullViewWritesNothing)
{
    EXPECT_EQ(Written([](xostream& os) { WriteSubStringWithAdjustedIndent(os, SubString(), 4); }),
              "");
}

} // namespace telv::foundation
