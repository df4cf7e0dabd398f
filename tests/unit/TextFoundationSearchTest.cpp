// SPDX-License-Identifier: MIT
// Comparing, counting lines, replacing.
#include "TextFoundationSupport.h"
#include <gtest/gtest.h>

namespace telv::foundation
{

TEST(TextFoundationSearch, LinesCountFromOneByLineFeeds)
{
    const char text[] = "ab\n\ncd\r\n";
    const SubString buffer(text);
    const ssize_t lines[] = {1, 1, 1, 2, 3, 3, 3, 3, 4};
    ASSERT_EQ(buffer.size() + 1, static_cast<ssize_t>(std::size(lines)));
    for (ssize_t i = 0; i <= buffer.size(); ++i)
        EXPECT_EQ(GetLineNumber(buffer, text + i), lines[i]) << i;
}

TEST(TextFoundationSearch, PositionsOutsideHaveNoLine)
{
    const char text[] = "abc\ndef";
    const SubString buffer(text + 2, text + 5);
    EXPECT_EQ(GetLineNumber(buffer, text + 1), -1);
    EXPECT_EQ(GetLineNumber(buffer, text + 6), -1);
    EXPECT_EQ(GetLineNumber(buffer, nullptr), -1);
    EXPECT_EQ(GetLineNumber(buffer, text + 5), 2);
    EXPECT_EQ(GetLineNumber(SubString(text, text), text), 1);
}

TEST(TextFoundationSearch, CaseOfAsciiLettersOnlyIsIgnored)
{
    EXPECT_TRUE(CaseInsensitiveCompare("AbZ[", "aBz["));
    EXPECT_TRUE(CaseInsensitiveCompare("", SubString()));
    EXPECT_FALSE(CaseInsensitiveCompare("a", "ab"));
    EXPECT_FALSE(CaseInsensitiveCompare("a", "b"));
    EXPECT_FALSE(CaseInsensitiveCompare("[", "{"));
    EXPECT_FALSE(CaseInsensitiveCompare("@", "`"));
    EXPECT_FALSE(CaseInsensitiveCompare("\xc3\x84", "\xc3\xa4"));
}

TEST(TextFoundationSearch, OrderIsByUnsignedBytesPrefixFirst)
{
    const std::string nul("a\0", 2);
    const std::string rows[] = {"", "A", "a", nul, "a b", "aa", "ab", "b", "\x80", "\xff"};
    for (size_t i = 0; i < std::size(rows); ++i)
    {
        for (size_t k = 0; k < std::size(rows); ++k)
        {
            const int order = strcmp(View(rows[i]), View(rows[k]));
            EXPECT_EQ(order < 0, i < k) << i << ' ' << k;
            EXPECT_EQ(order > 0, i > k) << i << ' ' << k;
        }
    }
}

TEST(TextFoundationSearch, OrderAgainstCText)
{
    EXPECT_EQ(strcmp(SubString("a"), "a"), 0);
    EXPECT_LT(strcmp(SubString("a"), "ab"), 0);
    EXPECT_GT(strcmp(SubString("b"), "ab"), 0);
    EXPECT_EQ(strcmp(SubString(), ""), 0);
    EXPECT_EQ(strcmp(SubString(), static_cast<const char*>(nullptr)), 0);
}

TEST(TextFoundationSearch, ReplaceEveryOccurrence)
{
    const struct
    {
        std::string m_text;
        std::string m_find;
        std::string m_replace;
        std::string m_result;
    } rows[] = {
        {"a EOS b EOS", "EOS", ")", "a ) b )"},
        {"aaa", "aa", "b", "ba"},
        {"aaaa", "aa", "a", "aa"},
        {"ab", "b", "bb", "abb"},
        {"abc", "x", "y", "abc"},
        {"abc", "", "y", "abc"},
        {"", "x", "y", ""},
        {"x", "x", "", ""},
        {"ab", "abc", "y", "ab"},
        {std::string("a\0b\0", 4), std::string("\0", 1), "-", "a-b-"},
    };
    for (const auto& row : rows)
    {
        xstring s(View(row.m_text));
        StringFindAndReplace(s, View(row.m_find), View(row.m_replace));
        EXPECT_EQ(Str(s), row.m_result) << row.m_text << ' ' << row.m_find;
    }
}

TEST(TextFoundationSearch, ReplaceWithTheStringItself)
{
    xstring s("ab");
    StringFindAndReplace(s, "b", s);
    EXPECT_EQ(Str(s), "aab");
    StringFindAndReplace(s, s, "whole");
    EXPECT_EQ(Str(s), "whole");
}

TEST(TextFoundationSearch, ReplaceInALongText)
{
    xstring s(1 << 20, 'a');
    StringFindAndReplace(s, "a", "bc");
    EXPECT_EQ(s.size(), 2 << 20);
    EXPECT_EQ(Str(SubString(s.end() - 4, s.end())), "bcbc");
}

} // namespace telv::foundation
