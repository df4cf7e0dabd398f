// SPDX-License-Identifier: MIT
// The owning string.
#include "TextFoundationSupport.h"
#include <gtest/gtest.h>

namespace telv::foundation
{

TEST(TextFoundationString, IsMadeFromTextsRangesAndCounts)
{
    const char text[] = "abc";
    EXPECT_EQ(Str(xstring()), "");
    EXPECT_EQ(Str(xstring("abc")), "abc");
    EXPECT_EQ(Str(xstring(static_cast<const char*>(nullptr))), "");
    EXPECT_EQ(Str(xstring(SubString("view"))), "view");
    EXPECT_EQ(Str(xstring(text + 1, text + 3)), "bc");
    EXPECT_EQ(Str(xstring(text, text)), "");
    EXPECT_EQ(Str(xstring(3, 'x')), "xxx");
    EXPECT_EQ(Str(xstring(0, 'x')), "");
}

TEST(TextFoundationString, ReversedRangeIsAnAssertion)
{
    const char text[] = "abc";
    EXPECT_EQ(FailedAssertion([&] { xstring(text + 1, text); }),
              AssertionIn("xstring", "r1 <= r2"));
}

TEST(TextFoundationString, NegativeSizeIsAnAssertion)
{
    EXPECT_EQ(FailedAssertion([] { xstring(-1, 'x'); }), AssertionIn("xstring", "size >= 0"));
}

TEST(TextFoundationString, EmptyAllocatesNothing)
{
    EXPECT_EQ(xstring().m_buffer.m_buffer, nullptr);
    EXPECT_EQ(xstring("").m_buffer.m_buffer, nullptr);
}

TEST(TextFoundationString, CStrWritesTheTerminatorBehindTheText)
{
    xstring s("ab");
    EXPECT_STREQ(s.c_str(), "ab");
    EXPECT_EQ(s.size(), 2);
    EXPECT_GE(s.capacity(), 3);
    s += "c";
    EXPECT_STREQ(s.c_str(), "abc");
    const xstring empty;
    EXPECT_STREQ(empty.c_str(), "");
    EXPECT_EQ(empty.size(), 0);
}

TEST(TextFoundationString, Appends)
{
    xstring s;
    s += "text";
    s += '-';
    s += SubString("view");
    s += xstring("+string");
    s += static_cast<const char*>(nullptr);
    s += SubString();
    EXPECT_EQ(Str(s), "text-view+string");
}

TEST(TextFoundationString, AppendsAPartOfItself)
{
    xstring s("abc");
    for (int i = 0; i < 6; ++i)
        s += s;
    EXPECT_EQ(s.size(), 192);
    EXPECT_EQ(Str(SubString(s.begin() + 189, s.end())), "abc");
    s.append(SubString(s.begin() + 1, s.begin() + 3));
    EXPECT_EQ(Str(SubString(s.begin() + 192, s.end())), "bc");
}

TEST(TextFoundationString, HoldsAnyBytes)
{
    const std::string bytes("a\0\xff\n", 4);
    EXPECT_EQ(Str(xstring(View(bytes))), bytes);
}

TEST(TextFoundationString, ConvertsToAViewOfItself)
{
    const xstring s("text");
    const SubString view = s;
    EXPECT_EQ(view.begin(), s.begin());
    EXPECT_EQ(view.end(), s.end());
}

TEST(TextFoundationString, CopiesMovesAndSwaps)
{
    xstring s("one");
    xstring copy(s);
    copy += "!";
    EXPECT_EQ(Str(s), "one");
    s = copy;
    EXPECT_EQ(Str(s), "one!");
    const xstring moved(std::move(copy));
    EXPECT_EQ(Str(moved), "one!");
    xstring other("two");
    other.swap(s);
    EXPECT_EQ(Str(s), "two");
    EXPECT_EQ(Str(other), "one!");
}

TEST(TextFoundationString, ComparesByBytes)
{
    EXPECT_TRUE(xstring("a") == xstring("a"));
    EXPECT_TRUE(xstring("a") != xstring("b"));
    EXPECT_TRUE(xstring("a") == "a");
    EXPECT_TRUE(xstring("a") != "b");
    EXPECT_TRUE(xstring("a") == SubString("a"));
    EXPECT_TRUE(SubString("a") == xstring("a"));
    EXPECT_TRUE(xstring("ab") < xstring("b"));
    EXPECT_TRUE(xstring("ab") < xstring("abc"));
    EXPECT_TRUE(xstring("z") < xstring("\x80"));
    EXPECT_FALSE(xstring("b") < xstring("b"));
    EXPECT_EQ(Str(xstring("a") + xstring("b")), "ab");
}

} // namespace telv::foundation
