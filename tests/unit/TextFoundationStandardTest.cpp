// SPDX-License-Identifier: MIT
// Views and strings together with those of the standard library, in C++17 too.
#include "TextFoundationSupport.h"
#include "tlMacroExpander/tlMacroExpander.h"

#include <gtest/gtest.h>
#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>
#include <type_traits>

namespace telv::test
{
namespace
{

TEST(TextFoundationStandardTest, ViewsConvertBothWays)
{
    const std::string_view text = "some text";
    const SubString view = text;
    EXPECT_EQ(view.begin(), text.data());
    EXPECT_EQ(view.size(), 9);
    const std::string_view back = view;
    EXPECT_EQ(back.data(), text.data());
    EXPECT_EQ(back.size(), text.size());
    EXPECT_EQ(std::string(view), "some text");
    EXPECT_TRUE(std::string_view(SubString()).empty());
    EXPECT_TRUE(SubString(std::string_view()).empty());
}

TEST(TextFoundationStandardTest, StringsConvertBothWays)
{
    using namespace std::string_view_literals;
    const xstring string = "a\0b"sv;
    EXPECT_EQ(string.size(), 3);
    const std::string_view view = string;
    EXPECT_EQ(view, "a\0b"sv);
    EXPECT_EQ(std::string(string), "a\0b"sv);
    EXPECT_TRUE(std::string_view(xstring()).empty());
}

TEST(TextFoundationStandardTest, ComparesInBothOrders)
{
    const std::string_view text = "same";
    const xstring string("same");
    const SubString view(string);
    EXPECT_TRUE(view == text);
    EXPECT_TRUE(text == view);
    EXPECT_TRUE(string == text);
    EXPECT_TRUE(text == string);
    EXPECT_TRUE(view != std::string_view("other"));
    EXPECT_TRUE(std::string_view("other") != view);
    EXPECT_TRUE(string != std::string_view("other"));
    EXPECT_TRUE(std::string_view("other") != string);
}

/// A std::string could be gone before the view of it: it has to be named as a view.
TEST(TextFoundationStandardTest, OwningStringsDoNotBecomeViewsByThemselves)
{
    EXPECT_FALSE((std::is_convertible_v<std::string, SubString>));
    EXPECT_FALSE((std::is_convertible_v<std::string, xstring>));
}

TEST(TextFoundationStandardTest, StreamsWriteTheCharacters)
{
    const xstring string("text");
    std::ostringstream os;
    os << string << '|' << SubString(string) << '|' << std::setw(6) << string << '|' << std::left
       << std::setw(6) << SubString(string) << '|' << SubString();
    EXPECT_EQ(os.str(), "text|text|  text|text  |");
}

TEST(TextFoundationStandardTest, LoopsOverRanges)
{
    const xstring string("abc");
    std::string characters;
    for (const char c : SubString(string))
        characters += c;
    for (const char c : string)
        characters += c;
    EXPECT_EQ(characters, "abcabc");

    FileScopeVarFrame frame;
    xstring text;
    OutputPieces pieces;
    MacroExpand(nullptr, &frame, "@(1 + 1) x", 0, 0, text, pieces);
    ssize_t size = 0;
    for (const OutputPiece& piece : pieces)
        size += piece.size();
    EXPECT_EQ(size, text.size());
}

} // namespace
} // namespace telv::test
