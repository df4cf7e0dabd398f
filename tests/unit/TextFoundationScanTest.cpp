// SPDX-License-Identifier: MIT
// Scanning: what each function takes off the front of a text.
#include "TextFoundationSupport.h"
#include <gtest/gtest.h>

namespace telv::foundation
{

struct ScanRow
{
    std::string m_text;
    std::string m_rest;
};

TEST(TextFoundationScan, WhiteSpace)
{
    const ScanRow rows[] = {
        {"", ""},
        {"x ", "x "},
        {" \t\n\r\v\fx", "x"},
        {"  ", ""},
        {"\b", "\b"},
        {"\xc2\xa0", "\xc2\xa0"},
        {std::string("\0 ", 2), std::string("\0 ", 2)},
    };
    for (const ScanRow& row : rows)
    {
        SubString s = View(row.m_text);
        ScanWhiteSpace(s);
        EXPECT_EQ(Str(s), row.m_rest);
        EXPECT_EQ(s.end(), View(row.m_text).end());
    }
}

TEST(TextFoundationScan, EveryByteIsWhiteSpaceOrNot)
{
    const std::string white = " \t\n\r\v\f";
    for (int c = 0; c < 256; ++c)
    {
        const std::string text(1, static_cast<char>(c));
        SubString s = View(text);
        ScanWhiteSpace(s);
        EXPECT_EQ(s.empty(), white.find(text) != std::string::npos) << c;
    }
}

TEST(TextFoundationScan, Identifier)
{
    const ScanRow rows[] = {
        {"a", ""},
        {"_x9 y", " y"},
        {"Az_09+", "+"},
        {"\xc3\xa4\xff"
         "b-",
         "-"},
        {"r", ""},
        {"R x", " x"},
        {"rr\"x\"", "\"x\""},
        {"bar\"x\"", "\"x\""},
        {"r_'x'", "'x'"},
        {"r`x`", "`x`"},
        {std::string("a\0b", 3), std::string("\0b", 2)},
    };
    for (const ScanRow& row : rows)
    {
        SubString s = View(row.m_text);
        EXPECT_TRUE(ScanIdentifier(s)) << row.m_text;
        EXPECT_EQ(Str(s), row.m_rest);
    }
}

TEST(TextFoundationScan, NoIdentifierLeavesTheTextAlone)
{
    const std::string rows[] = {"",       "9a",     " a",   "+",    "@a",  "$",
                                "r\"x\"", "R\"x\"", "r'x'", "R'x'", "r\"", "\x7f"};
    for (const std::string& text : rows)
    {
        SubString s = View(text);
        EXPECT_FALSE(ScanIdentifier(s)) << text;
        EXPECT_EQ(s.m_p1, text.data());
        EXPECT_EQ(s.m_p2, text.data() + text.size());
    }
    SubString null;
    EXPECT_FALSE(ScanIdentifier(null));
    EXPECT_EQ(null.m_p1, nullptr);
}

TEST(TextFoundationScan, RawPrefixIsJudgedWithinTheView)
{
    const char text[] = "r\"x\"";
    SubString s(text, text + 1);
    EXPECT_TRUE(ScanIdentifier(s));
    EXPECT_EQ(s.m_p1, text + 1);
}

TEST(TextFoundationScan, EveryByteBeginsOrContinuesAnIdentifierOrNot)
{
    for (int c = 0; c < 256; ++c)
    {
        const bool letter =
            (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c >= 0x80;
        const bool digit = c >= '0' && c <= '9';
        const std::string alone(1, static_cast<char>(c));
        const std::string second = "x" + alone;
        SubString s = View(alone);
        EXPECT_EQ(ScanIdentifier(s), letter) << c;
        s = View(second);
        EXPECT_TRUE(ScanIdentifier(s));
        EXPECT_EQ(s.empty(), letter || digit) << c;
    }
}

TEST(TextFoundationScan, Digits)
{
    const ScanRow rows[] = {{"", ""}, {"x1", "x1"}, {"0123456789a", "a"}, {"12", ""}, {"-1", "-1"}};
    for (const ScanRow& row : rows)
    {
        SubString s = View(row.m_text);
        ScanDigits(s);
        EXPECT_EQ(Str(s), row.m_rest);
    }
}

TEST(TextFoundationScan, Indentation)
{
    const struct
    {
        const char* m_text;
        long m_indent;
        long m_tabWidth;
        const char* m_rest;
    } rows[] = {
        {"    x", 4, 4, "x"},    {"    x", 2, 4, "  x"},  {"  x", 4, 4, "x"},
        {"\tx", 4, 4, "x"},      {"\t\tx", 4, 4, "\tx"},  {"\tx", 3, 4, "\tx"},
        {" \tx", 4, 4, "\tx"},   {" \tx", 5, 4, "x"},     {"  \t x", 6, 4, " x"},
        {"\tx", 8, 8, "x"},      {"x", 4, 4, "x"},        {"", 4, 4, ""},
        {"  x", 0, 4, "  x"},    {"  x", -1, 4, "  x"},   {"\n  x", 4, 4, "\n  x"},
        {" \r\n", 4, 4, "\r\n"}, {"   \t ", 4, 4, "\t "},
    };
    for (const auto& row : rows)
    {
        SubString s(row.m_text);
        ScanIndentation(s, row.m_indent, row.m_tabWidth);
        EXPECT_EQ(Str(s), row.m_rest) << row.m_text << " to " << row.m_indent;
    }
}

TEST(TextFoundationScan, EmptyNullViewsAreFine)
{
    SubString s;
    ScanWhiteSpace(s);
    ScanDigits(s);
    ScanIndentation(s, 4, 4);
    EXPECT_EQ(s.m_p1, nullptr);
}

} // namespace telv::foundation
