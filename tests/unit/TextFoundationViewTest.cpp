// SPDX-License-Identifier: MIT
// Views of text, and the text that is borrowed or owned.
#include "TextFoundationSupport.h"
#include <gtest/gtest.h>

namespace telv::foundation
{

TEST(TextFoundationView, DefaultIsNullAtBothEnds)
{
    const SubString s;
    EXPECT_EQ(s.m_p1, nullptr);
    EXPECT_EQ(s.m_p2, nullptr);
    EXPECT_TRUE(s.empty());
    EXPECT_EQ(s.size(), 0);
    EXPECT_FALSE(s);
}

TEST(TextFoundationView, NullTextIsTheEmptyView)
{
    const SubString s(static_cast<const char*>(nullptr));
    EXPECT_EQ(s.m_p1, nullptr);
    EXPECT_EQ(s.m_p2, nullptr);
}

TEST(TextFoundationView, IsHalfOpen)
{
    const char text[] = "abcd";
    const SubString s(text + 1, text + 3);
    EXPECT_EQ(s.begin(), text + 1);
    EXPECT_EQ(s.end(), text + 3);
    EXPECT_EQ(s.data(), text + 1);
    EXPECT_EQ(s.size(), 2);
    EXPECT_EQ(Str(s), "bc");
}

TEST(TextFoundationView, TestsTrueWhenNotEmpty)
{
    EXPECT_TRUE(SubString("x"));
    EXPECT_FALSE(SubString(""));
}

TEST(TextFoundationView, IsConsumedFromTheFront)
{
    SubString s("abc");
    EXPECT_EQ(*s, 'a');
    EXPECT_EQ(s[2], 'c');
    EXPECT_EQ(*++s, 'b');
    EXPECT_EQ(Str(s++), "bc");
    EXPECT_EQ(Str(s), "c");
}

TEST(TextFoundationView, ReadingOrAdvancingPastTheEndIsAnAssertion)
{
    const std::string expected = AssertionIn("BasicSubString", "m_p1 < m_p2");
    SubString s("");
    EXPECT_EQ(FailedAssertion([&] { static_cast<void>(*s); }), expected);
    EXPECT_EQ(FailedAssertion([&] { ++s; }), expected);
    EXPECT_EQ(FailedAssertion([&] { s++; }), expected);
    SubString null;
    EXPECT_EQ(FailedAssertion([&] { static_cast<void>(*null); }), expected);
}

TEST(TextFoundationView, IndexOutsideIsAnAssertion)
{
    const SubString s("ab");
    const std::string expected = AssertionIn("BasicSubString", "0 <= index && index < size()");
    EXPECT_EQ(FailedAssertion([&] { static_cast<void>(s[2]); }), expected);
    EXPECT_EQ(FailedAssertion([&] { static_cast<void>(s[-1]); }), expected);
}

TEST(TextFoundationView, EqualWhenTheCharactersAre)
{
    const std::string one("a\0b", 3);
    const std::string two("a\0c", 3);
    EXPECT_TRUE(SubString("abc") == SubString("abc"));
    EXPECT_TRUE(SubString("abc") != SubString("abd"));
    EXPECT_TRUE(SubString("abc") != SubString("ab"));
    EXPECT_TRUE(View(one) != View(two));
    EXPECT_TRUE(SubString() == SubString(""));
    EXPECT_TRUE(SubString("x") == "x");
    EXPECT_TRUE(SubString("x") != "y");
}

TEST(TextFoundationView, EndBelongsToTheText)
{
    const SubString outer("abc");
    EXPECT_TRUE(IsWithin(outer, outer));
    EXPECT_TRUE(IsWithin(SubString(outer.end(), outer.end()), outer));
    EXPECT_FALSE(
        IsWithin(SubString(outer.begin(), outer.end()), SubString(outer.begin(), outer.end() - 1)));
}

TEST(TextFoundationStringX, BorrowsTheViewItself)
{
    const SubString s("body");
    StringX x;
    EXPECT_TRUE(x.m_subString.empty());
    EXPECT_EQ(x.m_capacity, 0);
    x.Set(s, false);
    EXPECT_EQ(x.m_subString.m_p1, s.m_p1);
    EXPECT_EQ(x.m_subString.m_p2, s.m_p2);
    EXPECT_EQ(x.m_capacity, 0);
}

// The address sanitizer ends the process instead.
#if !defined(TELV_ADDRESS_SANITIZER)

TEST(TextFoundationStringX, WithoutMemoryForACopyNothingChanges)
{
    const SubString kept("kept");
    StringX x;
    x.Set(kept, true);
    const char* const large = reinterpret_cast<const char*>(size_t(1) << 20); // is not read
    EXPECT_THROW(x.Set(SubString(large, large + (ssize_t(1) << 60)), true), std::bad_alloc);
    EXPECT_EQ(Str(x.m_subString), "kept");
}

#endif

TEST(TextFoundationStringX, OwnsACopy)
{
    StringX x;
    {
        const std::string text("body\0!", 6);
        x.Set(View(text), true);
        EXPECT_NE(x.m_subString.m_p1, text.data());
    }
    EXPECT_EQ(Str(x.m_subString), std::string("body\0!", 6));
    EXPECT_GE(x.m_capacity, 6);
}

TEST(TextFoundationStringX, CopyOfAnEmptyTextHasAnAddress)
{
    StringX x;
    x.Set(SubString(), true);
    EXPECT_TRUE(x.m_subString.empty());
    EXPECT_NE(x.m_subString.m_p1, nullptr);
}

TEST(TextFoundationStringX, CanBeSetAgain)
{
    StringX x;
    x.Set("first", true);
    x.Set("a text that is longer than the first", true);
    EXPECT_EQ(Str(x.m_subString), "a text that is longer than the first");
    x.Set("short", true);
    EXPECT_EQ(Str(x.m_subString), "short");
    const SubString borrowed("borrowed");
    x.Set(borrowed, false);
    EXPECT_EQ(x.m_subString.m_p1, borrowed.m_p1);
    EXPECT_EQ(x.m_capacity, 0);
}

TEST(TextFoundationStringX, CanBeSetToAPartOfItself)
{
    for (const bool copy : {false, true})
    {
        StringX x;
        x.Set("0123456789", true);
        x.Set(SubString(x.m_subString.m_p1 + 3, x.m_subString.m_p2), copy);
        EXPECT_EQ(Str(x.m_subString), "3456789");
    }
}

} // namespace telv::foundation
