// SPDX-License-Identifier: MIT
// Streams in memory and their indentation.
#include "TextFoundationSupport.h"
#include <gtest/gtest.h>

namespace telv::foundation
{

TEST(TextFoundationStream, PutsCharactersAndNumbers)
{
    EXPECT_EQ(Written(
                  [](xostream& os)
                  {
                      os.put("abc", 2);
                      os.put('c');
                      os.put(-1);
                      os.put(5L);
                      os.put(0.5);
                      os.put("", 0);
                      os.put(nullptr, 0);
                      os.flush();
                  }),
              "abc-150.5");
}

TEST(TextFoundationStream, ShiftsTextsAndNumbers)
{
    EXPECT_EQ(Written(
                  [](xostream& os)
                  {
                      os << SubString("view ") << xstring("string ") << "text " << 'c' << 1 << 2L
                         << 1.5 << SubString() << static_cast<const char*>(nullptr)
                         << HumanReadableCharInSubString("x");
                  }),
              "view string text c121.5'x'");
}

TEST(TextFoundationStream, PagesOfAnySizeKeepTheText)
{
    std::string text("with \0 inside ", 14);
    for (int i = 0; i < 1000; ++i)
        text += std::to_string(i);
    for (const ssize_t pageSize : {1, 2, 7, 4096})
    {
        StringStream stream(pageSize);
        stream << View(text) << 'x' << View(text);
        EXPECT_EQ(Str(stream.GetString()), text + 'x' + text) << pageSize;
        EXPECT_EQ(stream.size(), static_cast<ssize_t>(2 * text.size() + 1));
        EXPECT_EQ(stream.m_pb.m_pageSize, pageSize);
        EXPECT_EQ(stream.m_pb.m_totalSize, stream.size());
        EXPECT_EQ(stream.m_pb.m_pages.size(), (stream.size() + pageSize - 1) / pageSize);
        EXPECT_EQ(stream.m_pb.m_writePos, (stream.size() - 1) % pageSize + 1);
    }
}

TEST(TextFoundationStream, UnusedStreamHasNoPages)
{
    const StringStream stream(4096);
    EXPECT_EQ(stream.m_pb.m_pages.size(), 0);
    EXPECT_EQ(Str(stream.GetString()), "");
}

TEST(TextFoundationStream, GetStringReplacesOrAppends)
{
    StringStream stream(4096);
    stream << "new";
    xstring out("old");
    stream.GetString(out, true);
    EXPECT_EQ(Str(out), "new");
    stream.GetString(out, false);
    EXPECT_EQ(Str(out), "newnew");
}

TEST(TextFoundationStream, ClearForgetsTheText)
{
    StringStream stream(4);
    stream << "something";
    stream.m_pb.Clear();
    EXPECT_EQ(stream.size(), 0);
    stream << "else";
    EXPECT_EQ(Str(stream.GetString()), "else");
    stream.Clear();
    EXPECT_EQ(Str(stream.GetString()), "");
}

TEST(TextFoundationStream, PageWithoutBytesIsAnAssertion)
{
    EXPECT_EQ(FailedAssertion([] { PagedBuffer buffer(0); }),
              AssertionIn("PagedBuffer", "pageSize > 0"));
}

TEST(TextFoundationIndent, FollowingLinesAreIndentedAndThenNoMore)
{
    StringStream os(4096);
    os << "head";
    {
        const Indenter indenter(os, 4);
        os << " goes on\nbody\n\n" << 'x' << 'y' << '\n' << '\n' << 12;
    }
    os << " rest\ntail\n";
    EXPECT_EQ(Str(os.GetString()), "head goes on\n    body\n\n    xy\n\n    12 rest\ntail\n");
}

TEST(TextFoundationIndent, StreamWithoutTextIsAtALineStart)
{
    StringStream os(4096);
    const Indenter indenter(os, 2);
    os << "a\nb";
    EXPECT_EQ(Str(os.GetString()), "  a\n  b");
}

TEST(TextFoundationIndent, StreamBehindALineFeedIsAtALineStart)
{
    StringStream os(4096);
    os << "a\n";
    const Indenter indenter(os, 2);
    os << "b";
    EXPECT_EQ(Str(os.GetString()), "a\n  b");
}

TEST(TextFoundationIndent, Nests)
{
    StringStream os(4096);
    os << "0\n";
    {
        const Indenter outer(os, 4);
        os << "4\n";
        {
            const Indenter inner(os, 40);
            os << "44\n";
        }
        os << "4\n";
    }
    os << "0\n";
    EXPECT_EQ(Str(os.GetString()), "0\n    4\n" + std::string(44, ' ') + "44\n    4\n0\n");
}

TEST(TextFoundationIndent, ClearedStreamIsAtALineStart)
{
    StringStream os(4096);
    const Indenter indenter(os, 2);
    os << "a";
    os.Clear();
    os << "b";
    EXPECT_EQ(Str(os.GetString()), "  b");
}

TEST(TextFoundationIndent, LessThanNothingIsNothing)
{
    StringStream os(4096);
    const Indenter indenter(os, -4);
    os << "a\nb";
    EXPECT_EQ(Str(os.GetString()), "a\nb");
}

TEST(TextFoundationIndent, GuardKnowsStreamAndColumns)
{
    StringStream os(4096);
    const Indenter indenter(os, 4);
    EXPECT_EQ(&indenter.m_os, static_cast<xostream*>(&os));
    EXPECT_EQ(indenter.m_indent, 4);
}

} // namespace telv::foundation
