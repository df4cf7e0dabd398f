// SPDX-License-Identifier: MIT
// Escapes, digits, and characters as messages show them.
#include "TextFoundationSupport.h"
#include <gtest/gtest.h>

namespace telv::foundation
{

TEST(TextFoundationCharacter, EscapesAreThoseOfC)
{
    const std::string letters = "abfnrtv0\\'\"?";
    const std::string meanings("\a\b\f\n\r\t\v\0\\'\"?", 12);
    for (int c = 0; c < 256; ++c)
    {
        char out = 'z';
        const char letter = static_cast<char>(c);
        const size_t index = letters.find(letter);
        EXPECT_EQ(MapEscapeCharacter(letter, out), index != std::string::npos) << c;
        EXPECT_EQ(out, index == std::string::npos ? letter : meanings[index]) << c;
    }
}

TEST(TextFoundationCharacter, Digits)
{
    for (int c = 0; c < 256; ++c)
    {
        const int decimal = c >= '0' && c <= '9' ? c - '0' : -1;
        const int hex = c >= 'a' && c <= 'f'   ? c - 'a' + 10
                        : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                               : decimal;
        EXPECT_EQ(MapDecimalDigit(static_cast<char>(c)), decimal) << c;
        EXPECT_EQ(MapHexDigit(static_cast<char>(c)), hex) << c;
        EXPECT_EQ(IsHexDigit(static_cast<char>(c)), hex != -1) << c;
    }
}

TEST(TextFoundationCharacter, AsMessagesShowIt)
{
    const struct
    {
        std::string m_text;
        std::string m_shown;
    } rows[] = {
        {"", "EOS"},
        {"x", "'x'"},
        {"xyz", "'x'"},
        {" ", "' '"},
        {"~", "'~'"},
        {"\"", "'\"'"},
        {"'", "'\\''"},
        {"\\", "'\\\\'"},
        {"\a", "'\\a'"},
        {"\b", "'\\b'"},
        {"\f", "'\\f'"},
        {"\n", "'\\n'"},
        {"\r", "'\\r'"},
        {"\t", "'\\t'"},
        {"\v", "'\\v'"},
        {std::string(1, '\0'), "'\\x00'"},
        {"\x1b", "'\\x1b'"},
        {"\x7f", "'\\x7f'"},
        {"\xc3\xa4x", "'\xc3\xa4'"},
        {"\xe2\x82\xac", "'\xe2\x82\xac'"},
        {"\xf0\x9f\x98\x80", "'\xf0\x9f\x98\x80'"},
        {"\xf4\x8f\xbf\xbf", "'\xf4\x8f\xbf\xbf'"},
        {"\xed\x9f\xbf", "'\xed\x9f\xbf'"},
        {"\xff", "'\\xff'"},
        {"\x80", "'\\x80'"},
        {"\xc3", "'\\xc3'"},             // cut off
        {"\xc3(", "'\\xc3'"},            // no continuation
        {"\xc0\xaf", "'\\xc0'"},         // overlong
        {"\xc1\xbf", "'\\xc1'"},         // overlong
        {"\xe0\x9f\xbf", "'\\xe0'"},     // overlong
        {"\xf0\x8f\xbf\xbf", "'\\xf0'"}, // overlong
        {"\xed\xa0\x80", "'\\xed'"},     // surrogate
        {"\xf4\x90\x80\x80", "'\\xf4'"}, // above the last code point
        {"\xf5\x80\x80\x80", "'\\xf5'"},
        {"\xe2\x82(", "'\\xe2'"},
        {"\xf0\x9f\x98", "'\\xf0'"},
        {"\xf0\x9f(\x80", "'\\xf0'"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(
            Written([&](xostream& os) { os << HumanReadableCharInSubString(View(row.m_text)); }),
            row.m_shown);
    }
}

TEST(TextFoundationCharacter, SequenceIsJudgedWithinTheView)
{
    const char text[] = "\xc3\xa4";
    EXPECT_EQ(Written([&](xostream& os)
                      { os << HumanReadableCharInSubString(SubString(text, text + 1)); }),
              "'\\xc3'");
}

} // namespace telv::foundation
