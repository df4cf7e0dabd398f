// SPDX-License-Identifier: MIT
// Columns of lines in terminal columns, code points and UTF-16 units.
#include "remap/LineColumns.h"

#include <gtest/gtest.h>
#include <string>

namespace telv::test
{
namespace
{

using tool::EColumnUnit;
using tool::LineColumns;

SubString Of(const std::string& s)
{
    return SubString(s.data(), s.data() + s.size());
}

TEST(LineColumnsTest, FindsTerminalColumns)
{
    LineColumns columns;
    const SubString line("\tab\tc");
    const auto bytes = [&](ssize_t n) { return columns.BytesOf(line, n, EColumnUnit::Terminal); };
    EXPECT_EQ(bytes(0), 0);
    EXPECT_EQ(bytes(8), 1);
    EXPECT_EQ(bytes(9), 2);
    EXPECT_EQ(bytes(16), 4);
    EXPECT_EQ(bytes(99), 5);
}

// Two ideographs of two columns, an e with a combining accent, a letter.
TEST(LineColumnsTest, CountsTheColumnsOfWideAndCombiningCharacters)
{
    LineColumns columns;
    const SubString line("\xe6\xbc\xa2\xe5\xad\x97"
                         "e\xcc\x81x");
    const auto bytes = [&](ssize_t n) { return columns.BytesOf(line, n, EColumnUnit::Terminal); };
    EXPECT_EQ(bytes(1), 0);
    EXPECT_EQ(bytes(2), 3);
    EXPECT_EQ(bytes(4), 6);
    EXPECT_EQ(bytes(5), 9);
    EXPECT_EQ(bytes(6), 10);
    EXPECT_EQ(columns.ColumnsOf(line, 6, EColumnUnit::Terminal), 4);
    EXPECT_EQ(columns.ColumnsOf(line, 9, EColumnUnit::Terminal), 5);
    EXPECT_EQ(columns.ColumnsOf(line, 10, EColumnUnit::Terminal), 6);
}

// Of a smiling face, which is a pair.
TEST(LineColumnsTest, CountsCodePointsAndUnits)
{
    LineColumns columns;
    const SubString line("a\xf0\x9f\x98\x80z");
    EXPECT_EQ(columns.BytesOf(line, 2, EColumnUnit::CodePoints), 5);
    EXPECT_EQ(columns.BytesOf(line, 2, EColumnUnit::Utf16), 5);
    EXPECT_EQ(columns.BytesOf(line, 3, EColumnUnit::Utf16), 5);
    EXPECT_EQ(columns.BytesOf(line, 9, EColumnUnit::Utf16), 6);
    EXPECT_EQ(columns.ColumnsOf(line, 5, EColumnUnit::CodePoints), 2);
    EXPECT_EQ(columns.ColumnsOf(line, 5, EColumnUnit::Utf16), 3);
}

// Each character of the line, wherever the kept places lie, as in a short line.
TEST(LineColumnsTest, LongLinesAreCountedTheSame)
{
    const std::string part = "x\t\xe6\xbc\xa2"
                             "e\xcc\x81\xf0\x9f\x98\x80\xff";
    std::string text;
    while (text.size() < 3000)
        text += part;
    for (const EColumnUnit unit :
         {EColumnUnit::Terminal, EColumnUnit::CodePoints, EColumnUnit::Utf16})
    {
        LineColumns columns;
        ssize_t expected = 0;
        for (SubString rest = Of(text); !rest.empty();)
        {
            const ssize_t offset = rest.begin() - text.data();
            ASSERT_EQ(columns.ColumnsOf(Of(text), offset, unit), expected) << offset;
            const std::string before = text.substr(0, static_cast<size_t>(offset));
            const tool::Utf8Character character = tool::TakeUtf8Character(rest);
            const ssize_t width = character.m_bytes.size() == 4 ? 2 : 1;
            const ssize_t behind = unit == EColumnUnit::Terminal
                                       ? *character.m_bytes.begin() == '\t'
                                             ? (expected / 8 + 1) * 8
                                             : expected + (character.m_bytes.size() >= 3   ? 2
                                                           : character.m_bytes.size() == 2 ? 0
                                                                                           : 1)
                                       : expected + (unit == EColumnUnit::Utf16 ? width : 1);
            const bool isCombining = unit == EColumnUnit::Terminal && behind == expected;
            if (!isCombining)
            {
                const ssize_t found = columns.BytesOf(Of(text), behind, unit);
                ASSERT_GE(found, rest.begin() - text.data()) << offset;
                ASSERT_LE(found, rest.begin() - text.data() + 2) << offset; // an accent
            }
            expected = behind;
        }
    }
}

TEST(LineColumnsTest, ALongLineIsReadOnce)
{
    const auto steps = [](size_t length, int questions)
    {
        const std::string text(length, 'x');
        LineColumns columns;
        for (int i = 0; i < questions; ++i)
        {
            const ssize_t last = static_cast<ssize_t>(length) - i;
            EXPECT_EQ(columns.BytesOf(Of(text), last, EColumnUnit::Terminal), last);
            EXPECT_EQ(columns.ColumnsOf(Of(text), last, EColumnUnit::Terminal), last);
        }
        return columns.CountOfSteps();
    };
    const ssize_t ofOne = steps(100'000, 1);
    EXPECT_LE(ofOne, 101'000);
    EXPECT_LE(steps(100'000, 1000) - ofOne, 1000 * 2 * 300);
}

TEST(LineColumnsTest, WhiteSpaceIsSkippedOnce)
{
    LineColumns columns;
    const std::string text = std::string(10'000, ' ') + "x";
    const std::string blank(10'000, ' ');
    for (int i = 0; i < 10; ++i)
    {
        EXPECT_EQ(columns.Visible(Of(text)), 10'000);
        EXPECT_EQ(columns.Visible(Of(blank)), 0);
    }
    EXPECT_EQ(columns.CountOfSteps(), 20'000);
    EXPECT_EQ(columns.Visible(SubString("  y")), 2);
}

} // namespace
} // namespace telv::test
