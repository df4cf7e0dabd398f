// SPDX-License-Identifier: MIT
// Offsets, lines and columns.
#include "map/LineTable.h"

#include <gtest/gtest.h>
#include <string>

namespace telv::test
{
namespace
{

using tool::LineTable;
using tool::Utf16Counter;

std::string At(const LineTable& lines, ssize_t offset)
{
    const tool::LineColumn at = lines.At(offset);
    return std::to_string(at.m_line) + ":" + std::to_string(at.m_column);
}

std::string Text(SubString s)
{
    return std::string(s.begin(), static_cast<size_t>(s.size()));
}

TEST(LineTableTest, KnowsLinesAndColumns)
{
    const LineTable lines(SubString("ab\r\n\ncd"));
    EXPECT_EQ(lines.Count(), 3);
    EXPECT_EQ(At(lines, 0), "1:1");
    EXPECT_EQ(At(lines, 3), "1:4");
    EXPECT_EQ(At(lines, 4), "2:1");
    EXPECT_EQ(At(lines, 5), "3:1");
    EXPECT_EQ(At(lines, 7), "3:3");
    EXPECT_EQ(Text(lines.Line(1)), "ab");
    EXPECT_EQ(Text(lines.Line(2)), "");
    EXPECT_EQ(Text(lines.Line(3)), "cd");
    EXPECT_EQ(lines.End(1), 4);
    EXPECT_EQ(lines.End(3), 7);
    EXPECT_EQ(lines.Offset(1, 2), 1);
    EXPECT_EQ(lines.Offset(1, 99), 3);
    EXPECT_EQ(lines.Offset(2, 99), 4);
}

TEST(LineTableTest, TheEndBehindALineFeedBeginsALine)
{
    EXPECT_EQ(At(LineTable(SubString("")), 0), "1:1");
    EXPECT_EQ(LineTable(SubString("")).Count(), 0);
    EXPECT_EQ(At(LineTable(SubString("a\n")), 2), "2:1");
    EXPECT_EQ(LineTable(SubString("a\n")).Count(), 1);
}

TEST(LineTableTest, CountsUtf16)
{
    // One unit, one unit of two bytes, two units of four bytes, one for a bad byte.
    const std::string text = "a\xc3\xa4\xf0\x9f\x98\x80\xffz";
    const Utf16Counter units(SubString(text.data(), text.data() + text.size()));
    EXPECT_EQ(units.Before(0), 0);
    EXPECT_EQ(units.Before(1), 1);
    EXPECT_EQ(units.Before(3), 2);
    EXPECT_EQ(units.Before(7), 4);
    EXPECT_EQ(units.Before(8), 5);
    EXPECT_EQ(units.Before(9), 6);
}

TEST(LineTableTest, CountsUtf16OfLongTexts)
{
    std::string text;
    for (int i = 0; i < 3000; ++i)
        text += i % 7 == 0 ? "\xf0\x9f\x98\x80" : (i % 3 == 0 ? "\xc3\xa4" : "x");
    const Utf16Counter units(SubString(text.data(), text.data() + text.size()));
    ssize_t expected = 0;
    for (size_t i = 0; i < text.size(); ++i)
    {
        const auto byte = static_cast<unsigned char>(text[i]);
        const bool begins = byte < 0x80 || byte >= 0xc0;
        if (!begins)
            continue;
        ASSERT_EQ(units.Before(static_cast<ssize_t>(i)), expected) << i;
        expected += byte >= 0xf0 ? 2 : 1;
    }
    EXPECT_EQ(units.Before(static_cast<ssize_t>(text.size())), expected);
}

TEST(LineTableTest, FindsTerminalColumns)
{
    const SubString line("\tab\tc");
    EXPECT_EQ(tool::BytesOfColumns(line, 0, 8), 0);
    EXPECT_EQ(tool::BytesOfColumns(line, 8, 8), 1);
    EXPECT_EQ(tool::BytesOfColumns(line, 9, 8), 2);
    EXPECT_EQ(tool::BytesOfColumns(line, 16, 8), 4);
    EXPECT_EQ(tool::BytesOfColumns(line, 99, 8), 5);
}

// Two ideographs of two columns, an e with a combining accent, a letter.
TEST(LineTableTest, CountsTheColumnsOfWideAndCombiningCharacters)
{
    const SubString line("\xe6\xbc\xa2\xe5\xad\x97"
                         "e\xcc\x81x");
    EXPECT_EQ(tool::BytesOfColumns(line, 1, 8), 0);
    EXPECT_EQ(tool::BytesOfColumns(line, 2, 8), 3);
    EXPECT_EQ(tool::BytesOfColumns(line, 4, 8), 6);
    EXPECT_EQ(tool::BytesOfColumns(line, 5, 8), 9);
    EXPECT_EQ(tool::BytesOfColumns(line, 6, 8), 10);
    EXPECT_EQ(tool::ColumnsOfBytes(line, 6, 8), 4);
    EXPECT_EQ(tool::ColumnsOfBytes(line, 9, 8), 5);
    EXPECT_EQ(tool::ColumnsOfBytes(line, 10, 8), 6);
}

} // namespace
} // namespace telv::test
