// SPDX-License-Identifier: MIT
// Where in a C text a line directive can stand.
#include "output/CLineScan.h"

#include <gtest/gtest.h>
#include <string>

namespace telv::test
{
namespace
{

/// For each line of the text, behind its line feed: '+' where a directive can stand, else '-'.
std::string Places(const std::string& text)
{
    tool::CLineScan scan;
    std::string places;
    for (const char c : text)
    {
        scan.Read(c);
        if (c == '\n')
            places += scan.CanStartDirective() ? '+' : '-';
    }
    return places;
}

TEST(CLineScanTest, KnowsWhatReachesOverLines)
{
    const struct
    {
        const char* m_text;
        const char* m_places;
    } rows[] = {
        {"a\nb\n", "++"},
        {"/* a\nb\n*/ c\n", "--+"},
        {"// a /*\nb\n", "++"},
        {"// a \\\nb\nc\n", "-++"},
        {"#define a \\\n  b\\\r\n c\n", "--+"},
        {"\"/*\"\n'\"'\n'/*'\n", "+++"},
        {"\"\\\"/*\"\n", "+"},
        {"it's /* no comment\nx\n", "++"},
        {"R\"(a\nb)\" c\nd\n", "-++"},
        {"R\"x(a\n)\" )y\"\n)x\"\n", "--+"},
        {"u8R\"(\n)\"\n", "-+"},
        {"fooR\"(\"\nx\n", "++"},
        {"1'000'000 /*\n*/\n", "-+"},
        {"0xAB'CD \"\n", "+"},
        {"a / b\n/ *\n", "++"},
        {"/**/ a\n/***\n***/\n", "+-+"},
        {"\"open\nx\n", "++"},
        {"R\"(a\\\nb)\"\n", "-+"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Places(row.m_text), row.m_places) << row.m_text;
}

} // namespace
} // namespace telv::test
